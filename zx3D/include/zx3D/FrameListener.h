// Hearing that a frame is done.
#pragma once

#include <zx3D/zx3DExport.h>

#include <cstdint>
#include <functional>

namespace zarvex::zx3D {

/// Calls a function whenever the render thread has executed a frame.
///
/// It hears every frame of bgfx in multi-threaded mode: those of `Context::SubmitFrame`, those that the
/// application submits by itself, and the few that bgfx submits while it starts and stops. It hears none in
/// single-threaded mode, where `bgfx::frame` returns when the frame is done.
///
/// The function is given the frame's number, as `bgfx::frame` returned or will return it. It is called on the
/// render thread, before the next frame begins: it must return soon, must not throw, call bgfx or create or
/// destroy a listener, and must not wait for the thread that calls bgfx's API. `Context::IsFrameInFlight` no
/// longer counts the frame by then. What an OpenGL or Vulkan driver does behind the thread's back, presenting
/// included, may still go on.
///
/// Lifetime: may be made before the context starts and outlive it. The destructor waits for a call that is
/// under way; there is none afterwards. Thread: any.
class ZX3D_EXPORT FrameListener {
public:
    /// What is called with the number of the frame.
    using Function = std::function<void(std::uint32_t number)>;

    /// Listens from now on.
    explicit FrameListener(Function onFrameFinished);
    /// Listens no more.
    ~FrameListener();

    FrameListener(FrameListener const&) = delete;
    FrameListener& operator=(FrameListener const&) = delete;

    /// For the render thread: calls the function.
    void OnFrameFinished(std::uint32_t number) const { m_onFrameFinished(number); }

private:
    Function m_onFrameFinished;
};

} // namespace zarvex::zx3D
