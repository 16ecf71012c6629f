// What the graphics context is started with.
#pragma once

#include <zx3D/Message.h>
#include <zx3D/zx3DExport.h>

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3D {

/// Options of `Context::Initialize`. A plain value; `callback` and the native window are borrowed and must
/// outlive the context.
struct ContextOptions {
    /// Which thread executes the recorded frames.
    enum class ThreadMode : std::uint8_t {
        /// A render thread of zx3D's own, one for the life of the process; the recording thread runs one
        /// frame ahead. On OpenGL this keeps bgfx's GL contexts off the GUI thread, where Qt may have its
        /// own.
        MultiThreaded = 0,
        /// `bgfx::frame` executes the frame before it returns. Call it through `Context::SubmitFrame`: a
        /// window shows nothing before the first frame after that.
        SingleThreaded = 1,
    };

    void* nativeWindowHandle = nullptr;  ///< window that bgfx starts on: an X11 window id
    std::uint32_t width = 0;             ///< of that window, pixels
    std::uint32_t height = 0;            ///< of that window, pixels
    bgfx::CallbackI* callback = nullptr; ///< receives errors and trace text, from any thread; may be null
    /// Takes what zx3D has to say, from any thread and for the rest of the process; without one it goes to
    /// the trace of `callback`. bgfx's own messages always do.
    MessageHandler messageHandler;
    ThreadMode threadMode = ThreadMode::MultiThreaded; ///< which thread executes the frames
    bool verticalSync = false;                         ///< wait for the display's refresh when presenting

    /// Space for vertices and indices that one frame may allocate transiently, bytes. The defaults hold a
    /// million `Vertex::Pos3fColorRGBA` and two million indices. On OpenGL the whole of it is re-created in
    /// every frame that uses any: much more than the default costs milliseconds a frame.
    /// @{
    std::uint32_t transientVertexBufferSize = 28u << 20;
    std::uint32_t transientIndexBufferSize = 4u << 20;
    /// @}

    /// Options with the given values and defaults for the rest. Sizes in pixels.
    ZX3D_EXPORT static ContextOptions Create(void* nativeWindowHandle, std::uint32_t width,
                                             std::uint32_t height, bgfx::CallbackI* callback,
                                             ThreadMode threadMode, bool verticalSync);
};

} // namespace zarvex::zx3D
