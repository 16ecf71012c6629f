// One loop over the points whose steps are four floats wide, as the processor's registers are.
#include "PointSpriteExpansion.h"

namespace zarvex::zx3DQt::PointSprite {

namespace {

/// The product of a column-major matrix and (position, 1).
Float4 Transform(float const* m, bx::Vec3 const& p) {
    return {m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12], m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
            m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14], m[3] * p.x + m[7] * p.y + m[11] * p.z + m[15]};
}

Float4 Center(Float4 const& clip, float halfSize) {
    if (clip.w == 0.0f)
        return {0.0f, 0.0f, 0.0f, halfSize};
    return {clip.x / clip.w, clip.y / clip.w, clip.z / clip.w, halfSize};
}

} // namespace

void Expand(zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points, QMatrix4x4 const& modelViewProjection,
            QSize viewport, float size, DummyVertexT* vertices) {
    float const* const matrix = modelViewProjection.constData();
    auto const width = static_cast<float>(viewport.width());
    auto const height = static_cast<float>(viewport.height());
    float const halfSize = size * 0.5f;
    for (std::uint64_t i = 0; i < points.count; ++i, vertices += kVerticesPerPoint) {
        Float4 const clip = Transform(matrix, points.data[i].position);
        Float4 const color = ToFloat4(points.data[i].color);
        Float4 const center = Center(clip, halfSize);
        float const right = clip.w * size / width;
        float const up = clip.w * size / height;
        DummyVertexT const lowerLeft{{clip.x - right, clip.y - up, clip.z, clip.w}, color, center};
        DummyVertexT const lowerRight{{clip.x + right, clip.y - up, clip.z, clip.w}, color, center};
        DummyVertexT const upperRight{{clip.x + right, clip.y + up, clip.z, clip.w}, color, center};
        DummyVertexT const upperLeft{{clip.x - right, clip.y + up, clip.z, clip.w}, color, center};
        vertices[0] = lowerLeft;
        vertices[1] = lowerRight;
        vertices[2] = upperRight;
        vertices[3] = lowerLeft;
        vertices[4] = upperRight;
        vertices[5] = upperLeft;
    }
}

} // namespace zarvex::zx3DQt::PointSprite
