// A camera, as a view of the library and as the rays that it stands for.
#pragma once

#include "Coverage.h"
#include "Vector3.h"

#include <zx3DQt/BGFXViewContext.h>

#include <QPointF>
#include <QSize>

#include <functional>

namespace zarvex::testing {

struct Ray {
    Vector3 origin;
    Vector3 direction; ///< of any length
};

/// Looks from a place at another one over a whole target, in perspective or, without an angle, in parallel.
/// What it sees lies between the depths 0.1 and 100.
struct SoftwareCamera {
    Vector3 place;
    Vector3 target;
    double angle = 0.0;      ///< from the picture's bottom to its top, degrees
    double halfHeight = 1.0; ///< of the picture, world units, where there is no angle
    Vector3 up{0.0, 1.0, 0.0};

    bool IsParallel() const { return angle == 0.0; }

    /// The same camera for bgfx, which must run: projections depend on its range of depths.
    void SetUp(zx3DQt::BGFXViewContext& view) const;

    /// Everything that appears at a place on the target, pixels, y down.
    Ray RayThrough(QPointF pixel, QSize size) const;

    QPointF ToPixels(Vector3 const& position, QSize size) const;

private:
    struct Axes {
        Vector3 right, up, forward;
    };

    Axes ViewAxes() const;
    double HalfHeightAtDistance(double distance) const;
};

/// Whether a pixel is covered by a shape that tells of each place, in pixels, whether it is in the shape.
Coverage SampledCoverage(QPointF pixelCenter, std::function<bool(QPointF)> const& isCovered);

} // namespace zarvex::testing
