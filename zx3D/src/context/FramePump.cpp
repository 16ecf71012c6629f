// How many frames bgfx needs: it runs up to one frame behind on a render thread of its own, and presents a
// frame when it turns to the next.
#include "FramePump.h"

#include <zx3D/Context.h>

#include <bgfx/bgfx.h>

namespace zarvex::zx3D {

namespace {

void SubmitFrames(int count)
{
    for (int i = 0; i < count; ++i)
        bgfx::frame();
}

int FramesBehind()
{
    return Context::GetOptions().threadMode == ContextOptions::ThreadMode::MultiThreaded ? 1 : 0;
}

} // namespace

void FinishRecordedFrames()
{
    SubmitFrames(1 + FramesBehind());
}

void FinishPresentation()
{
    SubmitFrames(2 + FramesBehind());
}

} // namespace zarvex::zx3D
