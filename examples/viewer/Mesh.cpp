// Static buffers made of the mapped file, and the draw calls on them.
#include "Mesh.h"

#include <QColor>

#include <algorithm>
#include <cmath>

namespace viewer {

using namespace zarvex;

namespace {

/// Of one buffer. bgfx counts bytes in 32 bits, and drivers prefer several buffers to a huge one.
constexpr std::uint64_t kMaxBytes = 1ull << 30;

/// More points than these are so dense that one pixel each is enough.
constexpr std::size_t kMostLargePoints = 400'000;
constexpr float kPointSize = 3.0f; // device-independent pixels

/// Of the lines that show normals, as a share of the mesh's size.
constexpr float kNormalLength = 0.012f;
constexpr zx3D::Color kNormalColor{0.36f, 0.78f, 1.0f, 1.0f};

/// Hands a part of the file's bytes to bgfx without copying it; the file stays mapped until bgfx is done.
template<typename T>
bgfx::Memory const* Refer(std::shared_ptr<MeshFile const> const& file, std::span<T const> array,
                          std::uint64_t first, std::uint64_t count) {
    auto const release = [](void*, void* owner) {
        delete static_cast<std::shared_ptr<MeshFile const>*>(owner);
    };
    return bgfx::makeRef(array.data() + first, static_cast<std::uint32_t>(count * sizeof(T)), release,
                         new std::shared_ptr<MeshFile const>(file));
}

QColor ToQColor(float const (&color)[4]) {
    return QColor::fromRgbF(color[0], color[1], color[2], color[3]);
}

zx3DQt::BGFXMaterial ToBGFXMaterial(MeshMaterial const& material) {
    // The lighting program reads the material of this name.
    zx3DQt::BGFXMaterial result("u_material", ToQColor(material.ambient), ToQColor(material.diffuse),
                                ToQColor(material.specular), ToQColor(material.emission), material.shininess);
    result.CreateUniforms();
    return result;
}

bool IsTransparent(MeshMaterial const& material) {
    return material.diffuse[3] < 1.0f;
}

/// Without a GPU's help a point has one colour: the vertex's in a light from above.
zx3D::Color PointColor(MeshVertex const& vertex, MeshMaterial const& material) {
    QVector3D const normal(vertex.normal.x, vertex.normal.y, vertex.normal.z);
    float const length = normal.length();
    QVector3D const light(-0.35f, 0.55f, 0.75f);
    float const cosine = length > 0.0f ? std::abs(QVector3D::dotProduct(normal / length, light)) : 1.0f;
    float const brightness = 0.35f + 0.65f * std::min(cosine, 1.0f);
    return {vertex.color.red * material.diffuse[0] * brightness,
            vertex.color.green * material.diffuse[1] * brightness,
            vertex.color.blue * material.diffuse[2] * brightness, 1.0f};
}

} // namespace

Mesh::Mesh(std::shared_ptr<MeshFile const> file)
    : m_file(std::move(file)),
      m_edgeMaterial("u_material", QColor(10, 12, 16), QColor(10, 12, 16), Qt::black, Qt::black, 1.0f),
      m_wireMaterial("u_material", Qt::white, Qt::white, Qt::black, QColor(24, 26, 30), 1.0f) {
    for (MeshFile::Piece const& piece : m_file->GetPieces()) {
        m_box.Extend(piece.box);
        m_triangleCount += piece.primitive == Primitive::Triangles ? piece.indices.count / 3 : 0;
    }
    for (MeshMaterial const& material : m_file->GetMaterials())
        m_materials.push_back(ToBGFXMaterial(material));
    m_edgeMaterial.CreateUniforms();
    m_wireMaterial.CreateUniforms();
    CreateChunks();
}

void Mesh::CreateChunks() {
    std::vector<MeshFile::Piece> const& pieces = m_file->GetPieces();
    std::size_t first = 0;
    while (first < pieces.size()) {
        std::uint64_t bytes = 0;
        std::size_t end = first;
        while (end < pieces.size() && (end == first || bytes < kMaxBytes)) {
            MeshFile::Piece const& piece = pieces[end++];
            bytes += piece.vertices.count * sizeof(MeshVertex) +
                     (piece.indices.count + piece.edges.count) * sizeof(std::uint16_t);
        }
        m_chunks.push_back(CreateChunk(first, end - first));
        first = end;
    }
}

Mesh::Chunk Mesh::CreateChunk(std::size_t firstPiece, std::size_t pieceCount) const {
    Chunk chunk{.firstPiece = firstPiece,
                .pieceCount = pieceCount,
                .vertices = {},
                .indices = {},
                .edges = {},
                .normals = {}};
    MeshFile::Piece const& first = m_file->GetPieces()[firstPiece];
    MeshFile::Piece const& last = m_file->GetPieces()[firstPiece + pieceCount - 1];
    auto const count = [](MeshFile::Range const& from, MeshFile::Range const& to) {
        return to.first + to.count - from.first;
    };
    chunk.vertices = zx3D::Owned(bgfx::createVertexBuffer(
        Refer(m_file, m_file->GetVertices(), first.vertices.first, count(first.vertices, last.vertices)),
        MeshVertex::Layout()));
    chunk.indices = zx3D::Owned(bgfx::createIndexBuffer(
        Refer(m_file, m_file->GetIndices(), first.indices.first, count(first.indices, last.indices))));
    if (std::uint64_t const edges = count(first.edges, last.edges); edges != 0)
        chunk.edges =
            zx3D::Owned(bgfx::createIndexBuffer(Refer(m_file, m_file->GetEdges(), first.edges.first, edges)));
    return chunk;
}

/// Calls `draw(chunk, piece)` with the piece's ranges as they are in the chunk's buffers.
template<typename Operation>
void Mesh::ForEachPiece(Operation draw) const {
    for (Chunk const& chunk : m_chunks) {
        MeshFile::Piece const* const first = &m_file->GetPieces()[chunk.firstPiece];
        for (std::size_t i = 0; i < chunk.pieceCount; ++i) {
            MeshFile::Piece piece = first[i];
            piece.vertices.first -= first->vertices.first;
            piece.indices.first -= first->indices.first;
            piece.edges.first -= first->edges.first;
            draw(chunk, piece);
        }
    }
}

namespace {

/// Submits a range of a chunk's indices with the lighting program.
void Submit(Canvas const& canvas, bgfx::ViewId view, bgfx::VertexBufferHandle vertices,
            bgfx::IndexBufferHandle indices, MeshFile::Range const& vertexRange,
            MeshFile::Range const& indexRange, std::uint64_t state) {
    bgfx::setVertexBuffer(0, vertices, static_cast<std::uint32_t>(vertexRange.first),
                          static_cast<std::uint32_t>(vertexRange.count));
    bgfx::setIndexBuffer(indices, static_cast<std::uint32_t>(indexRange.first),
                         static_cast<std::uint32_t>(indexRange.count));
    bgfx::setState(state | BGFX_STATE_MSAA); // OpenGL smooths edges only where it is asked to
    bgfx::submit(view, canvas.renderer.GetLightingProgram());
}

std::uint64_t StateOf(Primitive primitive) {
    switch (primitive) {
    case Primitive::Points:
        return zx3DQt::BGFXRenderer::STATE_POINTS;
    case Primitive::Lines:
        return zx3DQt::BGFXRenderer::STATE_LINES;
    case Primitive::Triangles:
        break;
    }
    return Canvas::kSolid;
}

} // namespace

void Mesh::Draw(Canvas const& canvas, MeshStyle style) {
    switch (style) {
    case MeshStyle::Shaded:
        DrawSurfaces(canvas, false);
        DrawSurfaces(canvas, true);
        break;
    case MeshStyle::ShadedWithEdges:
        DrawSurfaces(canvas, false);
        DrawEdges(canvas, m_edgeMaterial);
        DrawSurfaces(canvas, true);
        break;
    case MeshStyle::Wireframe:
        DrawEdges(canvas, m_wireMaterial);
        break;
    case MeshStyle::Points:
        DrawVertices(canvas);
        break;
    }
}

void Mesh::DrawSurfaces(Canvas const& canvas, bool transparent) {
    ForEachPiece([&](Chunk const& chunk, MeshFile::Piece const& piece) {
        if (IsTransparent(m_file->GetMaterials()[piece.material]) != transparent)
            return;
        std::uint64_t const state =
            transparent ? StateOf(piece.primitive) | BGFX_STATE_BLEND_ALPHA : StateOf(piece.primitive);
        m_materials[piece.material].Submit();
        Submit(canvas, canvas.surfaces, chunk.vertices.Get(), chunk.indices.Get(), piece.vertices,
               piece.indices, state);
    });
}

void Mesh::DrawEdges(Canvas const& canvas, zx3DQt::BGFXMaterial const& material) {
    ForEachPiece([&](Chunk const& chunk, MeshFile::Piece const& piece) {
        bool const hasEdges = piece.primitive == Primitive::Triangles;
        material.Submit();
        Submit(canvas, canvas.onSurfaces, chunk.vertices.Get(),
               (hasEdges ? chunk.edges : chunk.indices).Get(), piece.vertices,
               hasEdges ? piece.edges : piece.indices,
               hasEdges ? StateOf(Primitive::Lines) : StateOf(piece.primitive));
    });
}

void Mesh::DrawVertices(Canvas const& canvas) {
    if (CountVertices() > kMostLargePoints) {
        ForEachPiece([&](Chunk const& chunk, MeshFile::Piece const& piece) {
            m_materials[piece.material].Submit();
            bgfx::setVertexBuffer(0, chunk.vertices.Get(), static_cast<std::uint32_t>(piece.vertices.first),
                                  static_cast<std::uint32_t>(piece.vertices.count));
            bgfx::setState(StateOf(Primitive::Points));
            bgfx::submit(canvas.surfaces, canvas.renderer.GetLightingProgram());
        });
        return;
    }
    if (m_points.empty()) {
        for (MeshFile::Piece const& piece : m_file->GetPieces()) {
            MeshMaterial const& material = m_file->GetMaterials()[piece.material];
            for (MeshVertex const& vertex :
                 m_file->GetVertices().subspan(piece.vertices.first, piece.vertices.count))
                m_points.emplace_back(vertex.position, PointColor(vertex, material));
        }
    }
    canvas.renderer.DrawPoints(canvas.surfaces, m_points,
                               static_cast<std::uint16_t>(std::lround(kPointSize * canvas.pixelRatio)),
                               std::nullopt, Canvas::kSolid);
}

void Mesh::CreateNormals(Chunk& chunk) const {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    MeshFile::Range const& first = m_file->GetPieces()[chunk.firstPiece].vertices;
    MeshFile::Range const& last = m_file->GetPieces()[chunk.firstPiece + chunk.pieceCount - 1].vertices;
    auto const vertices = m_file->GetVertices().subspan(first.first, last.first + last.count - first.first);
    bgfx::Memory const* const memory =
        bgfx::alloc(static_cast<std::uint32_t>(2 * vertices.size() * sizeof(Vertex)));
    auto* end = reinterpret_cast<Vertex*>(memory->data);
    float const length = kNormalLength * 2.0f * m_box.Radius();
    for (MeshVertex const& vertex : vertices) {
        QVector3D const start(vertex.position.x, vertex.position.y, vertex.position.z);
        QVector3D const normal(vertex.normal.x, vertex.normal.y, vertex.normal.z);
        QVector3D const tip = start + length * normal.normalized();
        *end++ = Vertex(vertex.position, kNormalColor);
        *end++ = Vertex({tip.x(), tip.y(), tip.z()}, kNormalColor);
    }
    chunk.normals = zx3D::Owned(bgfx::createVertexBuffer(memory, Vertex::Layout()));
}

void Mesh::DrawNormals(Canvas const& canvas) {
    for (Chunk& chunk : m_chunks) {
        if (!chunk.normals)
            CreateNormals(chunk);
        bgfx::setVertexBuffer(0, chunk.normals.Get());
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_LINES | BGFX_STATE_MSAA);
        bgfx::submit(canvas.onSurfaces, canvas.renderer.GetBasicProgram());
    }
}

} // namespace viewer
