// A grid in the plane z = 0 with tick labels along its frame.
#pragma once

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/DistanceFade.h>
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
    float minX = 0.0f; ///< left
    float minY = 0.0f; ///< top
    float maxX = 0.0f; ///< right
    float maxY = 0.0f; ///< bottom
};

/// Numbers along the rectangle's bottom edge (x) and left edge (y).
struct CoordinateGridFrameTickLabelStyle {
    static constexpr std::array<CoordinateAxisId, 2> defaultAxisIds{X, Y}; ///< both

    /// Two significant digits: "50", "1e+02", "0.25".
    static QString DefaultTickLabelFunction(float value) { return QString::number(value, 'g', 2); }

    /// A function for `tickLabelFunctions`: plain decimals, as many as tell multiples of the spacing apart:
    /// "-1200", "0", "0.25". What is no multiple is rounded.
    ZX3DQT_EXPORT static std::function<QString(float)> PlainTickLabelFunction(float spacing);

    /// True when the axis has labels.
    bool IsAxisEnabled(CoordinateAxisId axis) const { return enabledAxes.contains(axis); }

    zx3D::FontHandle font; ///< without one the labels are not drawn
    QColor color;          ///< of all labels; black by default
    /// Which edges have numbers.
    std::set<CoordinateAxisId> enabledAxes{defaultAxisIds.begin(), defaultAxisIds.end()};
    /// The text for a scene coordinate, by axis. An empty function of an enabled axis throws
    /// `std::bad_function_call` when it is drawn.
    std::array<std::function<QString(float)>, 2> tickLabelFunctions{DefaultTickLabelFunction,
                                                                    DefaultTickLabelFunction};
    /// Empty: all labels are drawn, over each other where there is not room for them. Otherwise as many as
    /// fit with so many pixels between them, to the side or up and down: those of every line, or of every
    /// second, fifth, tenth, twentieth and so on, counted from 0, as lines are apart there in the picture;
    /// where labels of both edges meet, the one of the larger step. Labels without a text, or outside both
    /// views' viewports, are left out.
    std::optional<float> minimumGap;
};

/// What a grid looks like. A spacing must be given; by default it has dashed black lines and no numbers.
struct CoordinateGridStyle {
    static constexpr std::array<CoordinateAxisId, 2> defaultAxisIds{X, Y}; ///< both
    /// Gaps and dashes of four pixels.
    static constexpr zx3D::LineStipplePattern defaultLineStipplePattern{0xF0F0, 1};
    static constexpr QVector2D defaultGridMargins{100.0f, 100.0f}; ///< world units

    /// True when lines of constant `axis` are drawn.
    bool IsAxisEnabled(CoordinateAxisId axis) const { return enabledAxes.contains(axis); }

    QVector2D gridSpacing; ///< between neighbouring lines, world units; 0 draws none
    /// How far the grid reaches beyond the rectangle, world units: lines stand as far out as x to the sides
    /// and y above and below; their ends reach out by x at the left and the top, by y at the right and the
    /// bottom.
    QVector2D gridMargins = defaultGridMargins;
    zx3D::LineStipplePattern lineStipplePattern = defaultLineStipplePattern; ///< of all lines
    QColor lineColor;                                                        ///< of all lines
    float lineWidth = 1.0f;                                                  ///< pixels
    /// `X`: the lines of constant x; `Y`: those of constant y.
    std::set<CoordinateAxisId> enabledAxes{defaultAxisIds.begin(), defaultAxisIds.end()};
    std::optional<CoordinateGridFrameTickLabelStyle> frameTickLabels; ///< empty: none
    /// Empty: lines and labels look the same at every distance. Otherwise they disappear with it, as
    /// `BGFXRenderer::DrawFadingLines` draws lines: blended, without depth of their own.
    std::optional<DistanceFade> fade;
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

/// Draws the labels of all lines, those at 0 included, into `labelView`. `style` must have `frameTickLabels`;
/// without them it throws `std::bad_optional_access`. `sceneView` places them: one world unit to the right of
/// where the line crosses the edge, 0.1 units towards positive z, and there one font size upwards. With a
/// minimum gap, functions are asked for the labels that may have room only.
ZX3DQT_EXPORT void DrawCoordinateGridFrameTickLabels(BGFXRenderer const& renderer,
                                                     BGFXViewContext const& sceneView,
                                                     BGFXViewContext const& labelView, QRectF const& rect,
                                                     CoordinateGridStyle const& style);

} // namespace zarvex::zx3DQt
