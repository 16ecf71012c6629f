// Points of several pixels: each becomes a square of two triangles.
#include <zx3DQt/BGFXRenderer.h>

#include "FrameResources.h"
#include "PointSpriteExpansion.h"
#include "SpriteSubmission.h"

namespace zarvex::zx3DQt {

using PointSprite::ComputeStageInputVertexData;
using PointSprite::DummyVertexT;
using PointSprite::kVerticesPerPoint;

namespace {

bgfx::VertexLayout const& InputLayout() {
    static bgfx::VertexLayout const layout = LayoutOfFloat4s({bgfx::Attrib::Position, bgfx::Attrib::Color0});
    return layout;
}

bgfx::VertexLayout const& VertexLayout() {
    static bgfx::VertexLayout const layout =
        LayoutOfFloat4s({bgfx::Attrib::Position, bgfx::Attrib::Color0, bgfx::Attrib::TexCoord0});
    return layout;
}

std::shared_ptr<ComputeStageInputVertexData[]>
CopyInput(zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points) {
    auto input = std::make_shared_for_overwrite<ComputeStageInputVertexData[]>(points.count);
    for (std::uint64_t i = 0; i < points.count; ++i)
        input[i] = {ToFloat4(points.data[i].position), ToFloat4(points.data[i].color)};
    return input;
}

} // namespace

void BGFXRenderer::DrawPointSprites(BGFXViewContext const& view, Points points, std::uint16_t size,
                                    std::optional<ModelTransformCacheId> modelTransform,
                                    std::optional<BGFXRenderState> state) const {
    SubmitSprites(
        points, [&](Points part) { DrawPointSpritesGPU(view, part, size, modelTransform, state); },
        [&](Points part) { DrawPointSpritesCPU(view, part, size, modelTransform, state); });
}

void BGFXRenderer::DrawPointSpritesCPU(BGFXViewContext const& view, Points points, std::uint16_t size,
                                       std::optional<ModelTransformCacheId> modelTransform,
                                       std::optional<BGFXRenderState> state) const {
    if (points.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(points.count);
    auto& sprites = Append<DummyVertexT>(m_frameResources, FrameResource::SpriteVertices);
    sprites.vertexBuffer =
        bgfx::createDynamicVertexBuffer(kVerticesPerPoint * count, VertexLayout(), BGFX_BUFFER_NONE);
    if (!bgfx::isValid(sprites.vertexBuffer)) // bgfx has only so many, and would write beyond its records
        return;

    SetTransform(modelTransform);
    // Expanded in place: bgfx owns the memory, and nothing is copied again.
    bgfx::Memory const* const vertices = bgfx::alloc(kVerticesPerPoint * count * sizeof(DummyVertexT));
    PointSprite::Expand(points, ModelViewProjection(view, modelTransform), view.GetViewport().size(), size,
                        reinterpret_cast<DummyVertexT*>(vertices->data));
    bgfx::update(sprites.vertexBuffer, 0, vertices);

    bgfx::setState(state.value_or(STATE_OPAQUE));
    bgfx::setVertexBuffer(0, sprites.vertexBuffer);
    UpdateViewportUniform(view);
    UpdatePointSpriteUniform(count, size);
    bgfx::submit(view, m_pointSpriteProgram, 0, BGFX_DISCARD_ALL);
}

void BGFXRenderer::DrawPointSpritesGPU(BGFXViewContext const& view, Points points, std::uint16_t size,
                                       std::optional<ModelTransformCacheId> modelTransform,
                                       std::optional<BGFXRenderState> state) const {
    if (points.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(points.count);
    auto& input = Append<ComputeStageInputVertexData>(m_frameResources, FrameResource::PointSpriteInput);
    input.vertices = CopyInput(points);
    input.vertexBuffer = bgfx::createDynamicVertexBuffer(count, InputLayout(), BGFX_BUFFER_COMPUTE_READ);
    if (!bgfx::isValid(input.vertexBuffer))
        return;
    bgfx::update(input.vertexBuffer, 0, MakeSharedRef(input.vertices, count));

    auto& output = Append<DummyVertexT>(m_frameResources, FrameResource::SpriteVertices);
    output.vertexBuffer =
        bgfx::createDynamicVertexBuffer(kVerticesPerPoint * count, VertexLayout(), BGFX_BUFFER_COMPUTE_WRITE);
    if (!bgfx::isValid(output.vertexBuffer))
        return;

    SetTransform(modelTransform);
    UpdateViewportUniform(view);
    UpdatePointSpriteUniform(count, size);
    bgfx::setBuffer(0, input.vertexBuffer, bgfx::Access::Read);
    bgfx::setBuffer(1, output.vertexBuffer, bgfx::Access::Write);
    bgfx::dispatch(view, m_pointSpriteComputeProgram, GroupCount(count), 1, 1, BGFX_DISCARD_ALL);

    bgfx::setState(state.value_or(STATE_OPAQUE));
    bgfx::setVertexBuffer(0, output.vertexBuffer);
    // The dispatch has used them up.
    UpdateViewportUniform(view);
    UpdatePointSpriteUniform(count, size);
    bgfx::submit(view, m_pointSpriteProgram, 0, BGFX_DISCARD_ALL);
}

} // namespace zarvex::zx3DQt
