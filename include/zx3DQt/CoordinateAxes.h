// The coordinate axes of a scene: lines, arrow heads and labels.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Line.h>
#include <zx3D/TextHandles.h>

#include <QColor>
#include <QString>
#include <QVector2D>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

class QRectF;

namespace zarvex::zx3DQt {

class BGFXRenderer;
class BGFXViewContext;

/// An axis, and its index in arrays of three.
enum CoordinateAxisId { X = 0, Y = 1, Z = 2 };

/// Cones at both ends of every axis, at a distance of 2 from the origin.
struct CoordinateAxesArrowHeadStyle {
    enum ArrowHeadTypeId : std::int32_t { Cone = 1 };

    static constexpr std::array<QColor, 3> defaultColors{QColor(1, 255, 87), QColor(255, 86, 0),
                                                         QColor(0, 175, 255)};
    static constexpr float height = 0.1f; ///< not used: the cones are 0.3 high
    static constexpr ArrowHeadTypeId defaultArrowHead = Cone;

    std::array<QColor, 3> colors = defaultColors; ///< by axis
    ArrowHeadTypeId arrowHead = defaultArrowHead; ///< there is one type
};

/// Letters at both ends of every axis, on the negative side after a minus sign.
struct ZX3DQT_EXPORT CoordinateAxesLabelStyle {
    static constexpr std::array<QColor, 3> defaultColors = CoordinateAxesArrowHeadStyle::defaultColors;
    static constexpr std::array<char const*, 3> defaultLabelTexts{"X", "Y", "Z"};

    CoordinateAxesLabelStyle();

    zx3D::FontHandle font;                        ///< of all labels; without one they are not drawn
    std::array<std::byte, 32> reserved;           ///< neither initialised nor used
    std::array<QColor, 3> colors = defaultColors; ///< by axis
    std::vector<QString> labelTexts;              ///< not used: the letters are `defaultLabelTexts`
};

struct ZX3DQT_EXPORT CoordinateAxesStyle {
    static constexpr zx3D::LineStipplePattern defaultLineStipplePattern{0x0F0F, 1};
    static constexpr std::array<QColor, 3> defaultColors = CoordinateAxesArrowHeadStyle::defaultColors;
    static constexpr std::array<CoordinateAxisId, 3> defaultAxisIds{X, Y, Z};

    /// True when the axis has lines.
    bool isAxisEnabled(CoordinateAxisId axis) { return enabledAxes.contains(axis); }

    QVector2D margins; ///< between the axes' ends and the rectangle's edges, world units
    std::array<QColor, 3> colors = defaultColors;
    std::array<float, 3> lineWidths{1.0f, 1.0f, 1.0f}; ///< pixels
    /// Of the half towards the rectangle's right, bottom, or positive z.
    std::array<zx3D::LineStipplePattern, 3> maxSideLineStipplePatterns{};
    /// Of the half towards its left, top, or negative z.
    std::array<zx3D::LineStipplePattern, 3> minSideLineStipplePatterns{
        defaultLineStipplePattern, defaultLineStipplePattern, defaultLineStipplePattern};
    std::set<CoordinateAxisId> enabledAxes{defaultAxisIds.begin(), defaultAxisIds.end()}; ///< that have lines
    std::optional<CoordinateAxesArrowHeadStyle> arrowHeads;                               ///< empty: none
    std::optional<CoordinateAxesLabelStyle> labels;                                       ///< empty: none
};

/// Draws the enabled axes' lines and, where the style has them, arrow heads into `sceneView`, and labels into
/// `labelView`, which is submitted with the same matrices and is drawn after it.
///
/// `rect`, in world units with y down, bounds the lines in x and y; z reaches as far as half its width.
ZX3DQT_EXPORT void DrawCoordinateAxes(BGFXRenderer const& renderer, BGFXViewContext const& sceneView,
                                      BGFXViewContext const& labelView, QRectF const& rect,
                                      CoordinateAxesStyle const& style);

ZX3DQT_EXPORT void DrawCoordinateAxesLines(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                           QRectF const& rect, CoordinateAxesStyle const& style);

/// Draws the heads of all three axes.
ZX3DQT_EXPORT void DrawCoordinateAxesArrowHeads(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                                CoordinateAxesArrowHeadStyle const& style);

/// Draws the labels of all three axes beside their heads.
ZX3DQT_EXPORT void DrawCoordinateAxesLabels(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                            CoordinateAxesLabelStyle const& style);

} // namespace zarvex::zx3DQt
