// A box along the axes.
#pragma once

#include <QVector3D>

#include <algorithm>
#include <array>
#include <limits>

namespace viewer {

/// Empty until it is extended by a point.
struct Box {
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    QVector3D min{kInfinity, kInfinity, kInfinity};
    QVector3D max{-kInfinity, -kInfinity, -kInfinity};

    bool IsEmpty() const { return min.x() > max.x(); }
    QVector3D Center() const { return 0.5f * min + 0.5f * max; }
    QVector3D Size() const { return max - min; }
    /// Half of the diagonal.
    float Radius() const { return 0.5f * Size().length(); }

    void Extend(QVector3D const& point) {
        for (int axis = 0; axis < 3; ++axis) {
            min[axis] = std::min(min[axis], point[axis]);
            max[axis] = std::max(max[axis], point[axis]);
        }
    }

    void Extend(Box const& other) {
        if (other.IsEmpty())
            return;
        Extend(other.min);
        Extend(other.max);
    }

    /// Corner i has the maximum of x, y and z where bit 0, 1 and 2 of i is set.
    std::array<QVector3D, 8> Corners() const {
        std::array<QVector3D, 8> corners;
        for (std::size_t i = 0; i < corners.size(); ++i)
            corners[i] = {(i & 1 ? max : min).x(), (i & 2 ? max : min).y(), (i & 4 ? max : min).z()};
        return corners;
    }
};

} // namespace viewer
