// A render thread for bgfx where bgfx will not start its own.
#pragma once

#include <thread>

namespace zarvex::zx3D {

/// Executes bgfx's frames on a thread of its own, from before `bgfx::init` until after `bgfx::shutdown`.
///
/// bgfx starts a render thread itself unless `bgfx::renderFrame` was ever called in the process, and single
/// threaded mode calls it. After that the application has to bring the thread.
class RenderThread {
public:
    /// Returns once the thread is known to bgfx as its render thread.
    RenderThread();

    /// Waits for the thread, which ends when bgfx shuts down.
    ~RenderThread();

    RenderThread(RenderThread const&) = delete;
    RenderThread& operator=(RenderThread const&) = delete;

private:
    std::jthread m_thread;
};

} // namespace zarvex::zx3D
