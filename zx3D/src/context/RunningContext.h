// The state that lives from a successful start of bgfx to its shutdown.
#pragma once

#include "../surface/NativeWindows.h"
#include "DisplayConnection.h"
#include "RenderThread.h"

#include <zx3D/ContextOptions.h>

#include <bgfx/bgfx.h>

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

private:
    RunningContext() = default;

    bool OpenDisplay(ContextOptions const& options);
    bool PrepareThreads(ContextOptions const& options);
    bool StartBgfx(ContextOptions const& options, bgfx::RendererType::Enum renderer);

    // Destroyed in reverse: the render thread ends before what it draws to goes.
    DisplayConnection m_display;
    std::unique_ptr<NativeWindows> m_windows;
    std::optional<RenderThread> m_renderThread;
    bool m_bgfxRuns = false;
};

} // namespace zarvex::zx3D
