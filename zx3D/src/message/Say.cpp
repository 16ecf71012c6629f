// Who hears a message.
#include "Say.h"

#include <zx3D/Context.h>

#include <array>
#include <cstdarg>
#include <cstdio>

namespace zarvex::zx3D {

namespace {

/// bgfx's trace takes its arguments as a list only.
[[gnu::format(printf, 3, 4)]] void Trace(bgfx::CallbackI& callback, char const* name, char const* format,
                                         ...) {
    std::va_list arguments;
    va_start(arguments, format);
    callback.traceVargs(name, 0, format, arguments);
    va_end(arguments);
}

} // namespace

void Say(MessageLevel level, char const* name, char const* format, ...) {
    std::array<char, 1024> text;
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);

    ContextOptions const& options = Context::GetOptions();
    if (options.messageHandler)
        options.messageHandler({level, name, text.data()});
    else if (options.callback != nullptr)
        Trace(*options.callback, name, "zx3D: %s", text.data());
    else if (level >= MessageLevel::Warning)
        std::fprintf(stderr, "zx3D: %s\n", text.data());
}

} // namespace zarvex::zx3D
