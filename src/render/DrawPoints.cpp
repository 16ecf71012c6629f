// Points of one pixel, and the choice between them and large ones.
#include <zx3DQt/BGFXRenderer.h>

#include "Drawing.h"
#include "TransientBuffers.h"

#include <algorithm>
#include <cstring>

namespace zarvex::zx3DQt {

void Drawing::DrawBasicPoints(DrawCall const& call, Points points) {
    if (points.IsEmpty() || !Begin(GetProgram(Program::Basic)))
        return;
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    static bgfx::VertexLayout const* const layout = &Vertex::Layout();
    std::uint64_t const count = std::min(points.count, kMaxTransientBytes / sizeof(Vertex));
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::allocTransientVertexBuffer(&vertexBuffer, static_cast<std::uint32_t>(count), *layout);
    // Full, bgfx gives less space than asked for; or pretends to have more, where the rest cannot hold a
    // vertex.
    bool const hasNone = vertexBuffer.size == 0 || vertexBuffer.size > count * sizeof(Vertex);
    if (hasNone || vertexBuffer.size < points.count * sizeof(Vertex))
        m_counter.LeaveOut(LeftOutReason::NoTransientSpace);
    if (hasNone)
        return;
    std::memcpy(vertexBuffer.data, points.data, vertexBuffer.size);
    bgfx::setState(call.state);
    bgfx::setVertexBuffer(0, &vertexBuffer);
    SetTransform(call);
    bgfx::submit(call.view, GetProgram(Program::Basic), 0, BGFX_DISCARD_ALL);
    m_counter.AddPrimitives(vertexBuffer.size / sizeof(Vertex), vertexBuffer.size);
}

void BGFXRenderer::DrawPoints(BGFXViewContext const& view,
                              zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points,
                              std::optional<std::uint16_t> size,
                              std::optional<ModelTransformCacheId> modelTransform,
                              std::optional<BGFXRenderState> state) const {
    if (points.IsEmpty())
        return;
    if (size && *size >= 2)
        m_drawing->DrawPointSprites(m_drawing->MakeCall(view, modelTransform, state.value_or(STATE_OPAQUE)),
                                    points, *size);
    else
        m_drawing->DrawBasicPoints(m_drawing->MakeCall(view, modelTransform, STATE_POINTS), points);
}

} // namespace zarvex::zx3DQt
