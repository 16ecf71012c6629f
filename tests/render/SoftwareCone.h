// What a cone covers, computed without a GPU.
#pragma once

#include "SoftwareCamera.h"

#include <zx3DQt/Shapes.h>

#include <QColor>
#include <QRect>

#include <vector>

namespace zarvex::testing {

/// A closed cone whose base is a regular polygon.
struct SoftwareCone {
    Vector3 apex;
    Vector3 direction; ///< from the base to the apex, of length 1
    double height = 0.3;
    double radius = 0.1;
    int segments = 32;
    Vector3 firstCorner; ///< from the base's centre towards a corner, of length 1
};

/// The same cone for the library.
zx3DQt::BGFXConeModel ModelOf(SoftwareCone const& cone, QColor const& color);

/// The outline of a cone as a camera sees it: the convex hull of its corners.
class ConeOutline {
public:
    ConeOutline(SoftwareCone const& cone, SoftwareCamera const& camera, QSize targetSize);

    /// A convex polygon, pixels.
    std::vector<QPointF> const& Corners() const { return m_corners; }

    QRect Area() const;
    Coverage At(QPointF pixelCenter) const;

private:
    std::vector<QPointF> m_corners; ///< pixels, each to the same side of the one before
};

} // namespace zarvex::testing
