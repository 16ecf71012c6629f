// The state that lives from a successful start of bgfx to its shutdown.
#pragma once

#include "../display/DisplayConnection.h"
#include "../display/NativeWindows.h"
#include "RenderThread.h"

#include <zx3D/ContextOptions.h>
#include <zx3D/FrameListener.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <thread>

namespace zarvex::zx3D {

/// bgfx, running: constructed by `Start`, shut down by the destructor.
class RunningContext {
public:
    /// The running one; null while the context is not initialised.
    static RunningContext* Get();

    /// Starts bgfx; null when it cannot, with bgfx stopped and a message to the options' callback.
    static std::unique_ptr<RunningContext> Start(ContextOptions const& options,
                                                 bgfx::RendererType::Enum preferredRenderer);
    ~RunningContext();

    RunningContext(RunningContext const&) = delete;
    RunningContext& operator=(RunningContext const&) = delete;

    /// The windows of the display; null when the renderer needs none.
    NativeWindows* GetNativeWindows() const { return m_windows.get(); }

    /// A frame was handed to bgfx.
    void NoteSubmittedFrame(std::uint32_t number);

    /// The number of the frame that is being recorded, or less where the application submits its own.
    std::uint32_t GetNextFrame() const { return m_submitted ? *m_submitted + 1 : 0; }

    /// True while the render thread has not executed the frame that was noted last.
    bool IsFrameInFlight() const;

    bool WasStartedOnThisThread() const { return m_thread == std::this_thread::get_id(); }

private:
    RunningContext() = default;

    bool OpenDisplay(ContextOptions const& options);
    bool PrepareThreads(ContextOptions const& options);
    bool StartBgfx(ContextOptions const& options, bgfx::RendererType::Enum renderer);

    // Destroyed in reverse, after bgfx: the connection goes last.
    DisplayConnection m_display;
    std::unique_ptr<NativeWindows> m_windows;
    std::optional<FrameListener> m_frameListener; ///< shows windows that have their first picture
    std::thread::id m_thread = std::this_thread::get_id();
    RenderThread* m_renderThread = nullptr; ///< in multi-threaded mode
    bool m_bgfxRuns = false;
    std::optional<std::uint32_t> m_submitted; ///< newest frame of `SubmitFrame`
};

} // namespace zarvex::zx3D
