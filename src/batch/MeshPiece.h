// A piece of a batch's mesh: what is drawn in one call.
#pragma once

#include "MeshFormat.h"
#include "MeshSplitter.h"
#include "PieceBounds.h"

#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

/// Vertices and indices that wait until `Upload` takes them over, and stay as well when the data are kept;
/// and buffers of bgfx's with those that were. It grows as far as its room goes.
class MeshPiece {
public:
    /// `growth` is how many vertices there should be room for at least.
    explicit MeshPiece(std::size_t growth = 0) : m_growth(growth) {}

    /// For how much more there is room.
    MeshRoom GetRoom() const;

    /// Adds a part of a mesh whose first vertex is the batch's one of index `first`.
    void Append(MeshFormat const& format, MeshVertices const& vertices, std::uint64_t first,
                MeshPart const& part);

    /// Replaces what it has of the batch's vertices from `first` on; those on the GPU at once. A vertex whose
    /// position is not finite stays what it was.
    void Update(MeshFormat const& format, MeshVertices const& vertices, std::uint64_t first);

    /// Hands bgfx what it does not have, and takes it from the bytes that it may have. Returns false when
    /// bgfx has no buffers left.
    bool Upload(MeshFormat const& format, std::uint64_t& bytes, bool keepsData);

    bool IsUploaded() const { return m_uploadedIndices == m_indexCount; }
    std::uint32_t GetUploadedIndexCount() const { return m_uploadedIndices; }
    std::uint32_t GetTriangleCount() const { return m_indexCount / 3; }
    /// The corners of a triangle, of data that are kept.
    std::array<bx::Vec3, 3> GetTriangle(MeshFormat const& format, std::uint32_t triangle) const;
    /// Whether there is something that is only on the GPU.
    bool HasDropped() const { return m_droppedIndices > 0; }
    /// The context stops.
    void DropBuffers();

    Bounds const& GetBounds() const { return m_bounds; }

    /// On which side of all its triangles the normals are: 1 where the corners are counter-clockwise, -1 on
    /// the other; 0 when they are on different sides, or some are missing.
    int GetSideOfNormals() const { return m_outward != m_inward && !m_mixed ? (m_outward ? 1 : -1) : 0; }

    /// Binds the buffers for a draw call, of what is there.
    void SetBuffers() const;

private:
    /// Vertices that follow each other in the mesh.
    struct Run {
        std::uint64_t first; ///< in the batch
        std::uint32_t count;
        std::uint32_t place; ///< of the first one in the piece
    };

    void AddRuns(std::uint64_t first, std::vector<std::uint32_t> const& vertices);
    void AddSides(MeshVertices const& vertices, MeshPart const& part);
    void Overwrite(std::uint32_t stride, std::uint32_t place, std::vector<std::byte> const& packed);
    bool CreateBuffers(MeshFormat const& format);

    std::size_t m_growth;
    std::vector<Run> m_runs; ///< one behind the other, from place 0 on
    Bounds m_bounds;
    bool m_outward = false;
    bool m_inward = false;
    bool m_mixed = false;

    std::uint32_t m_vertexCount = 0;
    std::uint32_t m_droppedVertices = 0; ///< that are only on the GPU: the first ones
    std::uint32_t m_uploadedVertices = 0;
    std::vector<std::byte> m_vertices; ///< those after the dropped ones

    std::uint32_t m_indexCount = 0;
    std::uint32_t m_droppedIndices = 0;
    std::uint32_t m_uploadedIndices = 0;
    std::vector<std::uint16_t> m_indices;

    std::uint32_t m_vertexCapacity = 0; ///< of the buffers
    std::uint32_t m_indexCapacity = 0;
    zx3D::Owned<bgfx::DynamicVertexBufferHandle> m_vertexBuffer;
    zx3D::Owned<bgfx::DynamicIndexBufferHandle> m_indexBuffer;
};

} // namespace zarvex::zx3DQt
