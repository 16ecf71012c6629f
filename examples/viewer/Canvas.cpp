// Places on the screen, lines in front of the camera, and text with a shadow.
#include "Canvas.h"

#include <cmath>
#include <vector>

namespace viewer {

using namespace zarvex;

namespace {

bx::Vec3 ToVec3(QVector3D const& place) {
    return {place.x(), place.y(), place.z()};
}

/// Cuts off what is nearer to the plane of the camera than `nearest`; empty when nothing is left.
std::optional<zx3D::Line> InFront(zx3D::Line const& line, OrbitCamera const& camera, float nearest) {
    QVector3D const start = ToVector(line.start);
    QVector3D const end = ToVector(line.end);
    auto const depthOf = [eye = ToVector(camera.ComputePosition()), axis = TowardsViewer(camera)](
                             QVector3D const& place) { return QVector3D::dotProduct(eye - place, axis); };
    float const startDepth = depthOf(start);
    float const endDepth = depthOf(end);
    if (std::min(startDepth, endDepth) >= nearest)
        return line;
    if (std::max(startDepth, endDepth) < nearest)
        return std::nullopt;
    QVector3D const cut = start + (nearest - startDepth) / (endDepth - startDepth) * (end - start);
    return startDepth < nearest ? zx3D::Line{ToVec3(cut), line.end, line.color}
                                : zx3D::Line{line.start, ToVec3(cut), line.color};
}

/// The library counts a pattern's bits in physical pixels.
std::optional<zx3D::LineStipplePattern> Scaled(zx3D::LineStipplePattern stipple, float pixelRatio) {
    float const factor = std::round(static_cast<float>(stipple.factor) * pixelRatio);
    stipple.factor = static_cast<std::uint8_t>(std::clamp(factor, 1.0f, 255.0f));
    return stipple;
}

} // namespace

std::optional<QPointF> Canvas::Project(QVector3D const& place) const {
    QVector4D const clip = surfaces.GetProjectionMatrix() * surfaces.GetViewMatrix() * QVector4D(place, 1.0f);
    if (clip.w() <= 0.0f)
        return std::nullopt;
    return QPointF(0.5 * (1.0 + clip.x() / clip.w()) * size.width(),
                   0.5 * (1.0 - clip.y() / clip.w()) * size.height());
}

void Canvas::DrawLines(zx3DQt::BGFXViewContext const& view, std::span<zx3D::Line const> lines, float width,
                       std::optional<zx3D::LineStipplePattern> const& stipple,
                       zx3DQt::BGFXRenderState state) const {
    std::vector<zx3D::Line> inFront;
    inFront.reserve(lines.size());
    bool const isPerspective = camera.GetProjection() == Projection::Perspective;
    float const nearest = 0.01f * static_cast<float>(camera.GetDistance());
    for (zx3D::Line const& line : lines) {
        auto const visible = isPerspective ? InFront(line, camera, nearest) : line;
        if (visible)
            inFront.push_back(*visible);
    }
    float const pixels = std::round(width * pixelRatio);
    // Lines of one pixel are lines to the GPU, too; wider ones are triangles.
    if (pixels < 2.0f)
        state = zx3DQt::BGFXRenderState{state | BGFX_STATE_PT_LINES};
    renderer.DrawLines(view, inFront, pixels, std::nullopt, stipple ? Scaled(*stipple, pixelRatio) : stipple,
                       state);
}

void Canvas::DrawLabel(QPointF place, QString const& text, QColor const& color, float size,
                       Qt::Alignment alignment) const {
    zx3D::FontHandle const font = fonts.Get(size * pixelRatio);
    double const offset = std::max(1.0, std::round(double{pixelRatio}));
    QColor const shadow(8, 10, 14, color.alpha());
    renderer.RenderText(labels, {place + QPointF(offset, offset), 0}, text, font, shadow, alignment);
    renderer.RenderText(labels, {place, 1}, text, font, color, alignment);
}

} // namespace viewer
