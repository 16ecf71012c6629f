// Header, materials, records of the pieces, then all vertices, all indices, all edges, and the notes.
#include "MeshFile.h"

#include "PlainText.h"
#include "RegularFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <type_traits>

namespace viewer {

namespace {

constexpr std::array<char, 8> kSignature{'v', 'i', 'e', 'w', 'm', 'e', 's', 'h'};

struct Header {
    std::array<char, 8> signature = kSignature;
    std::uint32_t zIsUp = 0;
    std::uint32_t materialCount = 0;
    std::uint64_t pieceCount = 0;
    std::uint64_t vertexCount = 0;
    std::uint64_t indexCount = 0;
    std::uint64_t edgeCount = 0;
    std::uint64_t noteBytes = 0;
};

constexpr qsizetype kMostNoteBytes = 1 << 16;

struct PieceRecord {
    std::uint32_t material = 0;
    std::uint32_t primitive = 0;
    std::uint64_t vertexCount = 0;
    std::uint64_t indexCount = 0;
    std::uint64_t edgeCount = 0;
};

PieceRecord RecordOf(MeshPiece const& piece) {
    return {piece.material, static_cast<std::uint32_t>(piece.primitive), piece.vertices.size(),
            piece.indices.size(), piece.edges.size()};
}

Header HeaderOf(MeshContent const& mesh) {
    Header header;
    header.zIsUp = mesh.zIsUp;
    header.materialCount = static_cast<std::uint32_t>(mesh.materials.size());
    header.pieceCount = mesh.pieces.size();
    for (MeshPiece const& piece : mesh.pieces) {
        header.vertexCount += piece.vertices.size();
        header.indexCount += piece.indices.size();
        header.edgeCount += piece.edges.size();
    }
    return header;
}

template<typename T>
bool Write(QFile& file, T const* data, std::size_t count) {
    static_assert(std::is_trivially_copyable_v<T>);
    auto const size = static_cast<qint64>(count * sizeof(T));
    return file.write(reinterpret_cast<char const*>(data), size) == size;
}

/// Takes arrays from the front of the file's bytes, and nothing from beyond their end.
class Reader {
public:
    explicit Reader(std::span<unsigned char const> bytes) : m_bytes(bytes) {}

    template<typename T>
    bool Take(std::uint64_t count, std::span<T const>& result) {
        if (count > m_bytes.size() / sizeof(T))
            return false;
        result = {reinterpret_cast<T const*>(m_bytes.data()), static_cast<std::size_t>(count)};
        m_bytes = m_bytes.subspan(result.size_bytes());
        return true;
    }

private:
    std::span<unsigned char const> m_bytes;
};

/// The `count` elements after `last`; empty when an array of `size` does not have them.
std::optional<MeshFile::Range> Next(MeshFile::Range const& last, std::uint64_t count, std::size_t size) {
    std::uint64_t const first = last.first + last.count;
    if (count > size - first)
        return std::nullopt;
    return MeshFile::Range{first, count};
}

bool IsFinite(MeshMaterial const& material) {
    auto const isFinite = [](float value) { return std::isfinite(value); };
    return std::ranges::all_of(material.ambient, isFinite) &&
           std::ranges::all_of(material.diffuse, isFinite) &&
           std::ranges::all_of(material.specular, isFinite) &&
           std::ranges::all_of(material.emission, isFinite) && isFinite(material.shininess);
}

/// Whether all primitives are whole and have their corners among the vertices.
bool AreSound(std::span<std::uint16_t const> indices, std::size_t corners, std::uint64_t vertexCount) {
    constexpr std::size_t most = std::size_t{1} << 30; // bgfx counts bytes in 32 bits
    auto const larger = [](std::uint16_t a, std::uint16_t b) { return std::max(a, b); };
    return indices.size() <= most && indices.size() % corners == 0 &&
           std::accumulate(indices.begin(), indices.end(), std::uint16_t{0}, larger) < vertexCount;
}

/// The box around vertices; none when one of them is nowhere.
std::optional<Box> Enclose(std::span<MeshVertex const> vertices) {
    Box box;
    for (MeshVertex const& vertex : vertices) {
        if (!IsInReach(vertex.position))
            return std::nullopt;
        box.Extend(QVector3D(vertex.position.x, vertex.position.y, vertex.position.z));
    }
    return box;
}

} // namespace

bool WriteMesh(QFile& file, MeshContent const& mesh) {
    QByteArray const notes = mesh.notes.join('\n').toUtf8().left(kMostNoteBytes);
    Header header = HeaderOf(mesh);
    header.noteBytes = static_cast<std::uint64_t>(notes.size());
    bool ok = Write(file, &header, 1) && Write(file, mesh.materials.data(), mesh.materials.size());
    for (MeshPiece const& piece : mesh.pieces) {
        PieceRecord const record = RecordOf(piece);
        ok = ok && Write(file, &record, 1);
    }
    for (MeshPiece const& piece : mesh.pieces)
        ok = ok && Write(file, piece.vertices.data(), piece.vertices.size());
    for (MeshPiece const& piece : mesh.pieces)
        ok = ok && Write(file, piece.indices.data(), piece.indices.size());
    for (MeshPiece const& piece : mesh.pieces)
        ok = ok && Write(file, piece.edges.data(), piece.edges.size());
    return ok && Write(file, notes.data(), header.noteBytes) && file.flush();
}

std::shared_ptr<MeshFile const> MeshFile::Open(QString const& path) {
    std::shared_ptr<MeshFile> mesh(new MeshFile);
    try {
        mesh->m_file = OpenRegularFile(QFile::encodeName(path).toStdString());
    } catch (FileError const&) {
        return nullptr;
    }
    qint64 const size = mesh->m_file->size();
    unsigned char const* const bytes = mesh->m_file->map(0, size);
    if (bytes == nullptr)
        return nullptr;

    Reader reader({bytes, static_cast<std::size_t>(size)});
    std::span<Header const> header;
    if (!reader.Take(1, header) || header[0].signature != kSignature)
        return nullptr;
    std::span<MeshMaterial const> materials;
    std::span<PieceRecord const> records;
    std::span<char const> notes;
    if (header[0].materialCount > kMaxMaterials || header[0].noteBytes > kMostNoteBytes ||
        !reader.Take(header[0].materialCount, materials) || !reader.Take(header[0].pieceCount, records) ||
        !reader.Take(header[0].vertexCount, mesh->m_vertices) ||
        !reader.Take(header[0].indexCount, mesh->m_indices) ||
        !reader.Take(header[0].edgeCount, mesh->m_edges) || !reader.Take(header[0].noteBytes, notes) ||
        !std::ranges::all_of(materials, IsFinite))
        return nullptr;

    mesh->m_zIsUp = header[0].zIsUp != 0;
    mesh->m_materials.assign(materials.begin(), materials.end());
    for (QByteArray const& note : QByteArray(notes.data(), std::ssize(notes)).split('\n'))
        if (!note.isEmpty())
            mesh->m_notes << ToPlainLine(note);
    Piece last;
    for (PieceRecord const& record : records) {
        auto const vertices = Next(last.vertices, record.vertexCount, mesh->m_vertices.size());
        auto const indices = Next(last.indices, record.indexCount, mesh->m_indices.size());
        auto const edges = Next(last.edges, record.edgeCount, mesh->m_edges.size());
        if (!vertices || !indices || !edges || record.material >= materials.size())
            return nullptr;
        last = {record.material, static_cast<Primitive>(record.primitive), Box(), *vertices, *indices,
                *edges};
        mesh->m_pieces.push_back(last);
    }
    return mesh->CheckPieces() ? mesh : nullptr;
}

bool MeshFile::CheckPieces() {
    for (Piece& piece : m_pieces) {
        auto const corners = static_cast<std::size_t>(piece.primitive);
        std::optional<Box> box;
        if (corners >= 1 && corners <= 3 && piece.indices.count > 0 &&
            piece.vertices.count <= kMaxPieceVertices &&
            AreSound(m_indices.subspan(piece.indices.first, piece.indices.count), corners,
                     piece.vertices.count) &&
            AreSound(m_edges.subspan(piece.edges.first, piece.edges.count), 2, piece.vertices.count))
            box = Enclose(m_vertices.subspan(piece.vertices.first, piece.vertices.count));
        if (!box)
            return false;
        piece.box = *box;
    }
    return !m_pieces.empty();
}

} // namespace viewer
