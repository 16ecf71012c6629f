// Those who hear of the context's end.
#pragma once

namespace zarvex::zx3D {

/// Tells every listener that the context is about to stop, the newest first.
void NotifyContextStopping();

} // namespace zarvex::zx3D
