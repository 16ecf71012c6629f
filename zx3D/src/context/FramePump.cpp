// How many frames it takes: bgfx runs up to one frame behind when it has a render thread.
#include "FramePump.h"

#include <zx3D/Context.h>

#include <bgfx/bgfx.h>

namespace zarvex::zx3D {

void FinishRecordedFrames() {
    bgfx::frame();
    if (Context::GetOptions().threadMode == ContextOptions::ThreadMode::MultiThreaded)
        bgfx::frame(); // waits for the one before
}

} // namespace zarvex::zx3D
