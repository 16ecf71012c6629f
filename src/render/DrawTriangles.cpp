// Triangles, unlit and lit.
#include <zx3DQt/BGFXRenderer.h>

#include "Drawing.h"
#include "TransientBuffers.h"

#include <cstring>

namespace zarvex::zx3DQt {

template<typename V>
void Drawing::DrawTriangles(DrawCall const& call, zx3D::DataSpan<V const> vertices,
                            zx3D::DataSpan<std::uint16_t const> indices, bgfx::ProgramHandle program) {
    if (vertices.IsEmpty() || indices.IsEmpty() || !Begin(program))
        return;
    static bgfx::VertexLayout const* const layout = &V::Layout();
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::TransientIndexBuffer indexBuffer;
    // Without the space there is nothing to draw from.
    if (!AllocateTransient(*layout, vertices.count, indices.count, vertexBuffer, indexBuffer))
        return m_counter.LeaveOut(LeftOutReason::NoTransientSpace);
    std::memcpy(vertexBuffer.data, vertices.data, vertexBuffer.size);
    std::memcpy(indexBuffer.data, indices.data, indexBuffer.size);
    bgfx::setState(call.state);
    bgfx::setVertexBuffer(0, &vertexBuffer);
    bgfx::setIndexBuffer(&indexBuffer);
    SetTransform(call);
    bgfx::submit(call.view, program, 0, BGFX_DISCARD_ALL);
    m_counter.AddPrimitives(indices.count / 3, vertexBuffer.size + indexBuffer.size);
}

void BGFXRenderer::DrawTriangles(BGFXViewContext const& view,
                                 zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                                 zx3D::DataSpan<std::uint16_t const> indices,
                                 std::optional<ModelTransformCacheId> modelTransform,
                                 std::optional<BGFXRenderState> state) const {
    m_drawing->DrawTriangles(m_drawing->MakeCall(view, modelTransform, state.value_or(STATE_OPAQUE)),
                             vertices, indices, GetBasicProgram());
}

void BGFXRenderer::DrawTriangles(BGFXViewContext const& view,
                                 zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const> vertices,
                                 zx3D::DataSpan<std::uint16_t const> indices,
                                 std::optional<ModelTransformCacheId> modelTransform,
                                 std::optional<BGFXRenderState> state,
                                 std::optional<bgfx::ProgramHandle> program) const {
    m_drawing->DrawTriangles(m_drawing->MakeCall(view, modelTransform, state.value_or(STATE_TRANSPARENT)),
                             vertices, indices, program.value_or(GetLightingProgram()));
}

} // namespace zarvex::zx3DQt
