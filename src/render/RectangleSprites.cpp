// Lines of several pixels: each becomes a rectangle of two triangles on the screen.
#include <zx3DQt/BGFXRenderer.h>

#include "FrameResources.h"
#include "RectangleSpriteExpansion.h"
#include "SpriteSubmission.h"

namespace zarvex::zx3DQt {

using RectangleSprite::ComputeStageInputVertexData;
using RectangleSprite::DummyVertexT;
using RectangleSprite::kVerticesPerLine;

namespace {

bgfx::VertexLayout const& InputLayout() {
    static bgfx::VertexLayout const layout =
        LayoutOfFloat4s({bgfx::Attrib::TexCoord0, bgfx::Attrib::TexCoord1, bgfx::Attrib::Color0});
    return layout;
}

/// Without a position: the draw program takes all that it needs from texture coordinates.
bgfx::VertexLayout const& VertexLayout() {
    static bgfx::VertexLayout const layout = LayoutOfFloat4s(
        {bgfx::Attrib::TexCoord0, bgfx::Attrib::Color0, bgfx::Attrib::TexCoord1, bgfx::Attrib::TexCoord2});
    return layout;
}

std::shared_ptr<ComputeStageInputVertexData[]> CopyInput(zx3D::DataSpan<zx3D::Line const> lines) {
    auto input = std::make_shared_for_overwrite<ComputeStageInputVertexData[]>(lines.count);
    for (std::uint64_t i = 0; i < lines.count; ++i) {
        zx3D::Line const& line = lines.data[i];
        input[i] = {ToFloat4(line.start), ToFloat4(line.end), ToFloat4(line.color)};
    }
    return input;
}

} // namespace

void BGFXRenderer::DrawRectangleSprites(BGFXViewContext const& view, Lines lines, std::uint16_t width,
                                        std::optional<ModelTransformCacheId> modelTransform,
                                        std::optional<zx3D::LineStipplePattern> const& stipple,
                                        std::optional<BGFXRenderState> state) const {
    SubmitSprites(
        lines,
        [&](Lines part) { DrawRectangleSpritesGPU(view, part, width, modelTransform, stipple, state); },
        [&](Lines part) { DrawRectangleSpritesCPU(view, part, width, modelTransform, stipple, state); });
}

void BGFXRenderer::DrawRectangleSpritesCPU(BGFXViewContext const& view, Lines lines, std::uint16_t width,
                                           std::optional<ModelTransformCacheId> modelTransform,
                                           std::optional<zx3D::LineStipplePattern> const& stipple,
                                           std::optional<BGFXRenderState> state) const {
    if (lines.IsEmpty() || width == 0)
        return;
    auto const count = static_cast<std::uint32_t>(lines.count);
    auto& sprites = Append<DummyVertexT>(m_frameResources, FrameResource::SpriteVertices);
    sprites.vertexBuffer =
        bgfx::createDynamicVertexBuffer(kVerticesPerLine * count, VertexLayout(), BGFX_BUFFER_NONE);
    if (!bgfx::isValid(sprites.vertexBuffer)) // bgfx has only so many, and would write beyond its records
        return;

    SetTransform(modelTransform);
    // Expanded in place: bgfx owns the memory, and nothing is copied again.
    bgfx::Memory const* const vertices = bgfx::alloc(kVerticesPerLine * count * sizeof(DummyVertexT));
    RectangleSprite::Expand(lines, ModelViewProjection(view, modelTransform), view.GetViewport().size(),
                            width, reinterpret_cast<DummyVertexT*>(vertices->data));
    bgfx::update(sprites.vertexBuffer, 0, vertices);

    bgfx::setState(state.value_or(STATE_OPAQUE));
    bgfx::setVertexBuffer(0, sprites.vertexBuffer);
    UpdateViewportUniform(view);
    UpdateRectangleSpriteUniform(count, width);
    UpdateLineStippleUniform(stipple.value_or(zx3D::LineStipplePattern()));
    bgfx::submit(view, m_rectangleSpriteProgram, 0, BGFX_DISCARD_ALL);
}

void BGFXRenderer::DrawRectangleSpritesGPU(BGFXViewContext const& view, Lines lines, std::uint16_t width,
                                           std::optional<ModelTransformCacheId> modelTransform,
                                           std::optional<zx3D::LineStipplePattern> const& stipple,
                                           std::optional<BGFXRenderState> state) const {
    if (lines.IsEmpty() || width == 0)
        return;
    auto const count = static_cast<std::uint32_t>(lines.count);
    auto& input = Append<ComputeStageInputVertexData>(m_frameResources, FrameResource::RectangleSpriteInput);
    input.vertices = CopyInput(lines);
    input.vertexBuffer = bgfx::createDynamicVertexBuffer(count, InputLayout(), BGFX_BUFFER_COMPUTE_READ);
    if (!bgfx::isValid(input.vertexBuffer))
        return;
    bgfx::update(input.vertexBuffer, 0, MakeSharedRef(input.vertices, count));

    auto& output = Append<DummyVertexT>(m_frameResources, FrameResource::RectangleSpriteOutput);
    output.vertexBuffer =
        bgfx::createDynamicVertexBuffer(kVerticesPerLine * count, VertexLayout(), BGFX_BUFFER_COMPUTE_WRITE);
    if (!bgfx::isValid(output.vertexBuffer))
        return;

    SetTransform(modelTransform);
    UpdateViewportUniform(view);
    UpdateRectangleSpriteUniform(count, width);
    bgfx::setBuffer(0, input.vertexBuffer, bgfx::Access::Read);
    bgfx::setBuffer(1, output.vertexBuffer, bgfx::Access::Write);
    bgfx::dispatch(view, m_rectangleSpriteComputeProgram, GroupCount(count), 1, 1, BGFX_DISCARD_ALL);

    bgfx::setState(state.value_or(STATE_OPAQUE));
    bgfx::setVertexBuffer(0, output.vertexBuffer);
    // The dispatch has used them up.
    UpdateViewportUniform(view);
    UpdateRectangleSpriteUniform(count, width);
    UpdateLineStippleUniform(stipple.value_or(zx3D::LineStipplePattern()));
    bgfx::submit(view, m_rectangleSpriteProgram, 0, BGFX_DISCARD_ALL);
}

} // namespace zarvex::zx3DQt
