// Bounds, lines and tick labels of a grid.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/CoordinateGrid.h>

#include <zx3D/Text.h>

#include "../frame/ColorConversion.h"
#include "GridSteps.h"

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

} // namespace

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
    renderer.DrawLines(view, lines, style.lineWidth, std::nullopt, style.lineStipplePattern, std::nullopt);
}

void DrawCoordinateGridFrameTickLabels(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                                       BGFXViewContext const& labelView, QRectF const& rect,
                                       CoordinateGridStyle const& style) {
    CoordinateGridFrameTickLabelStyle const& labels = style.frameTickLabels.value();
    CoordinateGridBounds const bounds = ComputeCoordinateGridBounds(rect, style);
    Edges const edges(rect);
    float const textHeight = zx3D::GetFontInfo(labels.font).pixelSize;
    // To the right of the line, towards the viewer, and above the line: clear of it.
    auto const draw = [&](float x, float y, QString const& text) {
        std::optional<QPointF> const place = sceneView.ProjectToViewport(bx::Vec3(x + 1.0f, y, 0.1f));
        if (place)
            renderer.RenderText(labelView, QPointF(place->x(), place->y() - textHeight), text, labels.font,
                                labels.color, Qt::AlignLeft | Qt::AlignTop);
    };
    if (labels.IsAxisEnabled(X)) {
        ForEachGridStep(bounds.minX, style.gridSpacing.x(), bounds.maxX,
                        [&](float x) { draw(x, -edges.bottom, labels.tickLabelFunctions[X](x)); });
    }
    if (labels.IsAxisEnabled(Y)) {
        ForEachGridStep(bounds.minY, style.gridSpacing.y(), bounds.maxY,
                        [&](float y) { draw(edges.left, -y, labels.tickLabelFunctions[Y](-y)); });
    }
}

} // namespace zarvex::zx3DQt
