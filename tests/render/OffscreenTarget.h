// A target without a window, and the pictures that are drawn on it.
#pragma once

#include <zx3D/FrameBuffer.h>

#include <QImage>
#include <QRect>
#include <QSize>

namespace zarvex::testing {

/// An unattached frame buffer of 8-bit colours, with 16-bit depth and one sample unless told otherwise,
/// destroyed with the object.
class OffscreenTarget {
public:
    explicit OffscreenTarget(QSize size, zx3D::FrameBufferOptions const& options = {});
    ~OffscreenTarget();

    OffscreenTarget(OffscreenTarget const&) = delete;
    OffscreenTarget& operator=(OffscreenTarget const&) = delete;

    zx3D::FrameBuffer& GetFrameBuffer() { return m_frameBuffer; }
    QRect GetViewport() const { return {0, 0, m_frameBuffer.GetWidth(), m_frameBuffer.GetHeight()}; }

private:
    zx3D::FrameBuffer m_frameBuffer;
};

/// Submits the recorded frame and returns the frame buffer's colours after it, top row first on every
/// backend. The frame buffer must be unattached and have its bgfx object.
QImage ReadBack(zx3D::FrameBuffer const& frameBuffer);

} // namespace zarvex::testing
