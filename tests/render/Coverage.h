// Whether a pixel belongs to a shape, as far as GPUs agree on it.
#pragma once

namespace zarvex::testing {

/// On its edge, as good as GPUs place it, both is right.
enum class Coverage { Outside, Edge, Inside };

/// GPUs snap corners to a grid of 1/256 pixel or finer, which moves an edge by less than this, in pixels.
constexpr double kEdgeWidth = 1.0 / 64.0;

/// Of a pixel whose centre is that many pixels within the edge, negative ones beyond it.
constexpr Coverage CoverageAtDistance(double inwards) {
    return inwards > kEdgeWidth    ? Coverage::Inside
           : inwards < -kEdgeWidth ? Coverage::Outside
                                   : Coverage::Edge;
}

} // namespace zarvex::testing
