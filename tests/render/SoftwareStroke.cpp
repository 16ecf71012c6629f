// Outlines of polylines as convex polygons and discs.
#include "SoftwareStroke.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zarvex::testing {

namespace {

double Cross(QPointF a, QPointF b) {
    return a.x() * b.y() - a.y() * b.x();
}

double Length(QPointF a) {
    return std::hypot(a.x(), a.y());
}

QPointF Direction(QPointF from, QPointF to) {
    return (to - from) / Length(to - from);
}

QPointF Normal(QPointF direction) {
    return {-direction.y(), direction.x()};
}

double OutsidePolygon(std::vector<QPointF> const& polygon, QPointF place) {
    double area = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i)
        area += Cross(polygon[i], polygon[(i + 1) % polygon.size()]);
    double outside = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        QPointF const from = polygon[i];
        QPointF const to = polygon[(i + 1) % polygon.size()];
        if (from != to)
            outside = std::max(outside, std::copysign(1.0, -area) * Cross(Direction(from, to), place - from));
    }
    return outside;
}

} // namespace

SoftwareStroke::SoftwareStroke(std::vector<QPointF> const& vertices, zx3DQt::PolylineEnds ends, double width,
                               zx3DQt::LineStyle const& style)
    : m_half(width / 2.0) {
    std::vector<QPointF> line;
    for (QPointF const vertex : vertices) {
        if (line.empty() || line.back() != vertex)
            line.push_back(vertex);
    }
    bool const isClosed = ends == zx3DQt::PolylineEnds::Closed;
    std::size_t const count = line.size();
    bool const hasRoundCaps = style.cap == zx3DQt::LineCap::Round && !isClosed;
    if (hasRoundCaps) {
        for (QPointF const end : {line.front(), line.back()})
            m_discs.push_back({end, m_half});
    }
    double const cap = style.cap == zx3DQt::LineCap::Square && !isClosed ? m_half : 0.0;
    if (count == 1) {
        if (cap > 0.0)
            AddSegment(line[0], line[0] + QPointF(1e-9, 0.0), cap, cap);
        return;
    }
    std::size_t const segments = isClosed ? count : count - 1;
    for (std::size_t i = 0; i < segments; ++i)
        AddSegment(line[i], line[(i + 1) % count], i == 0 ? cap : 0.0, i + 1 == segments ? cap : 0.0);
    for (std::size_t i = isClosed ? 0 : 1; i < (isClosed ? count : count - 1); ++i)
        AddJoin(line[(i + count - 1) % count], line[i], line[(i + 1) % count], style);
}

void SoftwareStroke::AddSegment(QPointF start, QPointF end, double before, double after) {
    QPointF const direction = Direction(start, end);
    QPointF const across = m_half * Normal(direction);
    QPointF const from = start - before * direction;
    QPointF const to = end + after * direction;
    m_polygons.push_back({from - across, to - across, to + across, from + across});
}

void SoftwareStroke::AddJoin(QPointF before, QPointF at, QPointF after, zx3DQt::LineStyle const& style) {
    if (style.join == zx3DQt::LineJoin::Round) {
        m_discs.push_back({at, m_half});
        return;
    }
    QPointF const in = Direction(before, at);
    QPointF const out = Direction(at, after);
    double const side = Cross(in, out) > 0.0 ? -1.0 : 1.0; // the outer one
    QPointF const corner = at + side * m_half * Normal(in);
    QPointF const otherCorner = at + side * m_half * Normal(out);
    // The angle between the two segments, halved.
    double const sine = std::sqrt(std::max(0.5 * (1.0 + QPointF::dotProduct(in, out)), 0.0));
    if (std::abs(Cross(in, out)) < 1e-9)
        return; // straight on, or back
    if (style.join == zx3DQt::LineJoin::Miter && sine * style.miterLimit >= 1.0) {
        QPointF const tip = at + m_half / sine * Direction({0.0, 0.0}, side * (Normal(in) + Normal(out)));
        m_polygons.push_back({at, corner, tip, otherCorner});
    } else {
        m_polygons.push_back({at, corner, otherCorner});
    }
}

double SoftwareStroke::Outside(QPointF place) const {
    double outside = std::numeric_limits<double>::infinity();
    for (std::vector<QPointF> const& polygon : m_polygons)
        outside = std::min(outside, OutsidePolygon(polygon, place));
    for (Disc const& disc : m_discs)
        outside = std::min(outside, Length(place - disc.centre) - disc.radius);
    return outside;
}

} // namespace zarvex::testing
