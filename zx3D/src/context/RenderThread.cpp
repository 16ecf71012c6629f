// The loop that bgfx's own render thread would run.
#include "RenderThread.h"

#include <bgfx/platform.h>

#include <chrono>
#include <latch>

namespace zarvex::zx3D {

namespace {

void ExecuteFramesUntilShutdown(std::stop_token const& stop) {
    for (;;) {
        switch (bgfx::renderFrame()) {
        case bgfx::RenderFrame::Exiting:
            return;
        case bgfx::RenderFrame::NoContext: // before bgfx::init, or when it failed
            if (stop.stop_requested())
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            break;
        default:
            break;
        }
    }
}

} // namespace

RenderThread::RenderThread() {
    std::latch known(1);
    m_thread = std::jthread([&known](std::stop_token stop) {
        bgfx::renderFrame(); // without a context, it marks the calling thread as the one that renders
        known.count_down();
        ExecuteFramesUntilShutdown(stop);
    });
    known.wait();
}

RenderThread::~RenderThread() = default; // jthread asks to stop and joins

} // namespace zarvex::zx3D
