// The one way in which zx3D says something.
#pragma once

#include <zx3D/Message.h>

namespace zarvex::zx3D {

/// Hands a printf-formatted message, of at most 1,023 bytes, to the handler in the context's options; without
/// one to the trace of their callback; without either, from warnings on, to the standard error stream. From
/// any thread.
[[gnu::format(printf, 3, 4)]] void Say(MessageLevel level, char const* name, char const* format, ...);

} // namespace zarvex::zx3D
