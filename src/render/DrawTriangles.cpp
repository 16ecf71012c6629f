// Triangles, unlit and lit.
#include <zx3DQt/BGFXRenderer.h>

#include "TransientBuffers.h"

#include <cstring>

namespace zarvex::zx3DQt {

template<typename V>
void BGFXRenderer::SubmitTriangles(BGFXViewContext const& view, zx3D::DataSpan<V const> vertices,
                                   zx3D::DataSpan<std::uint16_t const> indices,
                                   std::optional<ModelTransformCacheId> modelTransform, BGFXRenderState state,
                                   bgfx::ProgramHandle program) const {
    if (vertices.IsEmpty() || indices.IsEmpty())
        return;
    static bgfx::VertexLayout const* const layout = &V::Layout();
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::TransientIndexBuffer indexBuffer;
    // Without the space there is nothing to draw from.
    if (!AllocateTransient(*layout, vertices.count, indices.count, vertexBuffer, indexBuffer))
        return;
    std::memcpy(vertexBuffer.data, vertices.data, vertexBuffer.size);
    std::memcpy(indexBuffer.data, indices.data, indexBuffer.size);
    bgfx::setState(state);
    bgfx::setVertexBuffer(0, &vertexBuffer);
    bgfx::setIndexBuffer(&indexBuffer);
    SetTransform(modelTransform);
    bgfx::submit(view, program, 0, BGFX_DISCARD_ALL);
}

void BGFXRenderer::DrawTriangles(BGFXViewContext const& view,
                                 zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                                 zx3D::DataSpan<std::uint16_t const> indices,
                                 std::optional<ModelTransformCacheId> modelTransform,
                                 std::optional<BGFXRenderState> state) const {
    SubmitTriangles(view, vertices, indices, modelTransform, state.value_or(STATE_OPAQUE), m_basicProgram);
}

void BGFXRenderer::DrawTriangles(BGFXViewContext const& view,
                                 zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const> vertices,
                                 zx3D::DataSpan<std::uint16_t const> indices,
                                 std::optional<ModelTransformCacheId> modelTransform,
                                 std::optional<BGFXRenderState> state,
                                 std::optional<bgfx::ProgramHandle> program) const {
    SubmitTriangles(view, vertices, indices, modelTransform, state.value_or(STATE_TRANSPARENT),
                    program.value_or(m_lightingProgram));
}

} // namespace zarvex::zx3DQt
