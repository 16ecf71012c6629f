// Points of one pixel, and the choice between them and large ones.
#include <zx3DQt/BGFXRenderer.h>

#include "TransientBuffers.h"

#include <algorithm>
#include <cstring>

namespace zarvex::zx3DQt {

void BGFXRenderer::DrawPoints(BGFXViewContext const& view,
                              zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points,
                              std::optional<std::uint16_t> size,
                              std::optional<ModelTransformCacheId> modelTransform,
                              std::optional<BGFXRenderState> state) const {
    if (points.IsEmpty())
        return;
    if (size && *size >= 2)
        DrawPointSprites(view, points, *size, modelTransform, state);
    else
        DrawBasicPoints(view, points, modelTransform);
}

void BGFXRenderer::DrawBasicPoints(BGFXViewContext const& view, Points points,
                                   std::optional<ModelTransformCacheId> modelTransform) const {
    if (points.IsEmpty())
        return;
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    static bgfx::VertexLayout const* const layout = &Vertex::Layout();
    std::uint64_t const count = std::min(points.count, kMaxTransientBytes / sizeof(Vertex));
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::allocTransientVertexBuffer(&vertexBuffer, static_cast<std::uint32_t>(count), *layout);
    // Full, bgfx gives less space than asked for; or pretends to have more, where the rest cannot hold a
    // vertex.
    if (vertexBuffer.size == 0 || vertexBuffer.size > count * sizeof(Vertex))
        return;
    std::memcpy(vertexBuffer.data, points.data, vertexBuffer.size);
    bgfx::setState(STATE_POINTS);
    bgfx::setVertexBuffer(0, &vertexBuffer);
    SetTransform(modelTransform);
    bgfx::submit(view, m_basicProgram, 0, BGFX_DISCARD_ALL);
}

} // namespace zarvex::zx3DQt
