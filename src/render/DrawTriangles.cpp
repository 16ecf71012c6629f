// Triangles of interpolated vertex colours.
#include <zx3DQt/BGFXRenderer.h>

#include <cstring>

namespace zarvex::zx3DQt {

void BGFXRenderer::DrawTriangles(BGFXViewContext const& view,
                                 zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                                 zx3D::DataSpan<std::uint16_t const> indices,
                                 std::optional<ModelTransformCacheId> modelTransform,
                                 std::optional<BGFXRenderState> state) const {
    if (vertices.IsEmpty() || indices.IsEmpty())
        return;
    static bgfx::VertexLayout const* const layout = &zx3D::Vertex::Pos3fColorRGBA::Layout();
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::TransientIndexBuffer indexBuffer;
    // Without the space bgfx allocates neither, and there is nothing to draw from.
    if (!bgfx::allocTransientBuffers(&vertexBuffer, *layout, static_cast<std::uint32_t>(vertices.count),
                                     &indexBuffer, static_cast<std::uint32_t>(indices.count)))
        return;
    std::memcpy(vertexBuffer.data, vertices.data, vertexBuffer.size);
    std::memcpy(indexBuffer.data, indices.data, indexBuffer.size);
    bgfx::setState(state.value_or(STATE_OPAQUE));
    bgfx::setVertexBuffer(0, &vertexBuffer);
    bgfx::setIndexBuffer(&indexBuffer);
    SetTransform(modelTransform);
    bgfx::submit(view, m_basicProgram, 0, BGFX_DISCARD_ALL);
}

} // namespace zarvex::zx3DQt
