// A disc as a fan around its centre.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Shapes.h>

#include "../render/Drawing.h"
#include "../render/TransientBuffers.h"

#include <cmath>

namespace zarvex::zx3DQt {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr int kSegments = 360;
constexpr float kRadiansPerDegree = 0.017453292f;

void FillVertices(QVector2D const& center, float radius, zx3D::Color const& color, float z, Vertex* vertex) {
    *vertex++ = Vertex({center.x(), center.y(), z}, color);
    for (int i = 0; i < kSegments; ++i) {
        float const angle = static_cast<float>(i) * kRadiansPerDegree;
        *vertex++ =
            Vertex({center.x() + std::cos(angle) * radius, center.y() + std::sin(angle) * radius, z}, color);
    }
}

void FillIndices(std::uint16_t* index) {
    for (int i = 0; i < kSegments; ++i) {
        *index++ = 0;
        *index++ = static_cast<std::uint16_t>(i + 1);
        *index++ = static_cast<std::uint16_t>((i + 1) % kSegments + 1);
    }
}

} // namespace

void DrawCircle(BGFXRenderer const& renderer, BGFXViewContext const& view, QVector2D const& center,
                float radius, zx3D::Color const& color, float z, BGFXRenderState state) {
    static bgfx::VertexLayout const* const layout = &Vertex::Layout();
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::TransientIndexBuffer indexBuffer;
    // Without the space there is nothing to draw from.
    if (!AllocateTransient(*layout, kSegments + 1, 3 * kSegments, vertexBuffer, indexBuffer))
        return;
    FillVertices(center, radius, color, z, reinterpret_cast<Vertex*>(vertexBuffer.data));
    FillIndices(reinterpret_cast<std::uint16_t*>(indexBuffer.data));
    bgfx::setVertexBuffer(0, &vertexBuffer);
    bgfx::setIndexBuffer(&indexBuffer);
    bgfx::setState(Drawing::ForView(view, state), 0);
    bgfx::submit(view, renderer.GetBasicProgram(), 0, BGFX_DISCARD_ALL);
}

void DrawCircle(BGFXRenderer const& renderer, BGFXViewContext const& view, BGFXCircleModel2D const& model,
                float z, BGFXRenderState state) {
    DrawCircle(renderer, view, model.center, model.radius, model.color, z, state);
}

} // namespace zarvex::zx3DQt
