// How much of each pixel a shape covers, computed without a GPU. Coordinates are pixels, y down.
#pragma once

#include <QImage>
#include <QPointF>

#include <vector>

namespace zarvex::testing {

/// Convex, corners in order.
using ConvexPolygon = std::vector<QPointF>;

/// A rectangle of a width around a line, as wide lines are; a square around a point.
/// @{
ConvexPolygon AroundLine(QPointF start, QPointF end, double width);
ConvexPolygon AroundPoint(QPointF center, double side);
/// @}

/// A picture of white shapes on black, against their coverage.
struct CoverageError {
    int edges = 0;          ///< pixels that the shapes cover in part
    double meanOnEdges = 0; ///< how much those are off, of white
    int wrongElsewhere = 0; ///< pixels that should be black or white and are something else
};

/// Two shapes may overlap, three must not.
CoverageError CompareCoverage(QImage const& image, std::vector<ConvexPolygon> const& shapes);

} // namespace zarvex::testing
