// Messages of zx3D go where bgfx's own go: the callback's trace.
#include "Trace.h"

#include <cstdarg>

namespace zarvex::zx3D {

void Trace(bgfx::CallbackI* callback, char const* filePath, std::uint16_t line, char const* format, ...) {
    if (callback == nullptr)
        return;
    std::va_list arguments;
    va_start(arguments, format);
    callback->traceVargs(filePath, line, format, arguments);
    va_end(arguments);
}

} // namespace zarvex::zx3D
