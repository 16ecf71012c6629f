// A point's six vertices: the reference for cs_point_sprite, which computes the same on the GPU.
#pragma once

#include "Float4.h"

#include <zx3D/DataSpan.h>
#include <zx3D/Vertex.h>

#include <QMatrix4x4>
#include <QSize>

#include <cstdint>

namespace zarvex::zx3DQt::PointSprite {

/// What the compute shader reads of a point.
struct ComputeStageInputVertexData {
    Float4 position; ///< (x, y, z, 1)
    Float4 color;
};

/// A corner of a square, as both ways to expand write it.
struct DummyVertexT {
    Float4 position; ///< clip space
    Float4 color;
    Float4 center; ///< the point in NDC, half the square's side in pixels
};

constexpr std::uint32_t kVerticesPerPoint = 6;

/// Writes the two counter-clockwise triangles of each point's square of `size` pixels, `kVerticesPerPoint` ×
/// `points.count` vertices. `viewport` in pixels.
///
/// The corners' offset is scaled by clip w, so that they are ±size / 2 pixels away from the centre after the
/// perspective division. A point with clip w = 0 has the centre (0, 0, 0).
void Expand(zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points, QMatrix4x4 const& modelViewProjection,
            QSize viewport, float size, DummyVertexT* vertices);

} // namespace zarvex::zx3DQt::PointSprite
