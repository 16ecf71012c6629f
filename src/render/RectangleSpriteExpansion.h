// A wide line's six vertices: the reference for cs_rectangle_sprite, which computes the same on the GPU.
#pragma once

#include "Float4.h"

#include <zx3D/DataSpan.h>
#include <zx3D/Line.h>

#include <QMatrix4x4>
#include <QSize>

#include <cstdint>

namespace zarvex::zx3DQt::RectangleSprite {

/// What the compute shader reads of a line.
struct ComputeStageInputVertexData {
    Float4 start; ///< (x, y, z, 1)
    Float4 end;   ///< (x, y, z, 1)
    Float4 color;
};

/// A corner of a rectangle, as both ways to expand write it.
struct DummyVertexT {
    Float4 corner; ///< NDC, w = 1
    Float4 color;
    Float4 start; ///< (x, y) in viewport pixels, y down; NDC z; 1
    Float4 end;   ///< likewise
};

constexpr std::uint32_t kVerticesPerLine = 6;

/// Writes the two triangles of each line's rectangle of `width` pixels, `kVerticesPerLine` × `lines.count`
/// vertices. `viewport` in pixels.
///
/// A line with no length on the screen has all corners at (0, 0, 0, 0). Ends in the camera's own plane give
/// infinities, which the draw program leaves out.
void Expand(zx3D::DataSpan<zx3D::Line const> lines, QMatrix4x4 const& modelViewProjection, QSize viewport,
            float width, DummyVertexT* vertices);

} // namespace zarvex::zx3DQt::RectangleSprite
