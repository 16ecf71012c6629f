// Which program draws which lines.
#include "LineTechnique.h"

#include "../render/Drawing.h"
#include "AlphaCoverage.h"
#include "DepthShift.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/FrameBuffer.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zarvex::zx3DQt {

namespace {

/// Wider lines gain nothing, and numbers stay finite.
constexpr float kLargestWidth = 65'535.0f;

/// A line's width, of which one is 0.
struct Width {
    float pixels;
    float world;
};

Width WidthOf(LineStyle const& style) {
    if (!(style.width > 0.0f)) // what is not a number, too
        return {1.0f, 0.0f};
    if (style.widthUnit == SizeUnit::World)
        return {0.0f, std::min(style.width, std::numeric_limits<float>::max())};
    return {std::clamp(style.width, style.smoothEdges ? 0.0f : 1.0f, kLargestWidth), 0.0f};
}

bool IsStippled(LineStyle const& style) {
    return style.stipple.pattern != 0xFFFF;
}

/// Whether the GPU's own lines will do.
bool IsSinglePixel(LineStyle const& style) {
    return WidthOf(style).pixels == 1.0f && !style.smoothEdges && !IsStippled(style);
}

/// Whether a rectangle is all that a line is.
bool IsRectangle(LineStyle const& style, LineKind kind) {
    return kind == LineKind::Segments && style.cap != LineCap::Round && !style.smoothEdges &&
           !IsStippled(style);
}

char const* FragmentShaderOf(bool isSmooth, bool isStippled) {
    if (isStippled)
        return isSmooth ? "fs_line_batch_smooth_stipple" : "fs_line_batch_stipple";
    return isSmooth ? "fs_line_batch_smooth" : "fs_line_batch_shape";
}

BGFXRenderState DefaultState(LineStyle const& style) {
    if (!style.smoothEdges)
        return BGFXRenderer::STATE_OPAQUE;
    // A depth at a fading edge would keep out what belongs beside it: the next segment, for one.
    return BGFXRenderState{BGFXRenderer::STATE_TRANSPARENT.GetValue() & ~std::uint64_t(BGFX_STATE_WRITE_Z)};
}

} // namespace

LineTechnique::LineTechnique(LineStyle const& style, LineKind kind, BGFXViewContext const& view,
                             bool isInFront)
    : m_state(Drawing::ForView(view, style.state.value_or(DefaultState(style)))) {
    bool const isSegment = kind == LineKind::Segments;
    if (IsSinglePixel(style)) {
        m_vertexShader = isSegment ? "vs_line_batch_thin" : "vs_line_batch_thin_joined";
        m_isThin = true;
        m_state = m_state | BGFX_STATE_PT_LINES;
        return;
    }
    if (IsRectangle(style, kind)) {
        m_vertexShader = isInFront ? "vs_line_batch_wide" : "vs_line_batch_wide_cut";
        return;
    }
    m_isStippled = IsStippled(style);
    m_runsOn = m_isStippled && !isSegment && (bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE) != 0;
    if (isSegment)
        m_vertexShader = isInFront ? "vs_line_batch_shape" : "vs_line_batch_shape_cut";
    else if (m_runsOn)
        m_vertexShader = isInFront ? "vs_line_batch_run" : "vs_line_batch_run_cut";
    else
        m_vertexShader = isInFront ? "vs_line_batch_joined" : "vs_line_batch_joined_cut";
    // Where a pixel has several samples, the fragment shader decides about each by its alpha.
    bool const isMultisampled = zx3D::FrameBuffer::IsMultisampled(view);
    m_fragmentShader = FragmentShaderOf(style.smoothEdges || isMultisampled, m_isStippled);
    if (isMultisampled && !Blends(m_state))
        m_state = m_state | kAlphaIsCoverage;
}

void SetLineSize(BatchUniforms const& uniforms, LineStyle const& style, BGFXViewContext const& view) {
    Width const width = WidthOf(style);
    float const pixelsPerUnit =
        0.5f * std::abs(view.GetProjectionMatrix()(1, 1)) * static_cast<float>(view.GetViewport().height());
    DepthShift const shift = DepthShiftOf(view, std::isfinite(style.depthOffset) ? style.depthOffset : 0.0f);
    uniforms.Set(BatchUniform::LineSize, 0.5f * width.pixels, 0.5f * width.world * pixelsPerUnit, shift.ofZ,
                 shift.ofW);
}

void SetLineShape(BatchUniforms const& uniforms, LineStyle const& style) {
    float const miter = style.join == LineJoin::Miter ? 0.5f * style.miterLimit * style.miterLimit : 0.0f;
    uniforms.Set(BatchUniform::LineShape, style.cap == LineCap::Square ? 1.0f : 0.0f,
                 style.cap == LineCap::Round ? 1.0f : 0.0f, style.join == LineJoin::Round ? 1.0f : 0.0f,
                 miter);
}

void LineTechnique::SetUniforms(BatchUniforms const& uniforms, LineStyle const& style,
                                BGFXViewContext const& view) const {
    SetLineSize(uniforms, style, view);
    if (!m_isThin)
        SetLineShape(uniforms, style);
    if (m_isStippled)
        uniforms.Set(BatchUniform::LineStipple, static_cast<float>(style.stipple.pattern),
                     static_cast<float>(style.stipple.factor));
}

float PatternLengthOf(LineStyle const& style) {
    return 16.0f * static_cast<float>(std::max<int>(style.stipple.factor, 1));
}

LineReach ReachOf(LineStyle const& style) {
    Width const width = WidthOf(style);
    float const limit = style.join == LineJoin::Miter && style.miterLimit > 1.5f ? style.miterLimit : 1.5f;
    // At least a pixel, and another one that the fading may reach beyond.
    return {0.5f * std::max(width.pixels, 1.0f) * limit + 1.0f, 0.5f * width.world * limit};
}

} // namespace zarvex::zx3DQt
