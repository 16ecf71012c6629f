// Lines of one pixel, the choice between them and wide ones, and line strips.
#include <zx3DQt/BGFXRenderer.h>

#include "../frame/ColorConversion.h"
#include "Drawing.h"
#include "TransientBuffers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

/// As many as the vertices that 16-bit indices can address make.
constexpr std::uint64_t kMaxLinesPerSubmission = 32768;

/// Of fading lines. They leave the depth as it is: nothing hides behind what has faded. An opaque target
/// stays opaque.
constexpr BGFXRenderState kFadingState{
    BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A | BGFX_STATE_DEPTH_TEST_LEQUAL |
    BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_SRC_ALPHA, BGFX_STATE_BLEND_INV_SRC_ALPHA,
                                   BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA)};

/// Whole pixels, at least 1; not a number counts as 1.
float RoundedWidth(std::optional<float> width) {
    float const rounded = std::round(width.value_or(1.0f));
    return rounded > 1.0f ? rounded : 1.0f;
}

std::uint16_t SpriteWidth(float width) {
    constexpr float widest = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(std::min(width, widest));
}

bx::Vec3 ToVec3(QVector3D const& position) {
    return {position.x(), position.y(), position.z()};
}

/// Calls `append(from, to)` for each pair of positions that the strip joins.
template<typename AppendSegment>
void ForEachSegment(zx3D::DataSpan<QVector3D const> positions, zx3D::DataSpan<std::uint16_t const> indices,
                    AppendSegment append) {
    if (indices.count < 2) {
        for (std::uint64_t k = 0; k + 1 < positions.count; ++k)
            append(positions.data[k], positions.data[k + 1]);
        return;
    }
    for (std::uint64_t k = 0; k + 1 < indices.count; ++k) {
        std::uint16_t const from = indices.data[k];
        std::uint16_t const to = indices.data[k + 1];
        if (from != to && std::max(from, to) < positions.count)
            append(positions.data[from], positions.data[to]);
    }
}

/// Looked up once.
bgfx::VertexLayout const& VertexLayout() {
    static bgfx::VertexLayout const& layout = Vertex::Layout();
    return layout;
}

void FillVertices(zx3D::DataSpan<zx3D::Line const> lines, Vertex* vertex) {
    for (std::uint64_t i = 0; i < lines.count; ++i) {
        zx3D::Line const& line = lines.data[i];
        // By member: a whole vertex at once would be put together on the stack first.
        vertex[0].position = line.start;
        vertex[0].color = line.color;
        vertex[1].position = line.end;
        vertex[1].color = line.color;
        vertex += 2;
    }
}

} // namespace

void Drawing::DrawBasicLines(DrawCall const& call, Lines lines) {
    if (!Begin(GetProgram(Program::StippledLine)))
        return;
    bgfx::VertexLayout const& layout = VertexLayout();
    for (std::uint64_t first = 0; first < lines.count; first += kMaxLinesPerSubmission) {
        Lines const chunk(lines.data + first, std::min(lines.count - first, kMaxLinesPerSubmission));
        bgfx::TransientVertexBuffer vertexBuffer;
        bgfx::TransientIndexBuffer indexBuffer;
        // Without the space there is nothing to draw from; the last chunk may be small enough.
        if (!AllocateTransient(layout, 2 * chunk.count, 2 * chunk.count, vertexBuffer, indexBuffer)) {
            m_counter.LeaveOut(LeftOutReason::NoTransientSpace);
            continue;
        }
        FillVertices(chunk, reinterpret_cast<Vertex*>(vertexBuffer.data));
        auto* const firstIndex = reinterpret_cast<std::uint16_t*>(indexBuffer.data);
        std::iota(firstIndex, firstIndex + 2 * chunk.count, std::uint16_t{0});
        bgfx::setVertexBuffer(0, &vertexBuffer);
        bgfx::setIndexBuffer(&indexBuffer);
        UpdateViewportUniform(call.view);
        UpdateLineStippleUniform(call.stipple);
        UpdateFadeUniforms(call);
        SetTransform(call);
        bgfx::setState(call.state);
        bgfx::submit(call.view, LineProgram(call, Program::StippledLine), 0, BGFX_DISCARD_ALL);
        m_counter.AddPrimitives(chunk.count, vertexBuffer.size + indexBuffer.size);
    }
}

void Drawing::DrawFadingLines(DrawCall call, Lines lines, std::uint16_t width, DistanceFade const& fade) {
    std::optional<FadePlace> const place = ComputeFadePlace(call.view, fade);
    bool const isWide = width > 1; // their vertices come in clip space
    FadeUniforms const uniforms{place ? isWide ? place->fromClip : place->fromWorld : QMatrix4x4(),
                                FadeRange(fade)};
    if (place && m_initialized && m_lineFading.Start())
        call.fade = &uniforms;
    if (isWide)
        DrawRectangleSprites(call, lines, width);
    else
        DrawBasicLines(call, lines);
}

void BGFXRenderer::DrawLines(BGFXViewContext const& view, zx3D::DataSpan<zx3D::Line const> lines,
                             std::optional<float> width, std::optional<ModelTransformCacheId> modelTransform,
                             std::optional<zx3D::LineStipplePattern> const& stipple,
                             std::optional<BGFXRenderState> state) const {
    if (lines.IsEmpty())
        return;
    float const rounded = RoundedWidth(width);
    if (rounded != 1.0f)
        m_drawing->DrawRectangleSprites(
            m_drawing->MakeCall(view, modelTransform, state.value_or(STATE_OPAQUE), stipple), lines,
            SpriteWidth(rounded));
    else
        m_drawing->DrawBasicLines(
            m_drawing->MakeCall(view, modelTransform, state.value_or(STATE_LINES), stipple), lines);
}

void BGFXRenderer::DrawFadingLines(BGFXViewContext const& view, zx3D::DataSpan<zx3D::Line const> lines,
                                   DistanceFade const& fade, std::optional<float> width,
                                   std::optional<ModelTransformCacheId> modelTransform,
                                   std::optional<zx3D::LineStipplePattern> const& stipple,
                                   std::optional<BGFXRenderState> state) const {
    if (lines.IsEmpty())
        return;
    std::uint16_t const pixels = SpriteWidth(RoundedWidth(width));
    BGFXRenderState const ownState = pixels > 1 ? kFadingState : kFadingState | BGFX_STATE_PT_LINES;
    m_drawing->DrawFadingLines(m_drawing->MakeCall(view, modelTransform, state.value_or(ownState), stipple),
                               lines, pixels, fade);
}

void BGFXRenderer::DrawLines(BGFXViewContext const& view, zx3D::DataSpan<QVector3D const> positions,
                             zx3D::DataSpan<std::uint16_t const> indices, QColor const& color,
                             std::optional<float> width, std::optional<ModelTransformCacheId> modelTransform,
                             std::optional<zx3D::LineStipplePattern> const& stipple,
                             std::optional<BGFXRenderState> state) const {
    if (positions.IsEmpty() || positions.count < 2)
        return;
    if (indices.IsEmpty())
        indices = {};
    zx3D::Color const lineColor = QColorToColor(color);
    std::vector<zx3D::Line> lines;
    lines.reserve((indices.count < 2 ? positions.count : indices.count) - 1);
    ForEachSegment(positions, indices, [&](QVector3D const& from, QVector3D const& to) {
        lines.push_back({ToVec3(from), ToVec3(to), lineColor});
    });
    DrawLines(view, lines, width, modelTransform, stipple, state);
}

} // namespace zarvex::zx3DQt
