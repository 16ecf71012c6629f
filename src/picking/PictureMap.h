// Where points, lines and triangles are in a picture, in double precision.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/WorldPosition.h>

#include <bx/math.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QRectF>

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace zarvex::zx3DQt {

/// In clip space.
struct ClipPlace {
    double x, y, z, w;
};

/// What of an element is nearest to a place of the picture.
struct NearPlace {
    double distance; ///< pixels
    ClipPlace clip;
    WorldPosition position;
};

/// From the coordinates that something is drawn with to the picture.
class PictureMap {
public:
    /// Coordinates, transformed, are relative to `origin`. bgfx must run.
    PictureMap(BGFXViewContext const& view, WorldPosition const& origin, QMatrix4x4 const& transform);

    ClipPlace ToClip(bx::Vec3 const& place) const;
    WorldPosition ToWorld(bx::Vec3 const& place) const;
    /// Pixels, of what is in front of the viewer.
    QPointF ToPixel(ClipPlace const& clip) const;
    /// 0 at the near plane to 1 at the far plane.
    double DepthOf(ClipPlace const& clip) const;
    /// Whether it lies from the near plane to the far plane.
    bool IsInDepth(ClipPlace const& clip) const;
    /// How many pixels a length is where clip w has this value.
    double PixelsOf(double worldLength, double w) const { return worldLength * m_pixelsPerUnit / w; }

    /// Of a point, a line or a triangle, as far as it lies from the near plane to the far plane. Empty where
    /// nothing does, what does is farther away than `limit`, pixels, or coordinates are not finite.
    /// @{
    std::optional<NearPlace> FindNear(QPointF const& pixel, double limit, bx::Vec3 const& point) const;
    std::optional<NearPlace> FindNear(QPointF const& pixel, double limit, bx::Vec3 const& start,
                                      bx::Vec3 const& end) const;
    std::optional<NearPlace> FindNear(QPointF const& pixel, double limit,
                                      std::array<bx::Vec3, 3> const& corners) const;
    /// @}

    /// Whether any part of a point, a line or a triangle is in a rectangle that is larger by `margin` pixels.
    /// @{
    bool Touches(QRectF const& rect, bx::Vec3 const& point, double margin) const;
    bool Touches(QRectF const& rect, bx::Vec3 const& start, bx::Vec3 const& end, double margin) const;
    bool Touches(QRectF const& rect, std::array<bx::Vec3, 3> const& corners) const;
    /// @}

private:
    using Row = std::array<double, 4>;

    static double Product(Row const& row, bx::Vec3 const& place) {
        return row[0] * place.x + row[1] * place.y + row[2] * place.z + row[3];
    }

    QRectF m_viewport;
    double m_nearestDepth;
    double m_pixelsPerUnit;
    std::array<Row, 4> m_toClip;
    WorldPosition m_origin;
    std::array<Row, 4> m_transform;
};

} // namespace zarvex::zx3DQt
