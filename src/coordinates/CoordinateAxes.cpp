// Lines, arrow heads and labels of the three axes.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/Shapes.h>

#include "../frame/ColorConversion.h"

#include <QRectF>

namespace zarvex::zx3DQt {

namespace {

constexpr std::array kUnitVectors{QVector3D(1.0f, 0.0f, 0.0f), QVector3D(0.0f, 1.0f, 0.0f),
                                  QVector3D(0.0f, 0.0f, 1.0f)};

bx::Vec3 ToVec3(QVector3D const& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

/// One half of every enabled axis: from the origin to a signed length along it.
void DrawHalfAxes(BGFXRenderer const& renderer, BGFXViewContext const& view, CoordinateAxesStyle const& style,
                  std::array<float, 3> const& lengths,
                  std::array<zx3D::LineStipplePattern, 3> const& stipples) {
    for (CoordinateAxisId const axis : style.enabledAxes) {
        zx3D::Line const line{ToVec3(lengths[axis] * kUnitVectors[axis]), bx::Vec3(0.0f, 0.0f, 0.0f),
                              QColorToColor(style.colors[axis])};
        renderer.DrawLines(view, zx3D::DataSpan<zx3D::Line const>(&line, 1), style.lineWidths[axis],
                           std::nullopt, stipples[axis], std::nullopt);
    }
}

} // namespace

CoordinateAxesLabelStyle::CoordinateAxesLabelStyle()
    : labelTexts(defaultLabelTexts.begin(), defaultLabelTexts.end()) {}

void DrawCoordinateAxes(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                        BGFXViewContext const& labelView, QRectF const& rect,
                        CoordinateAxesStyle const& style) {
    DrawCoordinateAxesLines(renderer, sceneView, rect, style);
    if (style.arrowHeads)
        DrawCoordinateAxesArrowHeads(renderer, sceneView, *style.arrowHeads);
    if (style.labels)
        DrawCoordinateAxesLabels(renderer, labelView, *style.labels);
}

void DrawCoordinateAxesLines(BGFXRenderer const& renderer, BGFXViewContext const& view, QRectF const& rect,
                             CoordinateAxesStyle const& style) {
    auto const left = static_cast<float>(rect.left());
    auto const top = static_cast<float>(rect.top());
    auto const right = static_cast<float>(rect.right());
    auto const bottom = static_cast<float>(rect.bottom());
    float const halfWidth = static_cast<float>(rect.width()) * 0.5f;
    float const marginX = style.margins.x();
    float const marginY = style.margins.y();
    DrawHalfAxes(renderer, view, style, {left + marginX, -(top + marginY), marginX - halfWidth},
                 style.minSideLineStipplePatterns);
    DrawHalfAxes(renderer, view, style, {right - marginX, -(bottom - marginY), halfWidth - marginX},
                 style.maxSideLineStipplePatterns);
}

void DrawCoordinateAxesArrowHeads(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                  CoordinateAxesArrowHeadStyle const& style) {
    for (CoordinateAxisId const axis : CoordinateAxesStyle::defaultAxisIds) {
        for (float const sign : {1.0f, -1.0f}) {
            BGFXConeModel cone;
            cone.direction = ToVec3(sign * kUnitVectors[axis]);
            cone.apex = ToVec3(2.0f * sign * kUnitVectors[axis]);
            cone.height = 0.3f;
            cone.radius = 0.1f;
            cone.segments = 32;
            cone.color = QColorToColor(style.colors[axis]);
            DrawCone(renderer, view, cone);
        }
    }
}

void DrawCoordinateAxesLabels(BGFXRenderer const& renderer, BGFXViewContext const& view,
                              CoordinateAxesLabelStyle const& style) {
    // Off the axes' lines.
    constexpr std::array offsets{QVector3D(0.0f, 0.3f, 0.3f), QVector3D(0.3f, 0.0f, 0.3f),
                                 QVector3D(0.3f, 0.3f, 0.0f)};
    constexpr float distance = 1.25f;
    constexpr auto centered = Qt::AlignHCenter | Qt::AlignVCenter;
    for (CoordinateAxisId const axis : CoordinateAxesStyle::defaultAxisIds) {
        QString const text = CoordinateAxesLabelStyle::defaultLabelTexts[axis];
        QVector3D const along = distance * kUnitVectors[axis];
        renderer.RenderText(view, ToVec3(offsets[axis] - along), "-" + text, style.font, style.colors[axis],
                            centered);
        renderer.RenderText(view, ToVec3(offsets[axis] + along), text, style.font, style.colors[axis],
                            centered);
    }
}

} // namespace zarvex::zx3DQt
