// The convex hull of a cone's corners on the screen.
#include "SoftwareCone.h"

#include "RenderTest.h"

#include <algorithm>
#include <numbers>

namespace zarvex::testing {

namespace {

/// Positive when `c` is on the left of the way from `a` to `b`, where y is up.
double Turn(QPointF a, QPointF b, QPointF c) {
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

/// Adds the hull of sorted points from the first to the last, without the last.
void AppendHalfHull(std::vector<QPointF>& hull, std::vector<QPointF> const& points) {
    std::size_t const begin = hull.size();
    for (QPointF const& point : points) {
        while (hull.size() >= begin + 2 && Turn(hull[hull.size() - 2], hull.back(), point) <= 0.0)
            hull.pop_back();
        hull.push_back(point);
    }
    hull.pop_back();
}

std::vector<QPointF> ConvexHull(std::vector<QPointF> points) {
    std::sort(points.begin(), points.end(),
              [](QPointF a, QPointF b) { return a.x() != b.x() ? a.x() < b.x() : a.y() < b.y(); });
    std::vector<QPointF> hull;
    AppendHalfHull(hull, points);
    std::reverse(points.begin(), points.end());
    AppendHalfHull(hull, points);
    return hull;
}

} // namespace

zx3DQt::BGFXConeModel ModelOf(SoftwareCone const& cone, QColor const& color) {
    return {ToVec3(cone.direction),          ToVec3(cone.apex), static_cast<float>(cone.height),
            static_cast<float>(cone.radius), cone.segments,     ToColor(color)};
}

ConeOutline::ConeOutline(SoftwareCone const& cone, SoftwareCamera const& camera, QSize targetSize) {
    Vector3 const base = cone.apex - cone.height * cone.direction;
    Vector3 const across = Cross(cone.firstCorner, cone.direction);
    std::vector<QPointF> points{camera.ToPixels(cone.apex, targetSize)};
    for (int i = 0; i < cone.segments; ++i) {
        double const angle = 2.0 * std::numbers::pi * i / cone.segments;
        Vector3 const outwards = std::cos(angle) * cone.firstCorner + std::sin(angle) * across;
        points.push_back(camera.ToPixels(base + cone.radius * outwards, targetSize));
    }
    m_corners = ConvexHull(points);
}

QRect ConeOutline::Area() const {
    QRectF area(m_corners.front(), QSizeF());
    for (QPointF const& corner : m_corners)
        area = area.united(QRectF(corner, QSizeF(1e-3, 1e-3)));
    return area.adjusted(-1.0, -1.0, 1.0, 1.0).toAlignedRect();
}

Coverage ConeOutline::At(QPointF pixelCenter) const {
    double inwards = 1e6;
    for (std::size_t i = 0; i < m_corners.size(); ++i) {
        QPointF const from = m_corners[i];
        QPointF const to = m_corners[(i + 1) % m_corners.size()];
        inwards =
            std::min(inwards, Turn(from, to, pixelCenter) / std::hypot(to.x() - from.x(), to.y() - from.y()));
    }
    return CoverageAtDistance(inwards);
}

} // namespace zarvex::testing
