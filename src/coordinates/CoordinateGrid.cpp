// Bounds, lines and tick labels of a grid.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/CoordinateGrid.h>

#include <zx3D/Text.h>

#include "../frame/ColorConversion.h"
#include "../render/FadePlace.h"
#include "GridSteps.h"
#include "TickNumbers.h"

#include <QRectF>

#include <cmath>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

/// The rectangle in floats.
struct Edges {
    explicit Edges(QRectF const& rect)
        : left(static_cast<float>(rect.left())),
          top(static_cast<float>(rect.top())),
          right(static_cast<float>(rect.right())),
          bottom(static_cast<float>(rect.bottom())) {}

    float left, top, right, bottom;
};

/// The numbers along the bottom and the left edge, by their positions along it.
class FrameNumbers {
public:
    FrameNumbers(BGFXViewContext const& view, QRectF const& rect, CoordinateGridStyle const& style)
        : m_view(view),
          m_style(style),
          m_labels(*style.frameTickLabels),
          m_edges(rect),
          m_bounds(ComputeCoordinateGridBounds(rect, style)),
          m_textHeight(zx3D::GetFontInfo(m_labels.font).pixelSize) {
        if (style.fade)
            m_fade.emplace(view, *style.fade);
    }

    template<typename Visit>
    void ForEach(CoordinateAxisId axis, Visit visit) const {
        if (axis == X)
            ForEachGridStep(m_bounds.minX, m_style.gridSpacing.x(), m_bounds.maxX, visit);
        else
            ForEachGridStep(m_bounds.minY, m_style.gridSpacing.y(), m_bounds.maxY, visit);
    }

    QString TextAt(CoordinateAxisId axis, float position) const {
        return m_labels.tickLabelFunctions[axis](axis == X ? position : -position);
    }

    /// Of the text's top left, pixels. Empty behind the camera, and where it has faded.
    std::optional<QPointF> PlaceAt(CoordinateAxisId axis, float position) const {
        QVector3D const tick = TickAt(axis, position);
        if (m_fade && !(m_fade->RestAt(tick) > 0.0f))
            return std::nullopt;
        // To the right of the line, towards the viewer, and above the line: clear of it.
        std::optional<QPointF> const place =
            m_view.ProjectToViewport(bx::Vec3(tick.x() + 1.0f, tick.y(), 0.1f));
        return place ? std::optional(QPointF(place->x(), place->y() - m_textHeight)) : std::nullopt;
    }

    QColor ColorAt(CoordinateAxisId axis, float position) const {
        QColor color = m_labels.color;
        if (m_fade)
            color.setAlphaF(color.alphaF() * m_fade->RestAt(TickAt(axis, position)));
        return color;
    }

    /// Those that have room in a picture, pixels.
    std::vector<TickNumber> Choose(QRectF const& picture) const {
        std::vector<TickAxis> axes;
        for (CoordinateAxisId const axis : CoordinateGridFrameTickLabelStyle::defaultAxisIds) {
            if (m_labels.IsAxisEnabled(axis))
                axes.push_back({axis, CountToFirst(axis), TicksOf(axis)});
        }
        return ChooseTickNumbers(
            axes, [this](CoordinateAxisId axis, float position) { return TextAt(axis, position); },
            m_labels.font, *m_labels.minimumGap, picture);
    }

private:
    /// Steps from 0 to the first tick; 0 where they are so many that they cannot be counted.
    std::int64_t CountToFirst(CoordinateAxisId axis) const {
        constexpr double most = 1e15;
        double const first = axis == X ? m_bounds.minX : m_bounds.minY;
        double const count = first / double(m_style.gridSpacing[axis]);
        return std::abs(count) < most ? std::llround(count) : 0;
    }

    std::vector<Tick> TicksOf(CoordinateAxisId axis) const {
        std::vector<Tick> ticks;
        ForEach(axis, [&](float position) { ticks.push_back({position, PlaceAt(axis, position)}); });
        return ticks;
    }

    /// Where a line crosses its edge.
    QVector3D TickAt(CoordinateAxisId axis, float position) const {
        return axis == X ? QVector3D(position, -m_edges.bottom, 0.0f)
                         : QVector3D(m_edges.left, -position, 0.0f);
    }

    BGFXViewContext const& m_view;
    CoordinateGridStyle const& m_style;
    CoordinateGridFrameTickLabelStyle const& m_labels;
    Edges m_edges;
    CoordinateGridBounds m_bounds;
    float m_textHeight;
    std::optional<FadeAtPositions> m_fade;
};

} // namespace

std::function<QString(float)> CoordinateGridFrameTickLabelStyle::PlainTickLabelFunction(float spacing) {
    constexpr int most = 9;
    int decimals = 0;
    for (double scaled = std::abs(double(spacing)); decimals < most; ++decimals, scaled *= 10.0) {
        if (std::abs(scaled - std::round(scaled)) <= 1e-5 * scaled)
            break;
    }
    return [decimals](float value) {
        bool const isZero = std::abs(value) < 0.5 * std::pow(10.0, -decimals);
        return isZero ? QString("0") : QString::number(value, 'f', decimals);
    };
}

CoordinateGridBounds ComputeCoordinateGridBounds(QRectF const& rect, CoordinateGridStyle const& style) {
    Edges const edges(rect);
    QVector2D const& spacing = style.gridSpacing;
    QVector2D const& margins = style.gridMargins;
    return {std::trunc(edges.left / spacing.x()) * spacing.x() - margins.x(),
            std::trunc(edges.top / spacing.y()) * spacing.y() - margins.y(), edges.right + margins.x(),
            edges.bottom + margins.y()};
}

void DrawCoordinateGrid(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                        BGFXViewContext const& labelView, QRectF const& rect,
                        CoordinateGridStyle const& style) {
    DrawCoordinateGridLines(renderer, sceneView, rect, style);
    if (style.frameTickLabels)
        DrawCoordinateGridFrameTickLabels(renderer, sceneView, labelView, rect, style);
}

void DrawCoordinateGridLines(BGFXRenderer const& renderer, BGFXViewContext const& view, QRectF const& rect,
                             CoordinateGridStyle const& style) {
    CoordinateGridBounds const bounds = ComputeCoordinateGridBounds(rect, style);
    Edges const edges(rect);
    zx3D::Color const color = QColorToColor(style.lineColor);
    // Left and top ends reach out by the x margin, right and bottom ends by the y margin.
    float const low = style.gridMargins.x();
    float const high = style.gridMargins.y();
    std::vector<zx3D::Line> lines;
    lines.reserve(EstimateGridSteps(bounds.minX, style.gridSpacing.x(), bounds.maxX) +
                  EstimateGridSteps(bounds.minY, style.gridSpacing.y(), bounds.maxY));
    if (style.IsAxisEnabled(X)) {
        ForEachGridStep(bounds.minX, style.gridSpacing.x(), bounds.maxX, [&](float x) {
            if (x != 0.0f)
                lines.push_back({{x, -(edges.top - low), 0.0f}, {x, -(edges.bottom + high), 0.0f}, color});
        });
    }
    if (style.IsAxisEnabled(Y)) {
        ForEachGridStep(bounds.minY, style.gridSpacing.y(), bounds.maxY, [&](float y) {
            if (y != 0.0f)
                lines.push_back({{edges.left - low, -y, 0.0f}, {edges.right + high, -y, 0.0f}, color});
        });
    }
    if (style.fade)
        renderer.DrawFadingLines(view, lines, *style.fade, style.lineWidth, std::nullopt,
                                 style.lineStipplePattern);
    else
        renderer.DrawLines(view, lines, style.lineWidth, std::nullopt, style.lineStipplePattern,
                           std::nullopt);
}

void DrawCoordinateGridFrameTickLabels(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                                       BGFXViewContext const& labelView, QRectF const& rect,
                                       CoordinateGridStyle const& style) {
    CoordinateGridFrameTickLabelStyle const& labels = style.frameTickLabels.value();
    FrameNumbers const numbers(sceneView, rect, style);
    auto const draw = [&](CoordinateAxisId axis, float position, QPointF const& place, QString const& text) {
        renderer.RenderText(labelView, place, text, labels.font, numbers.ColorAt(axis, position),
                            Qt::AlignLeft | Qt::AlignTop);
    };
    // Without a font there is nothing to measure, and somebody has to say so.
    if (labels.minimumGap && zx3D::GetFontInfo(labels.font).pixelSize > 0) {
        QRectF const picture(sceneView.GetViewport().united(labelView.GetViewport()));
        for (TickNumber const& number : numbers.Choose(picture))
            draw(number.axis, number.position, number.place, number.text);
        return;
    }
    for (CoordinateAxisId const axis : CoordinateGridFrameTickLabelStyle::defaultAxisIds) {
        if (labels.IsAxisEnabled(axis))
            numbers.ForEach(axis, [&](float position) {
                QString const text = numbers.TextAt(axis, position);
                if (std::optional<QPointF> const place = numbers.PlaceAt(axis, position))
                    draw(axis, position, *place, text);
            });
    }
}

} // namespace zarvex::zx3DQt
