// Which pixels lines and points cover, computed without a GPU. Coordinates are target pixels, y down.
#pragma once

#include "Coverage.h"

#include <zx3D/Line.h>

#include <QPointF>
#include <QRect>

namespace zarvex::testing {

/// A line's pattern as its documentation has it, solid unless told otherwise.
class SoftwareStipple {
public:
    explicit SoftwareStipple(zx3D::LineStipplePattern const& pattern = {}) : m_pattern(pattern) {}

    /// Whether the line is drawn at a distance from its start; on an edge when not the same at both.
    Coverage At(double distance, double otherDistance) const;

private:
    bool IsDrawn(double distance) const;

    zx3D::LineStipplePattern m_pattern;
};

/// A line of one pixel, for which GPUs have two rules; where they differ, both are right.
///
/// By diamonds (llvmpipe on OpenGL): it draws the pixels in whose diamond |x| + |y| < 1/2 around the centre
/// it is but does not end, and interpolates to where it passes the centre's column, or row if it is steep. By
/// a rectangle (lavapipe on Vulkan): it draws the pixels whose centres are in a rectangle of width 1, and
/// interpolates to where it is nearest to the centre.
struct SoftwareThinLine {
    QPointF start, end;
    SoftwareStipple stipple;
    QPointF stippleStart; ///< differs from the start of a line that is cut off

    QRect Area() const;
    Coverage At(QPointF pixelCenter) const;

private:
    Coverage ByDiamond(QPointF pixelCenter) const;
    double MajorDistance(QPointF pixelCenter) const;
};

/// A wide line: the pixels whose centres are in the rectangle.
struct SoftwareWideLine {
    QPointF start, end;
    double width;
    SoftwareStipple stipple;
    QPointF stippleStart; ///< likewise

    QRect Area() const;
    Coverage At(QPointF pixelCenter) const;
};

/// A point: the pixels whose centres are in the square.
struct SoftwarePoint {
    QPointF center;
    double size;

    QRect Area() const;
    Coverage At(QPointF pixelCenter) const;
};

} // namespace zarvex::testing
