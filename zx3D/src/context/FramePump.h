// Waiting for bgfx to be done with what was recorded.
#pragma once

namespace zarvex::zx3D {

/// Submits what was recorded so far and returns when bgfx has executed it, the destructions at its end
/// included. bgfx may present it later.
void FinishRecordedFrames();

} // namespace zarvex::zx3D
