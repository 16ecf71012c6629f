// What a triangle should look like, computed without a GPU.
#pragma once

#include "Coverage.h"

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QSize>
#include <QVector4D>

#include <array>

namespace zarvex::testing {

/// A triangle's corner: position in clip space (+y up), colour with channels 0 to 1.
struct ClipVertex {
    QVector4D position;
    QVector4D color;
};

/// A triangle of interpolated colours over a whole target, rasterised by the rule that a pixel is covered
/// when its centre is. It must not reach behind the camera.
class SoftwareTriangle {
public:
    SoftwareTriangle(std::array<ClipVertex, 3> const& vertices, QSize targetSize);

    /// The picture to expect on a target of one colour. Where a pixel's centre lies on an edge, as good as
    /// GPUs place it, both colours are right and the one nearer to `actual` is taken.
    QImage Draw(QColor const& background, QImage const& actual) const;

private:
    Coverage CoverageOf(QPointF pixelCenter) const;
    QColor ColorAt(QPointF pixelCenter) const;
    double SignedArea(int edge, QPointF point) const;

    std::array<ClipVertex, 3> m_vertices;
    std::array<QPointF, 3> m_corners; ///< in pixels, +y down
    double m_area;                    ///< twice the triangle's, its sign the winding
};

} // namespace zarvex::testing
