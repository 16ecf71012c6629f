// A picture that tells by its corners whether size and place are right: drawn by the library, and drawn in
// software.
#pragma once

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <QColor>
#include <QImage>
#include <QRect>
#include <QRegion>
#include <QSize>

#include <string>

namespace zarvex::testing {

/// Records a frame that shows the picture in a viewport: one colour, in each corner a square of 12 pixels of
/// another, and in the upper left part a ramp of colours. Each target draws into a view of its own: `viewId`.
/// False when the frame buffer is collapsed.
bool RecordCornerPicture(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer,
                         QRect const& viewport, QColor const& color, bgfx::ViewId viewId);

/// The picture as it should be, pixels without rounding errors of the GPU.
QImage CornerPicture(QSize size, QColor const& color);

/// Empty when the image is the picture of its colour and of this size, but for rounding errors, else what
/// differs. Looks at the pixels of `region` only.
std::string FindDifference(QImage const& image, QSize size, QColor const& color, QRegion const& region);
std::string FindDifference(QImage const& image, QSize size, QColor const& color);

} // namespace zarvex::testing
