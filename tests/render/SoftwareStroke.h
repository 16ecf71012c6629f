// Which pixels a polyline of a width covers, computed without a GPU. Coordinates are pixels, y down.
#pragma once

#include <zx3DQt/LineBatch.h>

#include <QPointF>

#include <vector>

namespace zarvex::testing {

/// The union of what each segment, each join and each cap covers, as vector graphics have it.
class SoftwareStroke {
public:
    /// `style` has the join, the miter limit and the cap. Repeated vertices count once.
    SoftwareStroke(std::vector<QPointF> const& vertices, zx3DQt::PolylineEnds ends, double width,
                   zx3DQt::LineStyle const& style);

    /// How far a place is from what is covered, pixels: below 0 inside. Outside of corners it may be less.
    double Outside(QPointF place) const;

private:
    struct Disc {
        QPointF centre;
        double radius;
    };

    void AddSegment(QPointF start, QPointF end, double before, double after);
    void AddJoin(QPointF before, QPointF at, QPointF after, zx3DQt::LineStyle const& style);

    double m_half;
    std::vector<std::vector<QPointF>> m_polygons; ///< convex
    std::vector<Disc> m_discs;
};

} // namespace zarvex::testing
