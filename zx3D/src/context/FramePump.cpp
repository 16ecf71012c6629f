// How many frames it takes: bgfx runs up to one frame behind when it has a render thread.
#include "FramePump.h"

#include <zx3D/Context.h>

namespace zarvex::zx3D {

void FinishRecordedFrames() {
    Context::SubmitFrame();
    if (Context::GetOptions().threadMode == ContextOptions::ThreadMode::MultiThreaded)
        Context::SubmitFrame(); // waits for the one before
}

} // namespace zarvex::zx3D
