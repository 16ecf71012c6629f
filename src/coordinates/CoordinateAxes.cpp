// Lines, arrow heads and labels of the three axes.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/Shapes.h>

#include "../frame/ColorConversion.h"
#include "LabelRoom.h"

#include <QRectF>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

// Of an arrow head, world units.
constexpr float kTipDistance = 2.0f;
constexpr float kHeadHeight = 0.3f;
constexpr float kHeadRadius = 0.1f;

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

/// A half axis' letter beyond its head.
struct HeadLetter {
    CoordinateAxisId axis = X;
    QString text;
    QPointF center; ///< of the text, pixels
    QRectF rect;    ///< that it is drawn on
    float depth;    ///< of the head's tip, NDC
};

/// How far points reach in a direction.
template<typename Points>
double ReachOf(Points const& points, QPointF const& direction) {
    double reach = -std::numeric_limits<double>::infinity();
    for (QPointF const& point : points)
        reach = std::max(reach, QPointF::dotProduct(point, direction));
    return reach;
}

/// Tip and base of a half axis' head in the picture; empty when some of it is behind the camera.
std::optional<std::vector<QPointF>> ProjectHead(BGFXViewContext const& view, QVector3D const& along) {
    constexpr int corners = 16;
    constexpr float turn = 6.2831853f / corners;
    QVector3D const across(along.y(), along.z(), along.x()); // the unit vectors in turn
    QVector3D const acrossBoth = QVector3D::crossProduct(along, across);
    QVector3D const base = (kTipDistance - kHeadHeight) * along;
    std::vector<QVector3D> places{kTipDistance * along, base};
    for (int i = 0; i < corners; ++i) {
        float const angle = turn * static_cast<float>(i);
        places.push_back(base + kHeadRadius * (std::cos(angle) * across + std::sin(angle) * acrossBoth));
    }
    std::vector<QPointF> head;
    for (QVector3D const& place : places) {
        std::optional<QPointF> const projected = view.ProjectToViewport(place);
        if (!projected)
            return std::nullopt;
        head.push_back(*projected);
    }
    return head;
}

/// The letter of a half axis; empty when its head is behind the camera.
std::optional<HeadLetter> PlaceBeyondHead(BGFXViewContext const& view, CoordinateAxesLabelStyle const& style,
                                          CoordinateAxisId axis, float sign) {
    constexpr double shortest = 0.5; // pixels, of a head that has a direction in the picture
    constexpr QPointF upAndRight(0.5 * std::numbers::sqrt2, -0.5 * std::numbers::sqrt2);
    QVector3D const along = sign * kUnitVectors[axis];
    std::optional<std::vector<QPointF>> const head = ProjectHead(view, along);
    if (!head)
        return std::nullopt;
    QPointF const tip = (*head)[0];
    QPointF const outwards = tip - (*head)[1];
    double const length = std::hypot(outwards.x(), outwards.y());
    QPointF const direction = length > shortest ? outwards / length : upAndRight;

    QString const letter = CoordinateAxesLabelStyle::defaultLabelTexts[axis];
    QString const text = sign > 0.0f ? letter : "-" + letter;
    QSizeF const size = MeasureText(style.font, text);
    // So far that a line across the direction has the head on one side and the text on the other.
    double const gap = 0.1 * size.height();
    double const halfText =
        0.5 * (std::abs(direction.x()) * size.width() + std::abs(direction.y()) * size.height());
    double const way = ReachOf(*head, direction) - QPointF::dotProduct(tip, direction) + gap + halfText;
    QPointF const center = tip + way * direction;
    QVector4D const clip =
        view.GetProjectionMatrix() * view.GetViewMatrix() * QVector4D(kTipDistance * along, 1.0f);
    float const depth = clip.z() / clip.w();
    if (!std::isfinite(way) || !std::isfinite(depth))
        return std::nullopt;
    QPointF const topLeft = center - 0.5 * QPointF(size.width(), size.height());
    return HeadLetter{axis, text, center, DrawnRect(topLeft, size), depth};
}

/// Letters that do not lie over each other, the nearest first.
void DrawLettersBeyondHeads(BGFXRenderer const& renderer, BGFXViewContext const& view,
                            CoordinateAxesLabelStyle const& style) {
    std::vector<HeadLetter> letters;
    for (CoordinateAxisId const axis : CoordinateAxesStyle::defaultAxisIds) {
        for (float const sign : {-1.0f, 1.0f}) {
            if (std::optional<HeadLetter> letter = PlaceBeyondHead(view, style, axis, sign))
                letters.push_back(*std::move(letter));
        }
    }
    std::ranges::stable_sort(letters, std::ranges::less(), &HeadLetter::depth);
    LabelRoom room(0.0);
    for (HeadLetter const& letter : letters) {
        if (room.Take(letter.rect))
            renderer.RenderText(view, letter.center, letter.text, style.font, style.colors[letter.axis],
                                Qt::AlignHCenter | Qt::AlignVCenter);
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
            cone.apex = ToVec3(kTipDistance * sign * kUnitVectors[axis]);
            cone.height = kHeadHeight;
            cone.radius = kHeadRadius;
            cone.segments = 32;
            cone.color = QColorToColor(style.colors[axis]);
            if (style.light)
                DrawCone(renderer, view, cone, *style.light);
            else
                DrawCone(renderer, view, cone);
        }
    }
}

void DrawCoordinateAxesLabels(BGFXRenderer const& renderer, BGFXViewContext const& view,
                              CoordinateAxesLabelStyle const& style) {
    // Without a font there is nothing to measure, and somebody has to say so.
    bool const hasFont = zx3D::GetFontInfo(style.font).pixelSize > 0;
    if (style.placement == CoordinateAxesLabelStyle::Placement::BeyondHeads && hasFont)
        return DrawLettersBeyondHeads(renderer, view, style);
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
