// Polygons that are cut along the borders of pixels.
#include "ExactCoverage.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace zarvex::testing {

namespace {

/// What is left of a polygon where `inwards` is positive, which is linear.
ConvexPolygon Cut(ConvexPolygon const& polygon, std::function<double(QPointF)> const& inwards) {
    ConvexPolygon rest;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        QPointF const from = polygon[i];
        QPointF const to = polygon[(i + 1) % polygon.size()];
        double const a = inwards(from);
        double const b = inwards(to);
        if (a >= 0.0)
            rest.push_back(from);
        if ((a >= 0.0) != (b >= 0.0))
            rest.push_back(from + (to - from) * (a / (a - b)));
    }
    return rest;
}

/// What two polygons have in common.
ConvexPolygon Intersection(ConvexPolygon const& a, ConvexPolygon const& b) {
    ConvexPolygon common = a;
    for (std::size_t i = 0; i < b.size(); ++i) {
        QPointF const from = b[i];
        QPointF const along = b[(i + 1) % b.size()] - from;
        QPointF const inside = b[(i + 2) % b.size()] - from;
        double const side = along.x() * inside.y() - along.y() * inside.x() > 0.0 ? 1.0 : -1.0;
        common = Cut(common, [=](QPointF point) {
            QPointF const place = point - from;
            return side * (along.x() * place.y() - along.y() * place.x());
        });
    }
    return common;
}

std::vector<ConvexPolygon> Overlaps(std::vector<ConvexPolygon> const& shapes) {
    std::vector<ConvexPolygon> overlaps;
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (ConvexPolygon common = Intersection(shapes[i], shapes[j]); !common.empty())
                overlaps.push_back(std::move(common));
        }
    }
    return overlaps;
}

double Area(ConvexPolygon const& polygon) {
    double twice = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        QPointF const a = polygon[i];
        QPointF const b = polygon[(i + 1) % polygon.size()];
        twice += a.x() * b.y() - b.x() * a.y();
    }
    return std::abs(twice) / 2.0;
}

/// The part of a pixel that a polygon covers, 0 to 1.
double CoveredPart(ConvexPolygon const& polygon, int x, int y) {
    ConvexPolygon rest = polygon;
    rest = Cut(rest, [x](QPointF point) { return point.x() - x; });
    rest = Cut(rest, [x](QPointF point) { return x + 1 - point.x(); });
    rest = Cut(rest, [y](QPointF point) { return point.y() - y; });
    rest = Cut(rest, [y](QPointF point) { return y + 1 - point.y(); });
    return Area(rest);
}

/// The part of a pixel that polygons cover, what they share counted for each.
double SumOfCoverages(std::vector<ConvexPolygon> const& polygons, int x, int y) {
    double sum = 0.0;
    for (ConvexPolygon const& polygon : polygons)
        sum += CoveredPart(polygon, x, y);
    return sum;
}

} // namespace

ConvexPolygon AroundLine(QPointF start, QPointF end, double width) {
    QPointF const along = end - start;
    QPointF const across = QPointF(-along.y(), along.x()) * (width / 2.0 / std::hypot(along.x(), along.y()));
    return {start - across, end - across, end + across, start + across};
}

ConvexPolygon AroundPoint(QPointF center, double side) {
    QPointF const half(side / 2.0, 0.0);
    return AroundLine(center - half, center + half, side);
}

CoverageError CompareCoverage(QImage const& image, std::vector<ConvexPolygon> const& shapes) {
    constexpr double tiny = 1.0 / 512.0; // GPUs place corners on a grid
    std::vector<ConvexPolygon> const overlaps = Overlaps(shapes);
    CoverageError error;
    double sum = 0.0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            double const expected = SumOfCoverages(shapes, x, y) - SumOfCoverages(overlaps, x, y);
            double const actual = qRed(image.pixel(x, y)) / 255.0;
            if (expected > tiny && expected < 1.0 - tiny) {
                ++error.edges;
                sum += std::abs(actual - expected);
            } else if (std::abs(actual - expected) > 2.0 * tiny) {
                ++error.wrongElsewhere;
            }
        }
    }
    error.meanOnEdges = sum / std::max(error.edges, 1);
    return error;
}

} // namespace zarvex::testing
