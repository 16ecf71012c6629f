// Adding, replacing and uploading the pieces.
#include "MeshStore.h"

#include "../frame/Logging.h"

#include <QString>

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

/// What a frame uploads at least, so that there is progress with any budget.
constexpr std::uint64_t kLeastUpload = 65'536;

/// Vertices that there is room for at least in a piece that comes behind uploaded ones.
constexpr std::uint64_t kLeastGrowth = 256;

void Warn(char const* name, char const* text, std::uint64_t refused, std::uint64_t all) {
    if (refused > 0)
        LogWarning(name, [&] { return QString(text).arg(refused).arg(all); });
}

} // namespace

void MeshStore::Clear() {
    m_isLost = false;
    m_format = {};
    m_vertexCount = 0;
    m_triangleCount = 0;
    m_pieces.clear();
}

void MeshStore::OnContextStopping() {
    bool const loses =
        std::ranges::any_of(m_pieces, [](MeshPiece const& piece) { return piece.HasDropped(); });
    if (loses) {
        Clear();
        m_isLost = true;
    }
    for (MeshPiece& piece : m_pieces)
        piece.DropBuffers();
}

void MeshStore::Append(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices) {
    m_isLost = false;
    m_format = MeshFormat(vertices);
    try {
        AppendPieces(vertices, indices);
    } catch (...) {
        Clear();
        throw;
    }
}

void MeshStore::AppendPieces(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices) {
    // What comes together fits exactly; what grows doubles, so that a stream of small meshes makes few
    // pieces.
    bool const grows = !m_pieces.empty();
    bool isOpen = grows && m_pieces.back().GetRoom().HasTriangle();
    MeshSplitter splitter(vertices.positions, indices, isOpen ? m_pieces.back().GetRoom() : MeshRoom());
    while (std::optional<MeshPart> const part = splitter.Next()) {
        if (!isOpen)
            m_pieces.emplace_back(grows ? std::max(m_vertexCount, kLeastGrowth) : 0);
        m_pieces.back().Append(m_format, vertices, m_vertexCount, *part);
        m_triangleCount += part->indices.size() / 3;
        isOpen = false;
    }
    m_vertexCount += vertices.positions.count;
    Warn("mesh-batch.indices",
         "%1 of %2 triangles are not drawn: they have indices beyond the vertices, or fewer than three",
         splitter.CountBeyond() + (indices.count % 3 != 0 ? 1 : 0), (indices.count + 2) / 3);
    Warn("mesh-batch.not-finite", "%1 of %2 triangles are not drawn: they have positions that are not finite",
         splitter.CountNotFinite(), (indices.count + 2) / 3);
}

void MeshStore::Update(std::uint64_t first, MeshVertices const& vertices) {
    for (MeshPiece& piece : m_pieces)
        piece.Update(m_format, vertices, first);
    std::uint64_t const count = vertices.positions.count;
    Warn("mesh-batch.not-finite", "%1 of %2 vertices are not updated: their positions are not finite",
         static_cast<std::uint64_t>(
             std::count_if(vertices.positions.data, vertices.positions.data + count,
                           [](bx::Vec3 const& position) { return !IsFinite(position); })),
         count);
}

bool MeshStore::Upload(std::uint64_t& bytes) {
    std::uint64_t const budget = bytes == 0 ? 0 : std::max(bytes, kLeastUpload);
    std::uint64_t left = budget;
    bool hasBuffers = true;
    for (MeshPiece& piece : m_pieces) {
        if (piece.IsUploaded())
            continue;
        if (left == 0)
            break;
        hasBuffers = piece.Upload(m_format, left, m_keepsData);
        if (!piece.IsUploaded())
            break;
    }
    bytes -= std::min(budget - left, bytes);
    return hasBuffers;
}

bool MeshStore::IsUploaded() const {
    return std::ranges::all_of(m_pieces, [](MeshPiece const& piece) { return piece.IsUploaded(); });
}

Bounds MeshStore::GetBounds() const {
    Bounds bounds;
    for (MeshPiece const& piece : m_pieces)
        bounds.Add(piece.GetBounds());
    return bounds;
}

} // namespace zarvex::zx3DQt
