// Meshes that stay on the GPU.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/DataSpan.h>

#include <bgfx/bgfx.h>
#include <bx/math.h>

#include <QColor>
#include <QMatrix4x4>
#include <QVector2D>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

class BGFXLightingContext;
class BGFXMaterial;
class BGFXRenderer;
class PickScene;

/// The vertices of a mesh: an array for each attribute, of one length or empty. A plain value that owns
/// nothing.
struct MeshVertices {
    zx3D::DataSpan<bx::Vec3 const> positions{};   ///< world units, relative to the batch's origin
    zx3D::DataSpan<bx::Vec3 const> normals{};     ///< of any length; without, surfaces are flat
    zx3D::DataSpan<std::uint32_t const> colors{}; ///< 0xRRGGBBAA, not premultiplied; without, all are white
    zx3D::DataSpan<QVector2D const>
        textureCoordinates{}; ///< (0, 0) to (1, 1) are the texture, first row first
};

/// One of the places where a mesh is drawn: 64 bytes on the GPU.
struct MeshInstance {
    /// The rows of the transform, of three rows and four columns: turns, scales and moves the mesh about the
    /// batch's origin.
    std::array<float, 12> rows{1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f};
    std::uint32_t rgba = 0xFFFFFFFF; ///< what the mesh's colours are multiplied by, 0xRRGGBBAA

    /// Where the mesh is, in its own colours.
    MeshInstance() = default;
    /// Of a matrix, whose last row does not count.
    explicit MeshInstance(QMatrix4x4 const& transform, std::uint32_t color = 0xFFFFFFFF) : rgba(color) {
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column)
                rows[static_cast<std::size_t>(4 * row + column)] = transform(row, column);
        }
    }
};

/// How a surface takes the light.
enum class MeshShading : std::uint8_t {
    Unlit, ///< it shows its colours
    Flat,  ///< each triangle is lit by its own direction
    Smooth ///< the normals are interpolated; as flat where there are none
};

/// How a mesh is drawn. A plain value, which owns nothing of what it names.
struct MeshStyle {
    MeshShading shading = MeshShading::Smooth; ///< of all triangles

    /// Of the front, in place of the vertices' colours.
    std::optional<QColor> color{};
    /// Of the back; without, as the front. The front is the side that shows a triangle's corners
    /// counter-clockwise in the picture.
    std::optional<QColor> backColor{};
    /// Multiplies the colours, where the mesh has texture coordinates. Sampled as its own flags say.
    bgfx::TextureHandle texture = BGFX_INVALID_HANDLE;

    /// Of these, those shine that are named "u_light0" to "u_light7"; they need no uniforms. Without any, the
    /// viewer carries one.
    BGFXLightingContext const* lights = nullptr;
    /// Multiplied by the colours, as the lighting program does; needs no uniforms. Without, the colours are
    /// the surface's, and there are no highlights.
    BGFXMaterial const* material = nullptr;

    /// `BGFXRenderer::STATE_OPAQUE` unless given, of triangles.
    std::optional<BGFXRenderState> state{};
};

/// A mesh that is handed over once and drawn in every frame for a few bgfx calls, once or in many places:
///
///     MeshBatch part;                                     // a member, not anew in every frame
///     part.Set({.positions = corners, .normals = normals}, triangles); // once
///     part.Draw(renderer, view, {.lights = &lights});     // in every frame
///
/// Light: as that of the renderer's lit triangles, both sides alike, seen from the view's camera. Only the
/// style's lights and material count, not those that were submitted.
///
/// Data: on the GPU 16 bytes a vertex, 8 more with normals, 8 more with texture coordinates, and 6 bytes a
/// triangle; vertices where two pieces of up to 65,536 meet are there twice. Until they are there, and
/// afterwards when the batch keeps its data, they take as much in the process, too; always, 16 bytes for each
/// run of vertices of a piece that follow each other in the mesh. What is new is uploaded by `Draw`, within
/// the renderer's budget (`BGFXRenderer::SetUploadBudget`); what is there by then is drawn. While
/// `IsUploaded` is false, ask for another frame.
///
/// Lifetime: may be made, filled and destroyed at any time, before `Init` and after `Shutdown`, too. With
/// `KeepData::Yes` it is drawn again after the next `Init`; otherwise it is empty then, with a warning at the
/// first `Draw`. It may be moved, not copied. Lights, material and texture are looked at in `Draw` only.
///
/// Refused, with a warning that counts them: triangles with an index beyond the vertices, or with a position
/// that is not finite, which are left out for good; attributes of another length than the positions, which
/// leaves the batch as it was. Thread: the GUI thread. Errors: `std::bad_alloc` leaves the batch empty; what
/// the GPU has no room for is left out, counted (`FrameStatistics`) and warned about, and tried again in the
/// next frame.
class ZX3DQT_EXPORT MeshBatch {
public:
    /// Whether the process keeps a copy of what is on the GPU.
    enum class KeepData : std::uint8_t {
        No, ///< what is on the GPU is nowhere else
        Yes ///< as many bytes, from which it is uploaded again
    };

    /// Without triangles.
    explicit MeshBatch(KeepData keepData = KeepData::No);
    ~MeshBatch();

    /// Takes over what the other has, which may only be destroyed or assigned to afterwards.
    /// @{
    MeshBatch(MeshBatch&& other) noexcept;
    MeshBatch& operator=(MeshBatch&& other) noexcept;
    /// @}

    /// The world position that the vertices' coordinates are relative to; at first (0, 0, 0). Takes effect
    /// with the next `Draw`, at no cost.
    /// @{
    void SetOrigin(WorldPosition const& origin);
    WorldPosition const& GetOrigin() const;
    /// @}

    /// Replaces the mesh. `indices` are taken three by three into the vertices. All is copied.
    void Set(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices);

    /// Adds a mesh, whose indices count from its own first vertex, behind what is there, which stays as it
    /// is: amortised, it costs what the new one does. Refused, with a warning, unless it has the attributes
    /// that the batch's vertices have.
    void Append(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices);

    /// Replaces the vertices from index `first` on, all in the same frame; the triangles stay. Those whose
    /// positions are not finite stay what they were. Refused as a whole, with a warning, where they would
    /// reach beyond the last vertex or have other attributes.
    void Update(std::uint64_t first, MeshVertices const& vertices);

    /// Without triangles, instances and memory.
    void Clear();

    /// Replaces the places where the mesh is drawn. Without any it is drawn once, where it is. One with
    /// numbers that are not finite is not drawn, and a warning counts them.
    void SetInstances(zx3D::DataSpan<MeshInstance const> instances);

    /// Replaces those from index `first` on, all in the same frame. Refused as a whole, with a warning, where
    /// they would reach beyond the last one.
    void UpdateInstances(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances);

    /// What was handed over; of triangles, what was not refused.
    /// @{
    std::uint64_t GetVertexCount() const;
    std::uint64_t GetTriangleCount() const;
    std::uint64_t GetInstanceCount() const;
    /// @}

    /// Whether all is on the GPU.
    bool IsUploaded() const;

    /// A box around all triangles in all their places, origin included and without a transform; empty without
    /// any. It grows with `Update` and `UpdateInstances`, and never shrinks. With instances it has room for
    /// the mesh in any direction about the batch's origin, at the greatest scale of all.
    std::optional<WorldBox> GetBoundingBox() const;

    /// Uploads what the frame has room for, and draws what is there. `transform` turns, scales and moves the
    /// mesh, with all its instances, about the batch's origin. Pieces of the mesh that are outside the view
    /// are not submitted, nor are instances, 1,024 together.
    void Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, MeshStyle const& style = {},
              QMatrix4x4 const& transform = {});

private:
    friend class PickScene; // draws and searches what it has

    class Data;
    std::shared_ptr<Data> m_data; ///< nobody else's for longer than a call
};

} // namespace zarvex::zx3DQt
