// A frame buffer with several samples a pixel, which smooths edges, and a depth that is finer than the
// widgets'.
#pragma once

#include <bgfx/bgfx.h>

#include <QSize>

namespace viewer {

/// Textures that a scene is drawn into before `BGFXRenderer::DrawFullscreenTexture` puts it on the target.
///
/// Lifetime: destroy it while bgfx runs.
class MultisampledTarget {
public:
    MultisampledTarget() = default;
    ~MultisampledTarget();

    MultisampledTarget(MultisampledTarget const&) = delete;
    MultisampledTarget& operator=(MultisampledTarget const&) = delete;

    /// Makes it this large, pixels, with four samples a pixel or one. False when the GPU cannot.
    bool Resize(QSize size, bool smoothsEdges);

    bgfx::FrameBufferHandle GetFrameBuffer() const { return m_frameBuffer; }
    bgfx::TextureHandle GetColors() const { return bgfx::getTexture(m_frameBuffer, 0); }

private:
    void Destroy();

    bgfx::FrameBufferHandle m_frameBuffer = BGFX_INVALID_HANDLE;
    QSize m_size;
    bool m_smoothsEdges = false;
};

} // namespace viewer
