// The state that lives from a successful start of bgfx to its shutdown.
#pragma once

#include "../surface/NativeWindows.h"
#include "DisplayConnection.h"
#include "RenderThread.h"

#include <zx3D/ContextOptions.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3D {

/// bgfx, running: constructed by `Start`, shut down by the destructor.
class RunningContext {
public:
    /// Starts bgfx; null when it cannot, with bgfx stopped and a message to the options' callback.
    static std::unique_ptr<RunningContext> Start(ContextOptions const& options,
                                                 bgfx::RendererType::Enum preferredRenderer);
    ~RunningContext();

    RunningContext(RunningContext const&) = delete;
    RunningContext& operator=(RunningContext const&) = delete;

    /// The windows of the display; null when the renderer needs none.
    NativeWindows* GetNativeWindows() const { return m_windows.get(); }

    /// A frame was handed to bgfx.
    void NoteSubmittedFrame(std::uint32_t number) { m_submitted = number; }

    /// True while the render thread has not executed the frame that was noted last.
    bool IsFrameInFlight() const;

private:
    RunningContext() = default;

    bool OpenDisplay(ContextOptions const& options);
    bool PrepareThreads(ContextOptions const& options);
    bool StartBgfx(ContextOptions const& options, bgfx::RendererType::Enum renderer);

    // Destroyed in reverse, after bgfx: the connection goes last.
    DisplayConnection m_display;
    std::unique_ptr<NativeWindows> m_windows;
    RenderThread* m_renderThread = nullptr; ///< in multi-threaded mode
    bool m_bgfxRuns = false;
    std::optional<std::uint32_t> m_submitted; ///< newest frame of `SubmitFrame`
};

} // namespace zarvex::zx3D
