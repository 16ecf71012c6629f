// A triangle that tells several samples from one.
#pragma once

#include "ExactCoverage.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/FrameBuffer.h>

#include <QImage>
#include <QSize>

namespace zarvex::testing {

/// How far edges of four samples are off on average, of a pixel, and no further; edges of one are.
constexpr double kLargestError = 1.0 / 8.0;

/// A triangle within a target of this size, pixels.
ConvexPolygon TriangleIn(QSize size);

/// Starts a frame that shows the triangle in white on black, in a view of this id. False where it cannot.
bool RecordTriangle(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer, bgfx::ViewId id = 1);

/// The picture of the triangle has smooth edges, or edges of steps, and is right everywhere else.
/// @{
bool IsSmooth(QImage const& picture);
bool IsStepped(QImage const& picture);
/// @}

} // namespace zarvex::testing
