// Batches made of the mapped file.
#include "Mesh.h"

#include <QColor>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace viewer {

using namespace zarvex;

namespace {

/// More points than these are so dense that one pixel each is enough.
constexpr std::size_t kMostLargePoints = 400'000;
constexpr float kPointSize = 3.0f; // device-independent pixels

/// Of the lines that show normals, as a share of the mesh's size.
constexpr float kNormalLength = 0.012f;
constexpr std::uint32_t kNormalColor = 0x5CC7FFFF;

constexpr std::uint32_t kEdgeColor = 0x0A0C10FF; // on surfaces

QColor ToQColor(float const (&color)[4]) {
    return QColor::fromRgbF(color[0], color[1], color[2], color[3]);
}

bool IsTransparent(MeshMaterial const& material) {
    return material.diffuse[3] < 1.0f;
}

/// Whether a material has one colour for all light from around: then its vertices may have it.
bool HasOneColor(MeshMaterial const& material) {
    return std::equal(material.ambient, material.ambient + 3, material.diffuse);
}

/// A material for batches, without uniforms.
zx3DQt::BGFXMaterial ToBGFXMaterial(MeshMaterial const& material) {
    QColor white = Qt::white;
    white.setAlphaF(material.diffuse[3]);
    return {"",
            HasOneColor(material) ? Qt::white : ToQColor(material.ambient),
            HasOneColor(material) ? white : ToQColor(material.diffuse),
            ToQColor(material.specular),
            ToQColor(material.emission),
            material.shininess};
}

/// What materials must have in common to share a batch: parts have thousands of colours, but few kinds of
/// shine.
using Shine = std::array<float, 14>;

Shine ShineOf(MeshMaterial const& material) {
    Shine shine{material.shininess, material.diffuse[3]};
    auto end = std::copy_n(material.specular, 3, shine.begin() + 2);
    end = std::copy_n(material.emission, 3, end);
    if (!HasOneColor(material))
        std::copy_n(material.diffuse, 3, std::copy_n(material.ambient, 3, end));
    return shine;
}

/// Of a vertex on a surface.
zx3D::Color SurfaceColor(MeshVertex const& vertex, MeshMaterial const& material) {
    if (!HasOneColor(material))
        return vertex.color;
    return {vertex.color.red * material.diffuse[0], vertex.color.green * material.diffuse[1],
            vertex.color.blue * material.diffuse[2], vertex.color.alpha};
}

/// Without a surface around it a vertex has one colour: its own in a light from above.
std::uint32_t ColorOf(MeshVertex const& vertex, MeshMaterial const& material) {
    QVector3D const normal(vertex.normal.x, vertex.normal.y, vertex.normal.z);
    float const length = normal.length();
    QVector3D const light(-0.35f, 0.55f, 0.75f);
    float const cosine = length > 0.0f ? std::abs(QVector3D::dotProduct(normal / length, light)) : 1.0f;
    float const brightness = 0.35f + 0.65f * std::min(cosine, 1.0f);
    return zx3D::Color{vertex.color.red * material.diffuse[0] * brightness,
                       vertex.color.green * material.diffuse[1] * brightness,
                       vertex.color.blue * material.diffuse[2] * brightness, 1.0f}
        .ToRGBA();
}

/// Adds a piece's triangles. A batch has an array for each attribute.
void AddTriangles(zx3DQt::MeshBatch& batch, std::span<MeshVertex const> vertices,
                  std::span<std::uint16_t const> indices, MeshMaterial const& material) {
    std::vector<bx::Vec3> positions;
    std::vector<bx::Vec3> normals;
    std::vector<std::uint32_t> colors;
    for (MeshVertex const& vertex : vertices) {
        positions.push_back(vertex.position);
        normals.push_back(vertex.normal);
        colors.push_back(SurfaceColor(vertex, material).ToRGBA());
    }
    batch.Append({.positions = positions, .normals = normals, .colors = colors},
                 std::vector<std::uint32_t>(indices.begin(), indices.end()));
}

/// Of pairs of indices, in the colours that `color(vertex)` gives.
template<typename Color>
void AddSegments(zx3DQt::LineBatch& batch, std::span<MeshVertex const> vertices,
                 std::span<std::uint16_t const> pairs, Color color) {
    auto const end = [&](std::uint16_t index) {
        return zx3DQt::LineVertex{vertices[index].position, color(vertices[index])};
    };
    std::vector<zx3DQt::LineSegment> segments;
    for (std::size_t i = 0; i + 2 <= pairs.size(); i += 2)
        segments.push_back({end(pairs[i]), end(pairs[i + 1])});
    batch.Append(segments);
}

void AddPoints(zx3DQt::PointBatch& batch, std::span<MeshVertex const> vertices,
               MeshMaterial const& material) {
    std::vector<zx3DQt::ColoredPoint> points;
    for (MeshVertex const& vertex : vertices)
        points.push_back({vertex.position, ColorOf(vertex, material)});
    batch.Append(points);
}

template<typename T>
std::span<T const> PartOf(std::span<T const> array, MeshFile::Range const& range) {
    return array.subspan(range.first, range.count);
}

} // namespace

Mesh::Mesh(std::shared_ptr<MeshFile const> file) : m_file(std::move(file)) {
    for (MeshFile::Piece const& piece : m_file->GetPieces()) {
        m_box.Extend(piece.box);
        m_triangleCount += piece.primitive == Primitive::Triangles ? piece.indices.count / 3 : 0;
    }
    CreateSurfaces();
}

void Mesh::CreateSurfaces() {
    std::map<Shine, std::size_t> surfaces;
    for (MeshMaterial const& material : m_file->GetMaterials()) {
        auto const [place, isNew] = surfaces.try_emplace(ShineOf(material), m_surfaces.size());
        m_surfaceOf.push_back(place->second);
        if (isNew)
            m_surfaces.push_back({zx3DQt::MeshBatch(), ToBGFXMaterial(material), IsTransparent(material)});
    }
}

/// Adds the pieces that a batch does not have yet, for as long as there is time, but one in any case.
template<typename Add>
void Mesh::Feed(std::size_t& pieceCount, Canvas const& canvas, Add add) {
    std::vector<MeshFile::Piece> const& pieces = m_file->GetPieces();
    while (pieceCount < pieces.size()) {
        add(pieces[pieceCount++]);
        if (canvas.deadline.hasExpired())
            break;
    }
    m_isComplete = m_isComplete && pieceCount == pieces.size();
}

void Mesh::AddSurfaces(MeshFile::Piece const& piece) {
    MeshMaterial const& material = MaterialOf(piece);
    auto const vertices = PartOf(m_file->GetVertices(), piece.vertices);
    auto const indices = PartOf(m_file->GetIndices(), piece.indices);
    switch (piece.primitive) {
    case Primitive::Triangles:
        AddTriangles(m_surfaces[m_surfaceOf[piece.material]].triangles, vertices, indices, material);
        break;
    case Primitive::Lines:
        AddSegments(m_lines, vertices, indices,
                    [&](MeshVertex const& vertex) { return ColorOf(vertex, material); });
        break;
    case Primitive::Points:
        AddPoints(m_points, vertices, material);
        break;
    }
}

void Mesh::AddNormals(MeshFile::Piece const& piece) {
    float const length = kNormalLength * 2.0f * m_box.Radius();
    std::vector<zx3DQt::LineSegment> normals;
    for (MeshVertex const& vertex : PartOf(m_file->GetVertices(), piece.vertices)) {
        QVector3D const normal(vertex.normal.x, vertex.normal.y, vertex.normal.z);
        QVector3D const offset = length * normal.normalized();
        bx::Vec3 const tip(vertex.position.x + offset.x(), vertex.position.y + offset.y(),
                           vertex.position.z + offset.z());
        normals.push_back({{vertex.position, kNormalColor}, {tip, kNormalColor}});
    }
    m_normals.batch.Append(normals);
}

void Mesh::Draw(Canvas const& canvas, zx3DQt::BGFXLightingContext const& lights, MeshStyle style) {
    m_isComplete = true;
    switch (style) {
    case MeshStyle::Shaded:
        DrawSurfaces(canvas, lights, false);
        DrawSurfaces(canvas, lights, true);
        break;
    case MeshStyle::ShadedWithEdges:
        DrawSurfaces(canvas, lights, false);
        DrawEdges(canvas);
        DrawSurfaces(canvas, lights, true);
        break;
    case MeshStyle::Wireframe:
        DrawWires(canvas);
        break;
    case MeshStyle::Points:
        DrawVertices(canvas);
        break;
    }
}

template<typename Batch, typename Style>
void Mesh::DrawBatch(Canvas const& canvas, Batch& batch, Style const& style) {
    batch.Draw(canvas.renderer, canvas.surfaces, style);
    m_isComplete = m_isComplete && batch.IsUploaded();
}

void Mesh::DrawSurfaces(Canvas const& canvas, zx3DQt::BGFXLightingContext const& lights, bool transparent) {
    Feed(m_pieceCount, canvas, [&](MeshFile::Piece const& piece) { AddSurfaces(piece); });
    for (Surface& surface : m_surfaces) {
        zx3DQt::MeshStyle const style{.lights = &lights,
                                      .material = &surface.material,
                                      .state = transparent ? zx3DQt::BGFXRenderer::STATE_TRANSPARENT
                                                           : Canvas::kSolid};
        if (surface.isTransparent == transparent)
            DrawBatch(canvas, surface.triangles, style);
    }
    if (!transparent) {
        DrawBatch(canvas, m_lines, zx3DQt::LineStyle{.width = canvas.pixelRatio});
        DrawBatch(canvas, m_points, zx3DQt::PointStyle{.size = canvas.pixelRatio});
    }
}

void Mesh::DrawEdges(Canvas const& canvas) {
    Feed(m_edges.pieceCount, canvas, [&](MeshFile::Piece const& piece) {
        AddSegments(m_edges.batch, PartOf(m_file->GetVertices(), piece.vertices),
                    PartOf(m_file->GetEdges(), piece.edges), [](MeshVertex const&) { return kEdgeColor; });
    });
    DrawBatch(canvas, m_edges.batch, zx3DQt::LineStyle{.width = canvas.pixelRatio, .depthOffset = 1.0f});
}

void Mesh::DrawWires(Canvas const& canvas) {
    Feed(m_wires.pieceCount, canvas, [&](MeshFile::Piece const& piece) {
        if (piece.primitive == Primitive::Points)
            return;
        bool const hasEdges = piece.primitive == Primitive::Triangles;
        AddSegments(m_wires.batch, PartOf(m_file->GetVertices(), piece.vertices),
                    hasEdges ? PartOf(m_file->GetEdges(), piece.edges)
                             : PartOf(m_file->GetIndices(), piece.indices),
                    [&](MeshVertex const& vertex) { return ColorOf(vertex, MaterialOf(piece)); });
    });
    DrawBatch(canvas, m_wires.batch, zx3DQt::LineStyle{.width = canvas.pixelRatio});
}

void Mesh::DrawVertices(Canvas const& canvas) {
    Feed(m_vertices.pieceCount, canvas, [&](MeshFile::Piece const& piece) {
        AddPoints(m_vertices.batch, PartOf(m_file->GetVertices(), piece.vertices), MaterialOf(piece));
    });
    bool const isDense = CountVertices() > kMostLargePoints;
    DrawBatch(canvas, m_vertices.batch,
              zx3DQt::PointStyle{.size = isDense ? 1.0f : std::round(kPointSize * canvas.pixelRatio)});
}

void Mesh::DrawNormals(Canvas const& canvas) {
    Feed(m_normals.pieceCount, canvas, [&](MeshFile::Piece const& piece) { AddNormals(piece); });
    DrawBatch(canvas, m_normals.batch, zx3DQt::LineStyle{.width = canvas.pixelRatio, .depthOffset = 1.0f});
}

} // namespace viewer
