// One pass over the primitives: a piece is closed when the next primitive no longer fits.
#include "SplitMesh.h"

#include <algorithm>
#include <limits>

namespace viewer {

namespace {

constexpr std::uint32_t kNotInPiece = std::numeric_limits<std::uint32_t>::max();

/// Fills one piece after the other.
class Splitter {
public:
    Splitter(std::span<MeshVertex const> vertices, std::size_t cornerCount, std::size_t maxPieceVertices)
        : m_vertices(vertices),
          m_primitive(static_cast<Primitive>(cornerCount)),
          m_maxPieceVertices(maxPieceVertices),
          m_places(vertices.size(), kNotInPiece) {}

    void Add(std::span<std::uint32_t const> corners) {
        if (!std::ranges::all_of(corners, [this](std::uint32_t index) { return IsUsable(index); }))
            return;
        if (m_piece.vertices.size() + CountNew(corners) > m_maxPieceVertices)
            ClosePiece();
        for (std::uint32_t const index : corners)
            m_piece.indices.push_back(PlaceInPiece(index));
    }

    std::vector<MeshPiece> Finish() {
        if (!m_piece.indices.empty())
            ClosePiece();
        return std::move(m_pieces);
    }

private:
    bool IsUsable(std::uint32_t index) const {
        return index < m_vertices.size() && IsInReach(m_vertices[index].position);
    }

    std::size_t CountNew(std::span<std::uint32_t const> corners) const {
        return std::ranges::count_if(corners,
                                     [this](std::uint32_t index) { return m_places[index] == kNotInPiece; });
    }

    std::uint16_t PlaceInPiece(std::uint32_t index) {
        if (m_places[index] == kNotInPiece) {
            m_places[index] = static_cast<std::uint32_t>(m_piece.vertices.size());
            m_taken.push_back(index);
            MeshVertex const& vertex = m_vertices[index];
            m_piece.vertices.push_back(vertex);
            m_piece.box.Extend(QVector3D(vertex.position.x, vertex.position.y, vertex.position.z));
        }
        return static_cast<std::uint16_t>(m_places[index]);
    }

    void ClosePiece() {
        m_piece.primitive = m_primitive;
        if (m_primitive == Primitive::Triangles)
            m_piece.edges = FindEdges(m_piece.indices);
        m_pieces.push_back(std::exchange(m_piece, MeshPiece()));
        for (std::uint32_t const index : m_taken)
            m_places[index] = kNotInPiece;
        m_taken.clear();
    }

    std::span<MeshVertex const> m_vertices;
    Primitive m_primitive;
    std::size_t m_maxPieceVertices;
    std::vector<std::uint32_t> m_places; ///< of the mesh's vertices in the present piece
    std::vector<std::uint32_t> m_taken;  ///< the mesh's vertices that are in the present piece
    MeshPiece m_piece;
    std::vector<MeshPiece> m_pieces;
};

} // namespace

std::vector<MeshPiece> SplitMesh(std::span<MeshVertex const> vertices, std::span<std::uint32_t const> indices,
                                 std::size_t cornerCount, std::size_t maxPieceVertices) {
    Splitter splitter(vertices, cornerCount, maxPieceVertices);
    for (std::size_t i = 0; i + cornerCount <= indices.size(); i += cornerCount)
        splitter.Add(indices.subspan(i, cornerCount));
    return splitter.Finish();
}

std::vector<std::uint16_t> FindEdges(std::span<std::uint16_t const> triangles) {
    std::vector<std::uint32_t> edges; // the smaller index in the upper half
    edges.reserve(triangles.size());
    for (std::size_t i = 0; i + 3 <= triangles.size(); i += 3) {
        for (std::size_t side = 0; side < 3; ++side) {
            auto const [low, high] = std::minmax(triangles[i + side], triangles[i + (side + 1) % 3]);
            edges.push_back(std::uint32_t{low} << 16 | high);
        }
    }
    std::ranges::sort(edges);
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());

    std::vector<std::uint16_t> pairs;
    pairs.reserve(2 * edges.size());
    for (std::uint32_t const edge : edges) {
        pairs.push_back(static_cast<std::uint16_t>(edge >> 16));
        pairs.push_back(static_cast<std::uint16_t>(edge));
    }
    return pairs;
}

} // namespace viewer
