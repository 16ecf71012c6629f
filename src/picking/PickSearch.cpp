// One element after the other.
#include <zx3DQt/PickSearch.h>

#include "PictureMap.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace zarvex::zx3DQt {

namespace {

using Vertices = zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const>;
using LitVertices = zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const>;
using Indices = zx3D::DataSpan<std::uint16_t const>;
using Lines = zx3D::DataSpan<zx3D::Line const>;

double HalfSize(SearchOptions const& options) {
    return options.size > 1.0 ? 0.5 * options.size : 0.5; // what is not a number, too
}

/// `near(index, limit)` finds an element's nearest place to the one that is searched at, if it is not farther
/// away than the limit.
template<typename Near>
std::optional<PickHit> Search(PictureMap const& map, std::uint64_t count, SearchOptions const& options,
                              Near near) {
    std::optional<PickHit> best;
    double limit = options.radius;
    for (std::uint64_t i = 0; i < count; ++i) {
        std::optional<NearPlace> const place = near(i, limit);
        if (!place)
            continue;
        double const depth = map.DepthOf(place->clip);
        bool const isNearest = options.order == SearchOrder::Nearest;
        bool const isBetter =
            !best || (isNearest ? std::tie(place->distance, depth) < std::tie(best->distance, best->depth)
                                : depth < best->depth);
        if (!isBetter)
            continue;
        best = PickHit{{.element = i}, place->position, place->distance, depth};
        if (isNearest)
            limit = place->distance;
    }
    return best;
}

template<typename Has>
std::vector<std::uint64_t> ListThose(std::uint64_t count, Has has) {
    std::vector<std::uint64_t> found;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (has(i))
            found.push_back(i);
    }
    return found;
}

std::uint64_t CountOf(auto const& span) {
    return span.IsEmpty() ? 0 : span.count;
}

/// The corners of a triangle; empty when an index reaches beyond the vertices.
template<typename Span>
std::optional<std::array<bx::Vec3, 3>> CornersOf(Span vertices, Indices indices, std::uint64_t triangle) {
    std::uint16_t const* const index = indices.data + 3 * triangle;
    if (std::max({index[0], index[1], index[2]}) >= CountOf(vertices))
        return std::nullopt;
    return std::array{vertices.data[index[0]].position, vertices.data[index[1]].position,
                      vertices.data[index[2]].position};
}

template<typename Span>
std::optional<PickHit> FindTriangleOf(BGFXViewContext const& view, QPointF const& position, Span vertices,
                                      Indices indices, SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    auto const near = [&](std::uint64_t i, double limit) -> std::optional<NearPlace> {
        auto const corners = CornersOf(vertices, indices, i);
        return corners ? map.FindNear(position, limit, *corners) : std::nullopt;
    };
    return Search(map, CountOf(indices) / 3, options, near);
}

template<typename Span>
std::vector<std::uint64_t> FindTrianglesOf(BGFXViewContext const& view, QRectF const& rect, Span vertices,
                                           Indices indices, SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    return ListThose(CountOf(indices) / 3, [&](std::uint64_t i) {
        auto const corners = CornersOf(vertices, indices, i);
        return corners && map.Touches(rect.normalized(), *corners);
    });
}

} // namespace

std::optional<PickHit> FindPoint(BGFXViewContext const& view, QPointF const& position, Vertices points,
                                 SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    double const half = HalfSize(options);
    auto const near = [&](std::uint64_t i, double limit) {
        std::optional<NearPlace> place =
            map.FindNear(position, limit + std::sqrt(2.0) * half, points.data[i].position);
        if (place) {
            QPointF const away = map.ToPixel(place->clip) - position;
            place->distance = std::hypot(std::max(std::abs(away.x()) - half, 0.0),
                                         std::max(std::abs(away.y()) - half, 0.0));
        }
        return place && place->distance <= limit ? place : std::nullopt;
    };
    return Search(map, CountOf(points), options, near);
}

std::optional<PickHit> FindLine(BGFXViewContext const& view, QPointF const& position, Lines lines,
                                SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    double const half = HalfSize(options);
    auto const near = [&](std::uint64_t i, double limit) {
        zx3D::Line const& line = lines.data[i];
        std::optional<NearPlace> place = map.FindNear(position, limit + half, line.start, line.end);
        if (place)
            place->distance = std::max(place->distance - half, 0.0);
        return place;
    };
    return Search(map, CountOf(lines), options, near);
}

std::optional<PickHit> FindTriangle(BGFXViewContext const& view, QPointF const& position, Vertices vertices,
                                    Indices indices, SearchOptions const& options) {
    return FindTriangleOf(view, position, vertices, indices, options);
}

std::optional<PickHit> FindTriangle(BGFXViewContext const& view, QPointF const& position,
                                    LitVertices vertices, Indices indices, SearchOptions const& options) {
    return FindTriangleOf(view, position, vertices, indices, options);
}

std::vector<std::uint64_t> FindPointsIn(BGFXViewContext const& view, QRectF const& rect, Vertices points,
                                        SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    return ListThose(CountOf(points), [&](std::uint64_t i) {
        return map.Touches(rect.normalized(), points.data[i].position, HalfSize(options));
    });
}

std::vector<std::uint64_t> FindLinesIn(BGFXViewContext const& view, QRectF const& rect, Lines lines,
                                       SearchOptions const& options) {
    PictureMap const map(view, view.GetOrigin(), options.transform);
    return ListThose(CountOf(lines), [&](std::uint64_t i) {
        return map.Touches(rect.normalized(), lines.data[i].start, lines.data[i].end, HalfSize(options));
    });
}

std::vector<std::uint64_t> FindTrianglesIn(BGFXViewContext const& view, QRectF const& rect, Vertices vertices,
                                           Indices indices, SearchOptions const& options) {
    return FindTrianglesOf(view, rect, vertices, indices, options);
}

std::vector<std::uint64_t> FindTrianglesIn(BGFXViewContext const& view, QRectF const& rect,
                                           LitVertices vertices, Indices indices,
                                           SearchOptions const& options) {
    return FindTrianglesOf(view, rect, vertices, indices, options);
}

} // namespace zarvex::zx3DQt
