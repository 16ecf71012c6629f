// Starting and stopping bgfx.
#pragma once

#include <zx3D/ContextOptions.h>
#include <zx3D/zx3DExport.h>

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3D {

/// One stretch of time between a successful `Context::Initialize` and the next `Context::Shutdown`, or
/// between those stretches.
///
/// bgfx handles are only meaningful in the run in which they were created. Whoever keeps a handle keeps the
/// run beside it, and asks before using or destroying the handle whether that run still lasts.
class ZX3D_EXPORT ContextRun {
public:
    /// The stretch that lasts now.
    static ContextRun Current() { return ContextRun(s_current); }

    /// True while this is still the state of the context: no shutdown or new start since it was taken.
    bool IsCurrent() const { return m_number == s_current; }

    /// The stretch before the process's first `Context::Initialize`.
    ContextRun() = default;

private:
    friend class Context; // begins and ends the stretches

    explicit ContextRun(std::uint64_t number) : m_number(number) {}

    static std::uint64_t s_current; ///< stretches so far; here, since every use of a handle asks for it

    std::uint64_t m_number = 0;
};

/// The process's one bgfx context.
///
/// Thread: all operations run on one thread, the one that calls bgfx's API (in a Qt application the GUI
/// thread). Errors: `Initialize` returns false; nothing throws. Messages go to the message handler of the
/// options.
///
/// It draws through X11, on the display that the environment variable DISPLAY names (under Wayland through
/// XWayland).
class ZX3D_EXPORT Context {
public:
    Context() = delete;

    /// Starts bgfx on the window of the options. Returns true on success, and false when the context runs
    /// already, when there is no X display, when the handle is not a window of that display, or when bgfx
    /// finds no renderer that works; it can then be called again. Also false when a debug build of bgfx has
    /// run before, unless all runs, this one included, are multi-threaded: it refuses every other sequence. A
    /// fatal error inside bgfx goes to the callback's `fatal`.
    static bool Initialize(ContextOptions const& options);

    /// Destroys the programs and surfaces that are left and stops bgfx. When it returns, bgfx makes no more
    /// use of the callback and the native windows. Does nothing when the context is not initialised.
    static void Shutdown();

    /// The options of the running context, or of the last one; default options before the first.
    static ContextOptions const& GetOptions();

    /// True from a successful `Initialize` to the next `Shutdown`.
    static bool IsInitialized();

    /// Calls `bgfx::frame` once and returns the frame's number. Whoever submits frames this way is known to
    /// `IsFrameInFlight`; `bgfx::frame` itself remains usable beside it, but in single-threaded mode a new
    /// surface of a window shows what is drawn only from the frame after this call on. bgfx must run.
    static std::uint32_t SubmitFrame(bool capture = false);

    /// True from `SubmitFrame` until the render thread has executed that frame, when the next `bgfx::frame`
    /// would have to wait. A frame that was submitted by `bgfx::frame` itself does not count. Always false in
    /// single-threaded mode and while the context is not initialised. `FrameListener` tells when it ends.
    static bool IsFrameInFlight();

    /// Asks for a renderer backend, for every `Initialize` that follows. `bgfx::RendererType::Count`, the
    /// initial value, leaves the choice to bgfx. A preference: where the backend cannot start, bgfx takes
    /// the next best (`bgfx::getRendererType` tells which). `bgfx::RendererType::Noop`, which draws nothing
    /// and needs no display, runs only when it is asked for.
    static void PreferRenderer(bgfx::RendererType::Enum renderer);
};

} // namespace zarvex::zx3D
