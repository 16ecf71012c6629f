// A grid in the plane z = 0 with tick labels along its frame.
#pragma once

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Line.h>
#include <zx3D/TextHandles.h>

#include <QColor>
#include <QString>
#include <QVector2D>

#include <array>
#include <functional>
#include <optional>
#include <set>

class QRectF;

namespace zarvex::zx3DQt {

class BGFXRenderer;
class BGFXViewContext;

// Rectangles have y down, as Qt's, and the scene has y up: what lies at y in the rectangle lies at -y in the
// scene.

/// Where grid lines begin and end, world units with y down.
struct CoordinateGridBounds {
    float minX = 0.0f;
    float minY = 0.0f;
    float maxX = 0.0f;
    float maxY = 0.0f;
};

/// Numbers along the rectangle's bottom edge (x) and left edge (y).
struct CoordinateGridFrameTickLabelStyle {
    static constexpr std::array<CoordinateAxisId, 2> defaultAxisIds{X, Y};

    /// Two significant digits: "50", "1e+02", "0.25".
    static QString DefaultTickLabelFunction(float value) { return QString::number(value, 'g', 2); }

    bool IsAxisEnabled(CoordinateAxisId axis) const { return enabledAxes.contains(axis); }

    zx3D::FontHandle font; ///< without one the labels are not drawn
    QColor color;
    std::set<CoordinateAxisId> enabledAxes{defaultAxisIds.begin(), defaultAxisIds.end()};
    /// The text for a scene coordinate, by axis. An empty function of an enabled axis throws
    /// `std::bad_function_call` when it is drawn.
    std::array<std::function<QString(float)>, 2> tickLabelFunctions{DefaultTickLabelFunction,
                                                                    DefaultTickLabelFunction};
};

struct CoordinateGridStyle {
    static constexpr std::array<CoordinateAxisId, 2> defaultAxisIds{X, Y};
    static constexpr zx3D::LineStipplePattern defaultLineStipplePattern{0xF0F0, 1};
    static constexpr QVector2D defaultGridMargins{100.0f, 100.0f};

    bool IsAxisEnabled(CoordinateAxisId axis) const { return enabledAxes.contains(axis); }

    QVector2D gridSpacing;                      ///< between neighbouring lines, world units; 0 draws none
    QVector2D gridMargins = defaultGridMargins; ///< how far the grid reaches beyond the rectangle
    zx3D::LineStipplePattern lineStipplePattern = defaultLineStipplePattern;
    QColor lineColor;
    float lineWidth = 1.0f; ///< pixels
    /// `X`: the lines of constant x; `Y`: those of constant y.
    std::set<CoordinateAxisId> enabledAxes{defaultAxisIds.begin(), defaultAxisIds.end()};
    std::optional<CoordinateGridFrameTickLabelStyle> frameTickLabels; ///< empty: none
};

/// The rectangle and the margins around it, the lower sides moved to a multiple of the spacing first (rounded
/// towards zero).
ZX3DQT_EXPORT CoordinateGridBounds ComputeCoordinateGridBounds(QRectF const& rect,
                                                               CoordinateGridStyle const& style);

/// Draws the lines into `sceneView` and, where the style has them, tick labels into `labelView`, which is
/// drawn after it over the same viewport.
ZX3DQT_EXPORT void DrawCoordinateGrid(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                                      BGFXViewContext const& labelView, QRectF const& rect,
                                      CoordinateGridStyle const& style);

/// Draws the lines, in one call. Lines at 0 are left to the axes. Lines that would never reach the other
/// side, because the spacing is negative or lost in a float's precision, end at once, and no axis gets more
/// than a million; either is warned of, once.
ZX3DQT_EXPORT void DrawCoordinateGridLines(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                           QRectF const& rect, CoordinateGridStyle const& style);

/// Draws the labels of all lines, those at 0 included. `style` must have `frameTickLabels`. They are placed
/// by `sceneView`, beside their lines, and drawn into `labelView`.
ZX3DQT_EXPORT void DrawCoordinateGridFrameTickLabels(BGFXRenderer const& renderer,
                                                     BGFXViewContext const& sceneView,
                                                     BGFXViewContext const& labelView, QRectF const& rect,
                                                     CoordinateGridStyle const& style);

} // namespace zarvex::zx3DQt
