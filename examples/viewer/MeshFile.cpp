// Header, materials, records of the pieces, then all vertices, all indices, all edges.
#include "MeshFile.h"

#include <array>
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
};

struct PieceRecord {
    std::uint32_t material = 0;
    std::uint32_t primitive = 0;
    std::array<float, 3> min{};
    std::array<float, 3> max{};
    std::uint64_t vertexCount = 0;
    std::uint64_t indexCount = 0;
    std::uint64_t edgeCount = 0;
};

std::array<float, 3> ToArray(QVector3D const& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

QVector3D ToVector(std::array<float, 3> const& array) {
    return {array[0], array[1], array[2]};
}

PieceRecord RecordOf(MeshPiece const& piece) {
    return {piece.material,         static_cast<std::uint32_t>(piece.primitive),
            ToArray(piece.box.min), ToArray(piece.box.max),
            piece.vertices.size(),  piece.indices.size(),
            piece.edges.size()};
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

} // namespace

bool WriteMesh(QFile& file, MeshContent const& mesh) {
    Header const header = HeaderOf(mesh);
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
    return ok && file.flush();
}

std::shared_ptr<MeshFile const> MeshFile::Open(QString const& path) {
    std::shared_ptr<MeshFile> mesh(new MeshFile);
    mesh->m_file.setFileName(path);
    if (!mesh->m_file.open(QIODevice::ReadOnly))
        return nullptr;
    qint64 const size = mesh->m_file.size();
    unsigned char const* const bytes = mesh->m_file.map(0, size);
    if (bytes == nullptr)
        return nullptr;

    Reader reader({bytes, static_cast<std::size_t>(size)});
    std::span<Header const> header;
    if (!reader.Take(1, header) || header[0].signature != kSignature)
        return nullptr;
    std::span<MeshMaterial const> materials;
    std::span<PieceRecord const> records;
    if (!reader.Take(header[0].materialCount, materials) || !reader.Take(header[0].pieceCount, records) ||
        !reader.Take(header[0].vertexCount, mesh->m_vertices) ||
        !reader.Take(header[0].indexCount, mesh->m_indices) ||
        !reader.Take(header[0].edgeCount, mesh->m_edges))
        return nullptr;

    mesh->m_zIsUp = header[0].zIsUp != 0;
    mesh->m_materials.assign(materials.begin(), materials.end());
    Piece last;
    for (PieceRecord const& record : records) {
        auto const vertices = Next(last.vertices, record.vertexCount, mesh->m_vertices.size());
        auto const indices = Next(last.indices, record.indexCount, mesh->m_indices.size());
        auto const edges = Next(last.edges, record.edgeCount, mesh->m_edges.size());
        if (!vertices || !indices || !edges || record.material >= materials.size())
            return nullptr;
        last = {record.material,
                static_cast<Primitive>(record.primitive),
                Box{ToVector(record.min), ToVector(record.max)},
                *vertices,
                *indices,
                *edges};
        mesh->m_pieces.push_back(last);
    }
    return mesh;
}

} // namespace viewer
