// A batch's mesh, in memory and on the GPU.
#pragma once

#include "MeshPiece.h"

#include <zx3D/ContextListener.h>

#include <cstdint>
#include <span>
#include <vector>

namespace zarvex::zx3DQt {

/// The pieces of a mesh of any size.
class MeshStore final : private zx3D::ContextListener {
public:
    explicit MeshStore(bool keepsData) : m_keepsData(keepsData) {}

    /// Without triangles, memory and buffers.
    void Clear();

    /// Adds a mesh of the store's format, or of any to an empty one. The vertices' attributes have one
    /// length. Throws `std::bad_alloc`, and is empty then.
    void Append(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices);

    /// Replaces vertices from `first` on, of those that there are, with others of the store's format.
    void Update(std::uint64_t first, MeshVertices const& vertices);

    /// Hands bgfx what it does not have, of at most so many bytes, but a few where it is any number; those
    /// that it was handed are taken from `bytes`. Returns false when it has no buffers left.
    bool Upload(std::uint64_t& bytes);

    std::uint64_t GetVertexCount() const { return m_vertexCount; }
    std::uint64_t GetTriangleCount() const { return m_triangleCount; }
    bool IsUploaded() const;
    /// True when the context stopped, and took data along that were not kept. Until `Clear`.
    bool IsLost() const { return m_isLost; }

    bool KeepsData() const { return m_keepsData; }
    MeshFormat const& GetFormat() const { return m_format; }
    std::span<MeshPiece const> GetPieces() const { return m_pieces; }
    /// Around all pieces.
    Bounds GetBounds() const;

private:
    void OnContextStopping() override;

    void AppendPieces(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices);

    bool m_keepsData;
    bool m_isLost = false;
    MeshFormat m_format;
    std::uint64_t m_vertexCount = 0;
    std::uint64_t m_triangleCount = 0; ///< without the refused ones
    std::vector<MeshPiece> m_pieces;
};

} // namespace zarvex::zx3DQt
