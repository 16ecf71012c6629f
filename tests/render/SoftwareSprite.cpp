// Distances from the edges of lines, points and patterns, in double precision.
#include "SoftwareSprite.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zarvex::testing {

namespace {

/// Snapping the corners moves the distance along a line by less than this.
constexpr double kPatternEdgeWidth = 1.0 / 200.0;

/// And rounding it to a float, a few times, by less than this part of it.
constexpr double kDistanceRounding = 0x1p-21;

/// The shift that decides where a pattern begins, see zx3D/shaders/line_pattern.glsl.
constexpr double kBoundaryShift = 1.0 / 128.0;

double Length(QPointF vector) {
    return std::hypot(vector.x(), vector.y());
}

double ManhattanLength(QPointF vector) {
    return std::abs(vector.x()) + std::abs(vector.y());
}

/// The place of a point in the coordinates of a line: x along it from its start, y across.
QPointF InLineCoordinates(QPointF start, QPointF end, QPointF point) {
    QPointF const along = (end - start) / Length(end - start);
    QPointF const from = point - start;
    return {QPointF::dotProduct(from, along), from.y() * along.x() - from.x() * along.y()};
}

/// How near the line comes to a point.
double ManhattanDistance(QPointF start, QPointF end, QPointF point) {
    QPointF const along = end - start;
    QPointF const toPoint = point - start;
    // Along the line the distance is convex, with kinks where it passes the point in x and in y.
    double nearest = std::min(ManhattanLength(point - start), ManhattanLength(point - end));
    for (double const fraction : {toPoint.x() / along.x(), toPoint.y() / along.y()}) {
        if (fraction > 0.0 && fraction < 1.0)
            nearest = std::min(nearest, ManhattanLength(start + fraction * along - point));
    }
    return nearest;
}

/// Whether a point is in the rectangle of a width around a line.
Coverage InRectangle(QPointF start, QPointF end, double width, QPointF point) {
    QPointF const place = InLineCoordinates(start, end, point);
    double const inwards =
        std::min({place.x(), Length(end - start) - place.x(), width * 0.5 - std::abs(place.y())});
    return CoverageAtDistance(inwards);
}

QRect PixelsAround(QPointF a, QPointF b, double margin) {
    // Clamped: a line may end far outside of the picture.
    auto const pixel = [](double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); };
    QPoint const topLeft(pixel(std::floor(std::min(a.x(), b.x()) - margin)),
                         pixel(std::floor(std::min(a.y(), b.y()) - margin)));
    QPoint const bottomRight(pixel(std::ceil(std::max(a.x(), b.x()) + margin)),
                             pixel(std::ceil(std::max(a.y(), b.y()) + margin)));
    return QRect(topLeft, bottomRight);
}

} // namespace

Coverage SoftwareStipple::At(double distance, double otherDistance) const {
    auto const [nearest, farthest] = std::minmax(distance, otherDistance);
    double const edge = kPatternEdgeWidth + kDistanceRounding * farthest;
    bool const before = IsDrawn(nearest - edge);
    bool const after = IsDrawn(farthest + edge);
    return before != after ? Coverage::Edge : before ? Coverage::Inside : Coverage::Outside;
}

bool SoftwareStipple::IsDrawn(double distance) const {
    auto const pixel = static_cast<int>(std::floor(std::max(distance, 0.0) + kBoundaryShift));
    int const bit = pixel / std::max<int>(m_pattern.factor, 1) % 16;
    return ((m_pattern.pattern >> bit) & 1) != 0;
}

QRect SoftwareThinLine::Area() const {
    return PixelsAround(start, end, 1.0);
}

Coverage SoftwareThinLine::At(QPointF pixelCenter) const {
    Coverage const byDiamond = ByDiamond(pixelCenter);
    Coverage const byRectangle = InRectangle(start, end, 1.0, pixelCenter);
    Coverage const coverage = byDiamond == byRectangle ? byDiamond : Coverage::Edge;
    QPointF const along = end - start;
    return std::min(
        coverage, stipple.At(std::abs(InLineCoordinates(stippleStart, stippleStart + along, pixelCenter).x()),
                             std::abs(MajorDistance(pixelCenter))));
}

Coverage SoftwareThinLine::ByDiamond(QPointF pixelCenter) const {
    double const entered = 0.5 - ManhattanDistance(start, end, pixelCenter);
    double const left = ManhattanLength(end - pixelCenter) - 0.5;
    return CoverageAtDistance(std::min(entered, left));
}

double SoftwareThinLine::MajorDistance(QPointF pixelCenter) const {
    QPointF const along = (end - start) / Length(end - start);
    QPointF const from = pixelCenter - stippleStart;
    return std::abs(along.x()) > std::abs(along.y()) ? from.x() / along.x() : from.y() / along.y();
}

QRect SoftwareWideLine::Area() const {
    return PixelsAround(start, end, width);
}

Coverage SoftwareWideLine::At(QPointF pixelCenter) const {
    double const distance = InLineCoordinates(stippleStart, stippleStart + end - start, pixelCenter).x();
    return std::min(InRectangle(start, end, width, pixelCenter), stipple.At(distance, distance));
}

QRect SoftwarePoint::Area() const {
    return PixelsAround(center, center, size);
}

Coverage SoftwarePoint::At(QPointF pixelCenter) const {
    QPointF const offset = pixelCenter - center;
    double const inwards = size * 0.5 - std::max(std::abs(offset.x()), std::abs(offset.y()));
    return CoverageAtDistance(inwards);
}

} // namespace zarvex::testing
