// Dimension lines.
#pragma once

#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Annotations.h>
#include <zx3D/Color.h>
#include <zx3D/DataSpan.h>
#include <zx3D/TextHandles.h>

#include <QString>

namespace zarvex::zx3DQt {

class BGFXRenderer;
class BGFXViewContext;

/// A length that is shown by a line with arrow heads and a text.
struct Dimension {
    WorldPosition from;   ///< where the length begins, world
    WorldPosition to;     ///< where it ends
    WorldVector offset{}; ///< from the two to the ends of the dimension line; zero: it runs between them
    QString text;         ///< above the line, along it and never upside down, upwards if steep
};

/// How dimensions are drawn. A plain value. Lengths are physical pixels of the target.
struct DimensionStyle {
    zx3D::FontHandle font{};                   ///< of the texts
    zx3D::Color color{1.0f, 1.0f, 1.0f, 1.0f}; ///< of all
    float lineWidth = 1.0f;                    ///< of all lines, at least 1
    float arrowLength = 12.0f;                 ///< of the heads
    float arrowBreadth = 5.0f;                 ///< of the heads at their base
    float extensionGap = 4.0f;                 ///< between a place and the extension line that comes from it
    float extensionOvershoot = 6.0f;           ///< how far extension lines go beyond the dimension line
    float textGap = 2.0f;                      ///< between the line and the text
    zx3D::AnnotationDepth depth = zx3D::AnnotationDepth::Ignored; ///< whether what is in front hides it
    /// How much nearer to the viewer than it is it counts, where depth is tested: so many times what a pixel
    /// there is long.
    float depthOffset = 4.0f;
};

/// Draws dimensions for a few calls of bgfx, over what the view has drawn: between `from` and `to`, moved by
/// the offset, a line with an arrow head at each end, extension lines from the two places, and the text.
/// Where there is no room for two arrow heads they stand outside, and point inwards.
///
/// One of which an end is behind the camera, and one that the camera looks along, is not drawn. One that is
/// not finite is refused with a warning ("dimension.not-finite"). Sizes that are not finite count as 0. The
/// view's origin is subtracted in double precision.
/// @{
ZX3DQT_EXPORT void DrawDimension(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                 Dimension const& dimension, DimensionStyle const& style);
ZX3DQT_EXPORT void DrawDimensions(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                  zx3D::DataSpan<Dimension const> dimensions, DimensionStyle const& style);
/// @}

} // namespace zarvex::zx3DQt
