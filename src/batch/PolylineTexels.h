// How polylines lie in texels: their vertices, with a gap before the first polyline and after each.
#pragma once

#include "PieceBounds.h"
#include "TexelStore.h"

#include <zx3DQt/LineBatch.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

// Texels that are no vertices: their x is not a number, of which one bit pattern or another tells what they
// are. line_batch_joined.glsl reads them.

/// A line stops here: between polylines, and in the place of a vertex that is not finite.
constexpr Texel kGap{0x7FC00000u, 0, 0, 0};

/// Likewise, but the segment after it has a neighbour, to the vertex one texel before this one; or the
/// segment before it has one, to the vertex one texel after this one. A closed polyline of the vertices 0 to
/// n is
///
///     n, kJoinsBefore, 0, 1, ... n, 0, kJoinsAfter, 1
/// @{
constexpr Texel kJoinsBefore{0x7FC00001u, 0, 0, 0};
constexpr Texel kJoinsAfter{0x7FC00002u, 0, 0, 0};
/// @}

inline Texel TexelOf(LineVertex const& vertex) {
    if (!IsFinite(vertex.position))
        return kGap;
    return {std::bit_cast<std::uint32_t>(vertex.position.x), std::bit_cast<std::uint32_t>(vertex.position.y),
            std::bit_cast<std::uint32_t>(vertex.position.z), vertex.rgba};
}

/// Where a polyline is among the texels.
struct PolylinePlace {
    std::uint64_t firstVertex = 0;
    std::uint64_t vertexCount = 0;
    bool isClosed = false;
};

/// The places of a batch's polylines, 8 bytes each.
class PolylinePlaces {
public:
    static std::uint64_t CountVertices(Polyline const& polyline) {
        return polyline.vertices.IsEmpty() ? 0 : polyline.vertices.count;
    }
    static bool IsClosed(Polyline const& polyline) {
        return polyline.ends == PolylineEnds::Closed && CountVertices(polyline) >= 3;
    }
    /// With the gap after it.
    static std::uint64_t CountTexels(Polyline const& polyline) {
        return CountVertices(polyline) + (IsClosed(polyline) ? kClosingTexels : 0) + 1;
    }

    void Clear() { m_begins = {}; }
    void Reserve(std::uint64_t more) {
        if (m_begins.capacity() < m_begins.size() + more)
            m_begins.reserve(std::max(m_begins.size() + more, 2 * m_begins.size()));
    }
    std::uint64_t GetCount() const { return m_begins.size(); }

    /// Those of which the first texels, so many, have everything.
    std::uint64_t CountWithin(std::uint64_t texels, std::uint64_t allTexels) const {
        if (texels == allTexels)
            return m_begins.size();
        auto const after = std::upper_bound(m_begins.begin(), m_begins.end(), 2 * texels + 1);
        return static_cast<std::uint64_t>(std::max<std::ptrdiff_t>(after - m_begins.begin(), 1) - 1);
    }

    /// Writes a polyline's texels, which begin at this index. The place behind them.
    Texel* Add(Polyline const& polyline, std::uint64_t begin, Texel* to) {
        bool const isClosed = IsClosed(polyline);
        m_begins.push_back(2 * begin + (isClosed ? 1 : 0));
        LineVertex const* const vertices = polyline.vertices.data;
        std::uint64_t const count = CountVertices(polyline);
        if (isClosed) {
            *to++ = TexelOf(vertices[count - 1]);
            *to++ = kJoinsBefore;
        }
        to = std::transform(vertices, vertices + count, to, TexelOf);
        if (isClosed) {
            *to++ = TexelOf(vertices[0]);
            *to++ = kJoinsAfter;
            *to++ = TexelOf(vertices[1]);
        }
        *to++ = kGap;
        return to;
    }

    /// Of one that there is.
    PolylinePlace At(std::uint64_t polyline, std::uint64_t allTexels) const {
        bool const isClosed = (m_begins[polyline] & 1) != 0;
        std::uint64_t const begin = m_begins[polyline] / 2;
        std::uint64_t const end = polyline + 1 < m_begins.size() ? m_begins[polyline + 1] / 2 : allTexels;
        return {begin + (isClosed ? 2 : 0), end - begin - 1 - (isClosed ? kClosingTexels : 0), isClosed};
    }

    /// The polyline that a texel belongs to, of those that there are.
    std::uint64_t Find(std::uint64_t texel) const {
        auto const after = std::upper_bound(m_begins.begin(), m_begins.end(), 2 * texel + 1);
        return static_cast<std::uint64_t>(after - m_begins.begin()) - 1;
    }

    /// Calls `write(texel, vertex)` for the texels outside of a closed polyline's vertices that repeat one.
    template<typename Write>
    static void ForEachRepeated(PolylinePlace const& place, Write write) {
        if (!place.isClosed)
            return;
        std::uint64_t const end = place.firstVertex + place.vertexCount;
        write(place.firstVertex - 2, place.vertexCount - 1);
        write(end, 0);
        write(end + 2, 1);
    }

private:
    static constexpr std::uint64_t kClosingTexels = 5;

    /// Twice the index of a polyline's first texel, and one more when it is closed.
    std::vector<std::uint64_t> m_begins;
};

} // namespace zarvex::zx3DQt
