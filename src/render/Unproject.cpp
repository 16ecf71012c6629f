// Solving for the positions that two points of clip space come from, in double precision.
#include "Unproject.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

using Vector = std::array<double, 4>;

/// A row of four equations: the coefficients, and the two right-hand sides.
using Row = std::array<double, 6>;
using Equations = std::array<Row, 4>;

double ProductAt(QMatrix4x4 const& a, QMatrix4x4 const& b, int row, int column) {
    double sum = 0.0;
    for (int i = 0; i < 4; ++i)
        sum += double{a(row, i)} * double{b(i, column)};
    return sum;
}

/// Gauss and Jordan's elimination; false without a single solution.
bool Solve(Equations& equations) {
    for (std::size_t column = 0; column < 4; ++column) {
        auto const pivot = std::max_element(
            equations.begin() + static_cast<std::ptrdiff_t>(column), equations.end(),
            [&](Row const& a, Row const& b) { return std::abs(a[column]) < std::abs(b[column]); });
        std::swap(*pivot, equations[column]);
        double const factor = 1.0 / equations[column][column];
        if (!std::isfinite(factor))
            return false;
        for (double& value : equations[column])
            value *= factor;
        for (std::size_t row = 0; row < 4; ++row) {
            double const multiple = row == column ? 0.0 : equations[row][column];
            for (std::size_t i = 0; i < 6; ++i)
                equations[row][i] -= multiple * equations[column][i];
        }
    }
    return true;
}

} // namespace

std::optional<WorldRay> Unproject(QMatrix4x4 const& projection, QMatrix4x4 const& view,
                                  WorldPosition const& origin, double x, double y, double nearest) {
    Vector const begin{x, y, nearest, 1.0};
    Vector const end{x, y, 1.0, 1.0};
    Equations equations;
    for (int row = 0; row < 4; ++row) {
        auto const index = static_cast<std::size_t>(row);
        for (int column = 0; column < 4; ++column)
            equations[index][static_cast<std::size_t>(column)] = ProductAt(projection, view, row, column);
        equations[index][4] = begin[index];
        equations[index][5] = end[index];
    }
    if (!Solve(equations))
        return std::nullopt;
    auto const at = [&equations](std::size_t side) {
        return WorldVector{equations[0][side], equations[1][side], equations[2][side]};
    };
    double const beginW = equations[3][4];
    double const endW = equations[3][5]; // 0 for a far plane that is infinitely far away
    WorldVector const way = beginW * at(5) - endW * at(4);
    double const length = std::sqrt(Dot(way, way));
    double const scale = beginW * endW < 0.0 ? -1.0 / length : 1.0 / length;
    WorldRay const ray{origin + 1.0 / beginW * at(4), scale * way};
    bool const isFinite = std::isfinite(ray.origin.x + ray.origin.y + ray.origin.z) &&
                          std::isfinite(ray.direction.x + ray.direction.y + ray.direction.z);
    return isFinite ? std::optional(ray) : std::nullopt;
}

} // namespace zarvex::zx3DQt
