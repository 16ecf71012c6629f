// The thread that executes bgfx's frames.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zarvex::zx3D {

/// The one thread on which bgfx draws in multi-threaded mode, in every run of the process.
///
/// bgfx would start a thread of its own in each run, but nobody could then tell when a frame has been drawn.
/// It is one thread for all runs, since a debug build of bgfx accepts no other than the first that it met.
/// Between runs it sleeps.
///
/// Lifetime: started by the first `Get`, never ended: a process may exit while it draws. Thread: all
/// operations on the one that calls bgfx's API.
class RenderThread {
public:
    /// Returns once the thread is known to bgfx as its render thread.
    static RenderThread& Get();

    RenderThread(RenderThread const&) = delete;
    RenderThread& operator=(RenderThread const&) = delete;

    /// Before `bgfx::init`, which waits for frames of its own to be executed.
    void BeginRun();

    /// After `bgfx::init`: returns when the first of those frames counts as executed.
    void AwaitFirstFrame() const;

    /// After `bgfx::shutdown`, or when `bgfx::init` failed: returns when the thread has left bgfx.
    void EndRun();

    /// True when the frame of that number was executed in this run. Numbers may wrap around.
    bool HasFinished(std::uint32_t frameNumber) const;

private:
    enum class Phase { Idle, Running, Stopping };

    RenderThread();
    ~RenderThread() = default;

    [[noreturn]] void Loop();
    void ExecuteFramesUntilShutdown();
    void CountFrame();

    std::mutex m_mutex;
    std::condition_variable m_phaseChanged;
    std::atomic<Phase> m_phase = Phase::Idle; ///< written with the mutex locked

    /// Frames executed in this run. bgfx numbers them from 0, those of `bgfx::init` included, so it is the
    /// number of the next one.
    std::atomic<std::uint32_t> m_finishedFrames = 0;
};

} // namespace zarvex::zx3D
