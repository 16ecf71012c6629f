// A mesh on the GPU.
#pragma once

#include "Canvas.h"
#include "MeshFile.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/LineBatch.h>
#include <zx3DQt/MeshBatch.h>
#include <zx3DQt/PointBatch.h>

#include <memory>
#include <vector>

namespace viewer {

enum class MeshStyle { Shaded, ShadedWithEdges, Wireframe, Points };

/// Keeps a mesh in the library's batches: its surfaces, edges, vertices and normals, from when they are first
/// drawn. They are filled piece by piece, as far as a frame has time.
class Mesh {
public:
    explicit Mesh(std::shared_ptr<MeshFile const> file);

    Box const& GetBox() const { return m_box; }
    std::uint64_t CountTriangles() const { return m_triangleCount; }
    std::uint64_t CountVertices() const { return m_file->GetVertices().size(); }

    void Draw(Canvas const& canvas, zarvex::zx3DQt::BGFXLightingContext const& lights, MeshStyle style);

    /// A line at each vertex that points where its normal does.
    void DrawNormals(Canvas const& canvas);

    /// Whether all of what was last drawn is in the picture; otherwise draw another frame.
    bool IsComplete() const { return m_isComplete; }

private:
    /// Triangles that shine alike.
    struct Surface {
        zarvex::zx3DQt::MeshBatch triangles;
        zarvex::zx3DQt::BGFXMaterial material;
        bool isTransparent;
    };

    /// A batch, and how many of the mesh's pieces it has.
    template<typename Batch>
    struct Fed {
        Batch batch;
        std::size_t pieceCount = 0;
    };

    void CreateSurfaces();
    template<typename Add>
    void Feed(std::size_t& pieceCount, Canvas const& canvas, Add add);
    void AddSurfaces(MeshFile::Piece const& piece);
    void AddNormals(MeshFile::Piece const& piece);

    template<typename Batch, typename Style>
    void DrawBatch(Canvas const& canvas, Batch& batch, Style const& style);
    void DrawSurfaces(Canvas const& canvas, zarvex::zx3DQt::BGFXLightingContext const& lights,
                      bool transparent);
    void DrawEdges(Canvas const& canvas);
    void DrawWires(Canvas const& canvas);
    void DrawVertices(Canvas const& canvas);

    MeshMaterial const& MaterialOf(MeshFile::Piece const& piece) const {
        return m_file->GetMaterials()[piece.material];
    }

    std::shared_ptr<MeshFile const> m_file;
    Box m_box;
    std::uint64_t m_triangleCount = 0;
    bool m_isComplete = false;

    std::vector<Surface> m_surfaces;
    std::vector<std::size_t> m_surfaceOf; ///< index of each material
    zarvex::zx3DQt::LineBatch m_lines;    ///< that the file has
    zarvex::zx3DQt::PointBatch m_points;  ///< likewise
    std::size_t m_pieceCount = 0;         ///< that these have

    Fed<zarvex::zx3DQt::LineBatch> m_edges;     ///< on surfaces
    Fed<zarvex::zx3DQt::LineBatch> m_wires;     ///< edges alone
    Fed<zarvex::zx3DQt::PointBatch> m_vertices; ///< vertices alone
    Fed<zarvex::zx3DQt::LineBatch> m_normals;
};

} // namespace viewer
