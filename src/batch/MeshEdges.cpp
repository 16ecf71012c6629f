// Which edges a mesh has.
#include <zx3DQt/MeshEdges.h>

#include "PieceBounds.h"

#include <QVector3D>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <tuple>

namespace zarvex::zx3DQt {

namespace {

using Positions = zx3D::DataSpan<bx::Vec3 const>;
using Indices = zx3D::DataSpan<std::uint32_t const>;

/// A side of a triangle.
struct Side {
    std::uint32_t lower; ///< vertices
    std::uint32_t upper;
    QVector3D normal; ///< of the triangle as if it went from the lower one to the upper one

    auto Ends() const { return std::tie(lower, upper); }
};

auto Key(bx::Vec3 const& position) {
    return std::tie(position.x, position.y, position.z);
}

/// For each vertex the first one of its position.
std::vector<std::uint32_t> Weld(Positions positions) {
    std::vector<std::uint32_t> order(positions.count);
    std::iota(order.begin(), order.end(), 0u);
    // Positions that are not finite are in no triangle that counts, and would have no order.
    std::erase_if(order, [&](std::uint32_t vertex) { return !IsFinite(positions.data[vertex]); });
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return Key(positions.data[a]) < Key(positions.data[b]);
    });
    std::vector<std::uint32_t> welded(positions.count);
    for (std::size_t i = 0; i < order.size(); ++i) {
        bool const isNew = i == 0 || Key(positions.data[order[i]]) != Key(positions.data[order[i - 1]]);
        welded[order[i]] = isNew ? order[i] : welded[order[i - 1]];
    }
    return welded;
}

QVector3D NormalOf(Positions positions, std::uint32_t const* corners) {
    auto const at = [&](int corner) {
        bx::Vec3 const& position = positions.data[corners[corner]];
        return QVector3D(position.x, position.y, position.z);
    };
    return QVector3D::normal(at(0), at(1), at(2));
}

/// Of all triangles that are drawn; those along the same edge follow each other.
std::vector<Side> FindSides(Positions positions, Indices indices) {
    std::vector<std::uint32_t> const welded = Weld(positions);
    auto const isDrawn = [&](std::uint32_t vertex) {
        return vertex < positions.count && IsFinite(positions.data[vertex]);
    };
    std::vector<Side> sides;
    for (std::uint64_t i = 0; i + 3 <= indices.count; i += 3) {
        std::uint32_t const* const corners = indices.data + i;
        if (!std::all_of(corners, corners + 3, isDrawn))
            continue;
        QVector3D const normal = NormalOf(positions, corners);
        for (std::size_t corner = 0; corner < 3; ++corner) {
            std::uint32_t const from = welded[corners[corner]];
            std::uint32_t const to = welded[corners[(corner + 1) % 3]];
            if (from != to)
                sides.push_back({std::min(from, to), std::max(from, to), from < to ? normal : -normal});
        }
    }
    std::stable_sort(sides.begin(), sides.end(),
                     [](Side const& a, Side const& b) { return a.Ends() < b.Ends(); });
    return sides;
}

} // namespace

std::vector<LineSegment> FindMeshEdges(MeshVertices const& vertices, Indices indices, float degrees,
                                       std::uint32_t rgba) {
    if (vertices.positions.IsEmpty() || indices.IsEmpty())
        return {};
    Positions const positions = vertices.positions;
    std::vector<Side> const sides = FindSides(positions, indices);
    float const flat = std::cos(degrees * std::numbers::pi_v<float> / 180.0f);
    // Neighbours that go along their common side in opposite directions face the same way.
    auto const bends = [&](Side const& a, Side const& b) {
        return degrees <= 0.0f || -QVector3D::dotProduct(a.normal, b.normal) <= flat;
    };
    std::vector<LineSegment> edges;
    for (auto first = sides.begin(); first != sides.end();) {
        auto const last = std::find_if_not(first, sides.end(),
                                           [&](Side const& side) { return side.Ends() == first->Ends(); });
        if (last - first != 2 || bends(first[0], first[1]))
            edges.push_back({{positions.data[first->lower], rgba}, {positions.data[first->upper], rgba}});
        first = last;
    }
    return edges;
}

} // namespace zarvex::zx3DQt
