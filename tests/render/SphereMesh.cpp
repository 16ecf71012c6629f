// The six sides of a cube, blown up to a sphere.
#include "SphereMesh.h"

#include "Vector3.h"

#include <numbers>

namespace zarvex::testing {

namespace {

/// A side of the cube: its centre, and from there to two of its edges.
struct Side {
    Vector3 center, right, up;
};

MeshPart CreateSide(Side const& side, int steps, zx3D::Color const& color) {
    MeshPart part;
    // Equal angles make squares of about the same size everywhere.
    auto const place = [steps](int step) {
        return std::tan((2.0 * step / steps - 1.0) * std::numbers::pi / 4.0);
    };
    for (int row = 0; row <= steps; ++row) {
        for (int column = 0; column <= steps; ++column) {
            bx::Vec3 const position =
                ToVec3(Normalized(side.center + place(column) * side.right + place(row) * side.up));
            part.vertices.emplace_back(position, position, color);
            if (row == steps || column == steps)
                continue;
            int const first = row * (steps + 1) + column;
            for (int const offset : {0, 1, steps + 1, steps + 1, 1, steps + 2})
                part.indices.push_back(static_cast<std::uint16_t>(first + offset));
        }
    }
    return part;
}

} // namespace

std::vector<MeshPart> CreateSphereMesh(int steps, zx3D::Color const& color) {
    constexpr Vector3 x{1.0, 0.0, 0.0};
    constexpr Vector3 y{0.0, 1.0, 0.0};
    constexpr Vector3 z{0.0, 0.0, 1.0};
    std::vector<MeshPart> parts;
    for (double const sign : {1.0, -1.0}) {
        for (Side const& side : {Side{sign * x, y, z}, Side{sign * y, z, x}, Side{sign * z, x, y}})
            parts.push_back(CreateSide(side, steps, color));
    }
    return parts;
}

} // namespace zarvex::testing
