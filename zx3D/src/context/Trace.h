// Messages of zx3D, for people.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3D {

/// Sends one printf-formatted message to the callback's trace, or to nobody when it is null. The source
/// place is the one that the message is about to be looked up by.
[[gnu::format(printf, 4, 5)]] void Trace(bgfx::CallbackI* callback, char const* filePath, std::uint16_t line,
                                         char const* format, ...);

} // namespace zarvex::zx3D
