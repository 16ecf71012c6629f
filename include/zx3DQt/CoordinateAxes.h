// The coordinate axes of a scene: lines, arrow heads and labels.
#pragma once

#include <zx3DQt/Shapes.h>
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

/// Cones on both halves of every axis: the tips at a distance of 2 from the origin, 0.3 high, with a radius
/// of 0.1, all in world units whatever the axes' length.
struct CoordinateAxesArrowHeadStyle {
    /// The shapes of heads.
    enum ArrowHeadTypeId : std::int32_t {
        Cone = 1 ///< a closed cone
    };

    /// Green, orange and blue.
    static constexpr std::array<QColor, 3> defaultColors{QColor(1, 255, 87), QColor(255, 86, 0),
                                                         QColor(0, 175, 255)};
    static constexpr float height = 0.1f;                     ///< not used: the cones are 0.3 high
    static constexpr ArrowHeadTypeId defaultArrowHead = Cone; ///< the one type

    std::array<QColor, 3> colors = defaultColors; ///< by axis
    ArrowHeadTypeId arrowHead = defaultArrowHead; ///< there is one type
    std::optional<CameraLight> light;             ///< empty: the heads are flat, in one colour each
};

/// Letters at both halves of every axis, on the negative side after a minus sign.
struct ZX3DQT_EXPORT CoordinateAxesLabelStyle {
    /// Those of the arrow heads.
    static constexpr std::array<QColor, 3> defaultColors = CoordinateAxesArrowHeadStyle::defaultColors;
    static constexpr std::array<char const*, 3> defaultLabelTexts{"X", "Y", "Z"}; ///< by axis

    /// Where letters stand, whatever the axes' length.
    enum class Placement : std::uint8_t {
        /// In the world: centred on places 1.25 units along the axis and 0.3 beside it in each of the other
        /// two directions. From some directions that is on an axis: in the isometric view on their own.
        BesideLines,
        /// In the picture: beyond the places of the arrow heads, so that no letter lies on its head from any
        /// direction; of an axis that points straight at the viewer, above to the right. Of letters that
        /// would lie over each other, the one nearest to the viewer (of the least depth) is drawn.
        BeyondHeads
    };

    /// Default colours, and no font yet.
    CoordinateAxesLabelStyle();

    zx3D::FontHandle font;                        ///< of all labels; without one they are not drawn
    std::array<std::byte, 32> reserved;           ///< neither initialised nor used
    std::array<QColor, 3> colors = defaultColors; ///< by axis
    std::vector<QString> labelTexts;              ///< not used: the letters are `defaultLabelTexts`
    Placement placement = Placement::BesideLines; ///< of all labels
};

/// What axes look like. By default: all three, thin, one half solid and one dashed, without heads and
/// letters.
struct ZX3DQT_EXPORT CoordinateAxesStyle {
    /// Dashes and gaps of four pixels.
    static constexpr zx3D::LineStipplePattern defaultLineStipplePattern{0x0F0F, 1};
    /// Those of the arrow heads.
    static constexpr std::array<QColor, 3> defaultColors = CoordinateAxesArrowHeadStyle::defaultColors;
    static constexpr std::array<CoordinateAxisId, 3> defaultAxisIds{X, Y, Z}; ///< all

    /// True when the axis has lines.
    bool isAxisEnabled(CoordinateAxisId axis) { return enabledAxes.contains(axis); }

    QVector2D margins; ///< between the axes' ends and the rectangle's edges, world units
    std::array<QColor, 3> colors = defaultColors;      ///< of the lines, by axis
    std::array<float, 3> lineWidths{1.0f, 1.0f, 1.0f}; ///< pixels
    /// Of the half towards the rectangle's right, bottom (negative y), or positive z.
    std::array<zx3D::LineStipplePattern, 3> maxSideLineStipplePatterns{};
    /// Of the half towards its left, top (positive y), or negative z.
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

/// Draws the enabled axes' lines. Each half is a line of its own, from its end to the origin, where its
/// stipple ends.
ZX3DQT_EXPORT void DrawCoordinateAxesLines(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                           QRectF const& rect, CoordinateAxesStyle const& style);

/// Draws the heads of all three axes, the enabled and the others. Their light, if they have any, is that of
/// `view`.
ZX3DQT_EXPORT void DrawCoordinateAxesArrowHeads(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                                CoordinateAxesArrowHeadStyle const& style);

/// Draws the letters of all three axes, the enabled and the others, in the view's own matrices.
ZX3DQT_EXPORT void DrawCoordinateAxesLabels(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                            CoordinateAxesLabelStyle const& style);

} // namespace zarvex::zx3DQt
