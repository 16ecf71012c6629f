// How a batch's mesh lies on the GPU.
#pragma once

#include <zx3DQt/MeshBatch.h>

#include <bgfx/bgfx.h>

#include <cstddef>
#include <cstdint>

namespace zarvex::zx3DQt {

/// A vertex in as few bytes as it takes: position 12, colour 4, a normal 8, texture coordinates 8.
class MeshFormat {
public:
    /// Position and colour.
    MeshFormat() = default;
    /// Of what the vertices have.
    explicit MeshFormat(MeshVertices const& vertices)
        : m_hasNormals(!vertices.normals.IsEmpty()),
          m_hasTextureCoordinates(!vertices.textureCoordinates.IsEmpty()) {}

    bool HasNormals() const { return m_hasNormals; }
    bool HasTextureCoordinates() const { return m_hasTextureCoordinates; }

    std::uint32_t GetStride() const {
        return 16u + (m_hasNormals ? 8u : 0u) + (m_hasTextureCoordinates ? 8u : 0u);
    }
    bgfx::VertexLayout const& GetLayout() const;

    /// Writes a vertex.
    void Pack(MeshVertices const& vertices, std::uint64_t index, std::byte* place) const;

    friend bool operator==(MeshFormat const&, MeshFormat const&) = default;

private:
    bool m_hasNormals = false;
    bool m_hasTextureCoordinates = false;
};

} // namespace zarvex::zx3DQt
