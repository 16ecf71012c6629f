// bgfx's debug switches and its debug text.
#include "State.h"

#include <cstdarg>
#include <cstdio>

namespace bgfx {

using recorder::Arguments;
using recorder::Recording;

void setDebug(uint32_t flags) {
    Recording call("setDebug", Arguments(recorder::Hexadecimal(flags)));
}

void dbgTextClear(uint8_t attribute, bool isSmall) {
    Recording call("dbgTextClear", Arguments(attribute, isSmall));
}

void dbgTextPrintfVargs(uint16_t x, uint16_t y, uint8_t attribute, char const* format, va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof(text), format, arguments);
    Recording call("dbgTextPrintf", Arguments(x, y, attribute, text));
}

void dbgTextPrintf(uint16_t x, uint16_t y, uint8_t attribute, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    dbgTextPrintfVargs(x, y, attribute, format, arguments);
    va_end(arguments);
}

} // namespace bgfx
