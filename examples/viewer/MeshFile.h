// How a mesh goes from the importer to the viewer: a file in the layout of the GPU's buffers, mapped into
// memory.
#pragma once

#include "MeshContent.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace viewer {

/// Writes the mesh in this machine's byte order. False when the device is full.
bool WriteMesh(QFile& file, MeshContent const& mesh);

/// A mesh in a mapped file: nothing is copied, and what nobody reads is not even loaded.
///
/// Lifetime: keeps the mapping, not the file's name. Handed around as a shared pointer, since the GPU's
/// buffers are made of its bytes some time later.
class MeshFile {
public:
    /// A part of a whole array.
    struct Range {
        std::uint64_t first = 0;
        std::uint64_t count = 0;
    };

    /// A piece as ranges of the mesh's arrays. Its indices count from its first vertex.
    struct Piece {
        std::uint32_t material = 0;
        Primitive primitive = Primitive::Triangles;
        Box box;
        Range vertices;
        Range indices;
        Range edges;
    };

    /// Null when it cannot be read or is not what `WriteMesh` writes, whoever wrote it: sizes are checked
    /// against the file, indices against the vertices of their piece, and vertices are somewhere.
    static std::shared_ptr<MeshFile const> Open(QString const& path);

    bool IsZUp() const { return m_zIsUp; }
    std::vector<MeshMaterial> const& GetMaterials() const { return m_materials; }
    std::vector<Piece> const& GetPieces() const { return m_pieces; }
    /// On what is missing from the mesh, a line each.
    QStringList const& GetNotes() const { return m_notes; }

    // The arrays of all pieces, one after the other.
    std::span<MeshVertex const> GetVertices() const { return m_vertices; }
    std::span<std::uint16_t const> GetIndices() const { return m_indices; }
    std::span<std::uint16_t const> GetEdges() const { return m_edges; }

private:
    MeshFile() = default;

    /// Adds the boxes; false when a piece cannot be drawn.
    bool CheckPieces();

    std::unique_ptr<QFile> m_file;
    bool m_zIsUp = false;
    std::vector<MeshMaterial> m_materials;
    std::vector<Piece> m_pieces;
    QStringList m_notes;
    std::span<MeshVertex const> m_vertices;
    std::span<std::uint16_t const> m_indices;
    std::span<std::uint16_t const> m_edges;
};

} // namespace viewer
