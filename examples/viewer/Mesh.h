// A mesh on the GPU.
#pragma once

#include "Canvas.h"
#include "MeshFile.h"

#include <zx3D/Owned.h>
#include <zx3DQt/BGFXMaterial.h>

#include <memory>
#include <vector>

namespace viewer {

enum class MeshStyle { Shaded, ShadedWithEdges, Wireframe, Points };

/// Keeps a mesh in static buffers and draws it with the library's programs.
///
/// Lifetime: create and destroy it while bgfx runs.
class Mesh {
public:
    explicit Mesh(std::shared_ptr<MeshFile const> file);

    Box const& GetBox() const { return m_box; }
    std::uint64_t CountTriangles() const { return m_triangleCount; }
    std::uint64_t CountVertices() const { return m_file->GetVertices().size(); }

    void Draw(Canvas const& canvas, MeshStyle style);

    /// A line at each vertex that points where its normal does.
    void DrawNormals(Canvas const& canvas);

private:
    /// Consecutive pieces whose arrays fit into buffers of a size that bgfx takes.
    struct Chunk {
        std::size_t firstPiece = 0;
        std::size_t pieceCount = 0;
        zarvex::zx3D::Owned<bgfx::VertexBufferHandle> vertices;
        zarvex::zx3D::Owned<bgfx::IndexBufferHandle> indices;
        zarvex::zx3D::Owned<bgfx::IndexBufferHandle> edges;
        zarvex::zx3D::Owned<bgfx::VertexBufferHandle> normals; ///< made when they are first drawn
    };

    void CreateChunks();
    Chunk CreateChunk(std::size_t firstPiece, std::size_t pieceCount) const;
    void DrawSurfaces(Canvas const& canvas, bool transparent);
    void DrawEdges(Canvas const& canvas, zarvex::zx3DQt::BGFXMaterial const& material);
    void DrawVertices(Canvas const& canvas);
    void CreateNormals(Chunk& chunk) const;

    template<typename Operation>
    void ForEachPiece(Operation draw) const;

    std::shared_ptr<MeshFile const> m_file;
    Box m_box;
    std::uint64_t m_triangleCount = 0;
    std::vector<Chunk> m_chunks;
    std::vector<zarvex::zx3DQt::BGFXMaterial> m_materials;
    zarvex::zx3DQt::BGFXMaterial m_edgeMaterial;                ///< of edges on surfaces
    zarvex::zx3DQt::BGFXMaterial m_wireMaterial;                ///< of edges alone
    std::vector<zarvex::zx3D::Vertex::Pos3fColorRGBA> m_points; ///< made when they are first drawn
};

} // namespace viewer
