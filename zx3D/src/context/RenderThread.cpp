// The loop that bgfx's own render thread would run, and a count of its turns.
#include "RenderThread.h"

#include "FrameListeners.h"

#include <zx3D/BgfxVersion.h>

#include <chrono>
#include <thread>

namespace zarvex::zx3D {

RenderThread& RenderThread::Get() {
    // Never destroyed, like the thread.
    static RenderThread& renderThread = *new RenderThread;
    return renderThread;
}

RenderThread::RenderThread() {
    std::unique_lock lock(m_mutex);
    m_phase = Phase::Running;
    std::thread(&RenderThread::Loop, this).detach();
    m_phaseChanged.wait(lock, [this] { return m_phase == Phase::Idle; });
}

void RenderThread::BeginRun() {
    std::lock_guard const lock(m_mutex);
    m_finishedFrames = 0;
    m_phase = Phase::Running;
    m_phaseChanged.notify_one();
}

void RenderThread::AwaitFirstFrame() const {
    m_finishedFrames.wait(0);
}

void RenderThread::EndRun() {
    std::unique_lock lock(m_mutex);
    if (m_phase == Phase::Running)
        m_phase = Phase::Stopping;
    m_phaseChanged.wait(lock, [this] { return m_phase == Phase::Idle; });
}

bool RenderThread::HasFinished(std::uint32_t frameNumber) const {
    return static_cast<std::int32_t>(m_finishedFrames - frameNumber) > 0;
}

void RenderThread::Loop() {
    bgfx::renderFrame(); // without a context, it marks the calling thread as the one that renders
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_phase = Phase::Idle;
        m_phaseChanged.notify_one();
        m_phaseChanged.wait(lock, [this] { return m_phase != Phase::Idle; });
        lock.unlock();
        ExecuteFramesUntilShutdown();
        lock.lock();
    }
}

void RenderThread::ExecuteFramesUntilShutdown() {
    for (;;) {
        switch (bgfx::renderFrame()) {
        case bgfx::RenderFrame::Exiting:
            return;
        case bgfx::RenderFrame::Render:
            CountFrame();
            break;
        case bgfx::RenderFrame::NoContext: // bgfx::init was not yet called, has just begun, or failed
            if (m_phase == Phase::Stopping)
                return;
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            break;
        default: // no frame came for seconds
            break;
        }
    }
}

void RenderThread::CountFrame() {
    std::uint32_t const number = m_finishedFrames++;
    m_finishedFrames.notify_one();
    NotifyFrameFinished(number);
}

} // namespace zarvex::zx3D
