// Meshes of any size in parts that 16-bit indices address.
#pragma once

#include <zx3D/DataSpan.h>

#include <bx/math.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

/// What a part may have at most.
struct MeshRoom {
    std::size_t vertices = 65'536;
    std::size_t indices = 3 * 262'144;

    bool HasTriangle() const { return vertices >= 3 && indices >= 3; }
};

struct MeshPart {
    std::vector<std::uint32_t> vertices; ///< which of the mesh's, in ascending order
    std::vector<std::uint16_t> indices;  ///< three by three, into these
};

/// Puts triangles into parts in the order in which they come. What is at the border of parts is in both.
class MeshSplitter {
public:
    using Positions = zx3D::DataSpan<bx::Vec3 const>;
    using Indices = zx3D::DataSpan<std::uint32_t const>;

    /// `firstRoom` is for a triangle at least.
    MeshSplitter(Positions positions, Indices indices, MeshRoom const& firstRoom);

    /// Nothing after the last one.
    std::optional<MeshPart> Next();

    // Triangles that were left out so far.

    /// Those with an index beyond the vertices.
    std::uint64_t CountBeyond() const { return m_beyond; }
    /// Those of a vertex whose position is not finite.
    std::uint64_t CountNotFinite() const { return m_notFinite; }

private:
    bool MayDraw(std::uint32_t const* corners);
    bool Fits(MeshPart const& part, std::uint32_t const* corners) const;
    void Add(MeshPart& part, std::uint32_t const* corners);
    void Finish(MeshPart& part);

    Positions m_positions;
    Indices m_indices;
    MeshRoom m_room;
    std::uint64_t m_next = 0;            ///< index of the next triangle's first corner
    std::vector<std::uint32_t> m_places; ///< of the mesh's vertices in the part
    std::uint64_t m_beyond = 0;
    std::uint64_t m_notFinite = 0;
};

} // namespace zarvex::zx3DQt
