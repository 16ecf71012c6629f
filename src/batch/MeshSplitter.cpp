// Triangles into parts.
#include "MeshSplitter.h"

#include "PieceBounds.h"

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

constexpr std::uint32_t kNowhere = UINT32_MAX;

/// 32 bits tell no more vertices apart.
constexpr std::uint64_t kMostVertices = std::uint64_t{UINT32_MAX} + 1;

} // namespace

MeshSplitter::MeshSplitter(Positions positions, Indices indices, MeshRoom const& firstRoom)
    : m_positions(positions),
      m_indices(indices),
      m_room(firstRoom),
      m_places(std::min(positions.count, kMostVertices), kNowhere) {}

std::optional<MeshPart> MeshSplitter::Next() {
    MeshPart part;
    for (; m_next + 3 <= m_indices.count; m_next += 3) {
        std::uint32_t const* const corners = m_indices.data + m_next;
        if (!MayDraw(corners))
            continue;
        if (!Fits(part, corners))
            break;
        Add(part, corners);
    }
    m_room = {};
    if (part.indices.empty())
        return std::nullopt;
    Finish(part);
    return part;
}

bool MeshSplitter::MayDraw(std::uint32_t const* corners) {
    auto const isBeyond = [this](std::uint32_t vertex) { return vertex >= m_places.size(); };
    if (std::any_of(corners, corners + 3, isBeyond)) {
        ++m_beyond;
        return false;
    }
    auto const isFinite = [this](std::uint32_t vertex) { return IsFinite(m_positions.data[vertex]); };
    if (!std::all_of(corners, corners + 3, isFinite)) {
        ++m_notFinite;
        return false;
    }
    return true;
}

bool MeshSplitter::Fits(MeshPart const& part, std::uint32_t const* corners) const {
    // A vertex that a triangle has twice counts twice, which does no harm.
    auto const added = std::count_if(corners, corners + 3,
                                     [this](std::uint32_t vertex) { return m_places[vertex] == kNowhere; });
    return part.vertices.size() + static_cast<std::size_t>(added) <= m_room.vertices &&
           part.indices.size() + 3 <= m_room.indices;
}

void MeshSplitter::Add(MeshPart& part, std::uint32_t const* corners) {
    for (int i = 0; i < 3; ++i) {
        std::uint32_t& place = m_places[corners[i]];
        if (place == kNowhere) {
            place = static_cast<std::uint32_t>(part.vertices.size());
            part.vertices.push_back(corners[i]);
        }
        part.indices.push_back(static_cast<std::uint16_t>(place));
    }
}

/// Sorts the vertices, so that neighbours in the mesh are neighbours in the part.
void MeshSplitter::Finish(MeshPart& part) {
    std::vector<std::uint32_t> sorted = part.vertices;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 0; i < sorted.size(); ++i)
        m_places[sorted[i]] = static_cast<std::uint32_t>(i);
    for (std::uint16_t& index : part.indices)
        index = static_cast<std::uint16_t>(m_places[part.vertices[index]]);
    for (std::uint32_t const vertex : sorted)
        m_places[vertex] = kNowhere;
    part.vertices = std::move(sorted);
}

} // namespace zarvex::zx3DQt
