// Where the workloads draw, from where they look, and how a frame ends.
#pragma once

#include "runner/Workload.h"

#include <zx3DQt/BGFXViewContext.h>

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::benchmarks {

/// True when bgfx draws nothing: then no frame is waited for.
bool DrawsNothing();

/// 1280 x 720 pixels of 8-bit colours and 16-bit depth off screen, and a camera that looks at the origin.
class Stage {
public:
    explicit Stage(bx::Vec3 const& eye = {0.0f, 0.0f, 5.0f}, std::uint32_t sampleCount = 1);
    ~Stage();

    Stage(Stage const&) = delete;
    Stage& operator=(Stage const&) = delete;

    zx3D::FrameBuffer& GetFrameBuffer() { return m_frameBuffer; }
    zx3DQt::BGFXViewContext const& GetView() const { return m_view; }

    /// What the view's `Submit` does, by hand.
    void SetUpView() const;

    /// Records that one pixel of the picture is read back. Returns the frame that has it.
    std::uint32_t RequestPixel();

    /// Hands the recorded frame to bgfx and returns what came of it.
    FrameResult Inspect();

private:
    zx3D::FrameBuffer m_frameBuffer;
    zx3DQt::BGFXViewContext m_view;
    bgfx::TextureHandle m_pixel = BGFX_INVALID_HANDLE;
    std::uint32_t m_pixelValue = 0;
};

/// Presents until `ready`, after `frame` was presented.
void WaitForFrame(std::uint32_t ready, std::uint32_t frame);

} // namespace zarvex::benchmarks
