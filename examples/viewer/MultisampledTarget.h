// A frame buffer with several samples a pixel, which smooths edges, and a depth that is finer than the
// widgets'.
#pragma once

#include <zx3D/Owned.h>

#include <QSize>

namespace viewer {

/// Textures that a scene is drawn into before `BGFXRenderer::DrawFullscreenTexture` puts it on the target.
///
/// Lifetime: as that of `zx3D::Owned`.
class MultisampledTarget {
public:
    /// Makes it this large, pixels, with four samples a pixel or one. False when the GPU cannot.
    bool Resize(QSize size, bool smoothsEdges);

    bgfx::FrameBufferHandle GetFrameBuffer() const { return m_frameBuffer.Get(); }
    bgfx::TextureHandle GetColors() const { return bgfx::getTexture(m_frameBuffer.Get(), 0); }

private:
    zarvex::zx3D::Owned<bgfx::FrameBufferHandle> m_frameBuffer;
    QSize m_size;
    bool m_smoothsEdges = false;
};

} // namespace viewer
