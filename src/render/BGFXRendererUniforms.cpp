// What each of the renderer's uniforms is packed from. Every updater sets its vec4 for the next submission.
#include <zx3DQt/BGFXRenderer.h>

namespace zarvex::zx3DQt {

namespace {

void SetVec4(bgfx::UniformHandle uniform, float x, float y, float z, float w) {
    float const vec4[] = {x, y, z, w};
    bgfx::setUniform(uniform, vec4, 1);
}

} // namespace

void BGFXRenderer::UpdateLineStippleUniform(zx3D::LineStipplePattern const& stipple) const {
    SetVec4(m_lineStippleUniform, static_cast<float>(stipple.pattern), static_cast<float>(stipple.factor),
            0.0f, 0.0f);
}

void BGFXRenderer::UpdateLineStyleUniform(zx3D::LineStyle const& style) const {
    SetVec4(m_lineStyleUniform, style.dashLength, style.gapLength, 0.0f, 0.0f);
}

void BGFXRenderer::UpdatePointSpriteUniform(std::uint32_t pointCount, std::uint32_t size) const {
    SetVec4(m_pointSpriteUniform, static_cast<float>(pointCount), static_cast<float>(size), 0.0f, 0.0f);
}

void BGFXRenderer::UpdateRectangleSpriteUniform(std::uint32_t lineCount, std::uint32_t width) const {
    SetVec4(m_rectangleSpriteUniform, static_cast<float>(lineCount), static_cast<float>(width), 0.0f, 0.0f);
}

void BGFXRenderer::UpdateViewportUniform(BGFXViewContext const& view) const {
    QRect const& viewport = view.GetViewport();
    SetVec4(m_viewportUniform, static_cast<float>(viewport.width()), static_cast<float>(viewport.height()),
            0.0f, 0.0f);
}

void BGFXRenderer::UpdateViewPositionUniform(QVector3D const& position) const {
    SetVec4(m_viewPositionUniform, position.x(), position.y(), position.z(), 1.0f);
}

void BGFXRenderer::UpdateDepthOffsetBiasUniform(float offset, float bias) const {
    SetVec4(m_depthOffsetBiasUniform, offset, bias, 0.0f, 0.0f);
}

} // namespace zarvex::zx3DQt
