// Starting bgfx, and being sure that what started is what was meant.
#include "RunningContext.h"

#include "../display/Egl.h"
#include "../display/Vulkan.h"
#include "../message/Say.h"

#include <zx3D/BgfxVersion.h>
#include <zx3D/Context.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

namespace zarvex::zx3D {

namespace {

bgfx::Init ToInit(ContextOptions const& options, bgfx::RendererType::Enum renderer, void* nativeDisplay) {
    bgfx::Init init;
    init.type = renderer;
    init.callback = options.callback;
    init.platformData.ndt = nativeDisplay;
    init.platformData.nwh = options.nativeWindowHandle;
    init.resolution.width = options.width;
    init.resolution.height = options.height;
    init.resolution.reset = options.verticalSync ? BGFX_RESET_VSYNC : BGFX_RESET_NONE;
    init.limits.*kTransientVbSize<bgfx::Init::Limits> = options.transientVertexBufferSize;
    init.limits.*kTransientIbSize<bgfx::Init::Limits> = options.transientIndexBufferSize;
    return init;
}

/// What to ask bgfx for, if anything, where it does not notice that OpenGL does not work.
std::optional<bgfx::RendererType::Enum> ChooseWorkingRenderer(bgfx::RendererType::Enum preferred,
                                                              void* nativeDisplay) {
    bool const takesVulkan = preferred != bgfx::RendererType::OpenGL && HasVulkan();
    if (takesVulkan || HasOpenGL(nativeDisplay))
        return preferred;
    if (preferred != bgfx::RendererType::OpenGL || !HasVulkan())
        return std::nullopt;
    Say(MessageLevel::Warning, "context.no-opengl",
        "OpenGL 4.3 does not work on this machine; Vulkan is tried");
    return bgfx::RendererType::Vulkan;
}

void SayThatNoRendererWorks() {
    Say(MessageLevel::Warning, "context.no-renderer", "bgfx finds no renderer that works on this machine");
}

/// For a process that exits without a shutdown: drivers tear their global state down then, which crashes a
/// render thread that still draws. A frame that does not end, on a broken display, is not waited for long.
void AwaitFrameAtExit() {
    using namespace std::chrono_literals;
    RunningContext const* const context = RunningContext::Get();
    if (context == nullptr || !context->WasStartedOnThisThread())
        return;
    auto const end = std::chrono::steady_clock::now() + 2s;
    while (context->IsFrameInFlight() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
}

} // namespace

std::unique_ptr<RunningContext> RunningContext::Start(ContextOptions const& options,
                                                      bgfx::RendererType::Enum preferredRenderer) {
    std::unique_ptr<RunningContext> context(new RunningContext);
    bool const needsDisplay = preferredRenderer != bgfx::RendererType::Noop;
    if (needsDisplay && !context->OpenDisplay(options))
        return nullptr;
    if (!context->PrepareThreads(options) || !context->StartBgfx(options, preferredRenderer))
        return nullptr;
    return context;
}

RunningContext::~RunningContext() {
    if (m_bgfxRuns)
        bgfx::shutdown();
    if (m_renderThread != nullptr)
        m_renderThread->EndRun();
}

void RunningContext::NoteSubmittedFrame(std::uint32_t number) {
    m_submitted = number;
    bool const isExecuted = m_renderThread == nullptr;
    if (isExecuted && m_windows)
        m_windows->ShowDrawn(number);
}

bool RunningContext::IsFrameInFlight() const {
    return m_renderThread != nullptr && m_submitted && !m_renderThread->HasFinished(*m_submitted);
}

bool RunningContext::OpenDisplay(ContextOptions const& options) {
    m_display = DisplayConnection::Open();
    m_windows = NativeWindows::Connect();
    if (!m_display.IsOpen() || !m_windows) {
        Say(MessageLevel::Warning, "context.no-display",
            "there is no X display to draw on (is DISPLAY set?)");
        return false;
    }
    // bgfx would take the process down over a handle that is no window.
    if (m_windows->Exists(options.nativeWindowHandle))
        return true;
    Say(MessageLevel::Warning, "context.not-a-window",
        "native handle %p is not a window of the X display (with Qt, use the platform \"xcb\")",
        options.nativeWindowHandle);
    return false;
}

bool RunningContext::PrepareThreads(ContextOptions const& options) {
    bool const singleThreaded = options.threadMode == ContextOptions::ThreadMode::SingleThreaded;
    static std::optional<bool> singleThreadedBefore;
    bool const canStart = !singleThreadedBefore || !(singleThreaded || *singleThreadedBefore);
    if (BX_CONFIG_DEBUG && !canStart) {
        Say(MessageLevel::Warning, "context.no-restart",
            "a debug build of bgfx starts again only in multi-threaded mode after multi-threaded runs");
        return false;
    }
    singleThreadedBefore = singleThreaded;
    if (singleThreaded) {
        bgfx::renderFrame(); // before bgfx::init, it tells bgfx that the calling thread renders
    } else {
        m_renderThread = &RenderThread::Get();
        if (m_windows)
            m_frameListener.emplace([this](std::uint32_t number) { m_windows->ShowDrawn(number); });
        m_renderThread->BeginRun();
    }
    return true;
}

bool RunningContext::StartBgfx(ContextOptions const& options, bgfx::RendererType::Enum renderer) {
    if (!kBgfxNoticesMissingOpenGL && renderer != bgfx::RendererType::Noop) {
        auto const working = ChooseWorkingRenderer(renderer, m_display.GetNativeDisplay());
        if (!working) {
            SayThatNoRendererWorks();
            return false;
        }
        renderer = *working;
    }
    m_bgfxRuns = bgfx::init(ToInit(options, renderer, m_display.GetNativeDisplay()));
    if (!m_bgfxRuns) {
        Say(MessageLevel::Warning, "context.not-started", "bgfx does not start");
        return false;
    }
    if (m_renderThread != nullptr) {
        m_renderThread->AwaitFirstFrame();
        std::atexit(AwaitFrameAtExit); // after what the driver of this run registers, hence called before it
    }
    if (m_windows && bgfx::getRendererType() == bgfx::RendererType::OpenGL)
        m_windows->UseVisual(ChooseEglVisual(m_display.GetNativeDisplay()));
    // When every other renderer failed, bgfx falls back to the one that draws nothing.
    bool const drawsNothing = bgfx::getRendererType() == bgfx::RendererType::Noop;
    if (drawsNothing && renderer != bgfx::RendererType::Noop) {
        SayThatNoRendererWorks();
        return false;
    }
    return true;
}

} // namespace zarvex::zx3D
