// Those who hear of finished frames.
#pragma once

#include <cstdint>

namespace zarvex::zx3D {

/// Tells every listener that a frame was executed. On the render thread.
void NotifyFrameFinished(std::uint32_t number);

} // namespace zarvex::zx3D
