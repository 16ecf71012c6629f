// What of bgfx's messages is trouble.
#include "TroubleCallback.h"

#include "Trouble.h"

#include <bx/string.h>

#include <string>
#include <string_view>

namespace zarvex::testing {

void TroubleCallback::fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum, char const* str) {
    Trouble::Report("bgfx fatal at " + std::string(filePath) + ":" + std::to_string(line) + ": " + str);
}

void TroubleCallback::traceVargs(char const* filePath, std::uint16_t, char const* format,
                                 std::va_list argList) {
    char buffer[1024];
    bx::vsnprintf(buffer, sizeof buffer, format, argList);
    std::string_view const text = buffer;
    if (text.starts_with("zx3D:")) // the message's name is in the place of the file's
        Trouble::Report(std::string(text) + " [" + filePath + "]");
    else if (text.find("LEAK") != text.npos || text.find(" Validation, ") != text.npos)
        Trouble::Report(std::string(text));
}

} // namespace zarvex::testing
