// Data and styles of any kind.
#include "Batches.h"

#include "HostileData.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/BGFXPointLightSource.h>
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/MeshEdges.h>

#include <bit>
#include <limits>
#include <utility>

namespace zarvex::fuzz {

namespace {

using namespace zx3DQt;

/// Sizes of what is drawn; the larger, the slower where pixels are drawn in software.
float Size(Random& random) {
    return random.OneIn(16) ? Number(random) * 1000.0f : static_cast<float>(random.Between(-1, 12)) / 2.0f;
}

std::vector<ColoredPoint> ColoredPoints(Random& random) {
    std::vector<ColoredPoint> points(Count(random));
    for (ColoredPoint& point : points)
        point = {Position(random), static_cast<std::uint32_t>(random.NewSeed())};
    return points;
}

std::vector<ScalarPoint> ScalarPoints(Random& random) {
    std::vector<ScalarPoint> points(Count(random));
    for (ScalarPoint& point : points)
        point = {Position(random), std::bit_cast<float>(static_cast<std::uint32_t>(random.NewSeed()))};
    return points;
}

/// Mostly one of `count` things, or just beyond; now and then far beyond.
std::uint64_t Index(Random& random, std::uint64_t count) {
    return random.OneIn(8) ? std::numeric_limits<std::uint64_t>::max() - random.Below(50)
                           : random.Below(count + 3);
}

template<typename Batch, typename Element>
void HandOver(Random& random, Batch& batch, std::vector<Element> const& elements) {
    switch (random.Below(4)) {
    case 0:
        return batch.Set(Span(random, elements));
    case 1:
        return batch.Update(Index(random, batch.GetCount()), Span(random, elements));
    default:
        return batch.Append(Span(random, elements));
    }
}

/// Now and then several at one place.
std::vector<LineVertex> LineVertices(Random& random) {
    std::vector<LineVertex> vertices(Count(random));
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        bool const isRepeated = i > 0 && random.OneIn(8);
        vertices[i] = {isRepeated ? vertices[i - 1].position : Position(random),
                       static_cast<std::uint32_t>(random.NewSeed())};
    }
    return vertices;
}

std::vector<LineSegment> Segments(Random& random) {
    std::vector<LineVertex> const vertices = LineVertices(random);
    std::vector<LineSegment> segments;
    for (std::size_t i = 1; i < vertices.size(); i += 2)
        segments.push_back({vertices[i - 1], vertices[i]});
    return segments;
}

void HandOverPolylines(Random& random, LineBatch& batch) {
    std::vector<std::vector<LineVertex>> vertices(random.Below(6));
    std::vector<Polyline> polylines;
    for (std::vector<LineVertex>& ofOne : vertices) {
        ofOne = LineVertices(random);
        polylines.push_back(
            {Span(random, ofOne), random.OneIn(2) ? PolylineEnds::Closed : PolylineEnds::Open});
    }
    switch (random.Below(4)) {
    case 0:
        return batch.Set(Span(random, polylines));
    case 1: {
        std::vector<LineVertex> const replaced = LineVertices(random);
        return batch.Update(Index(random, batch.GetCount()), Index(random, 10), Span(random, replaced));
    }
    default:
        return batch.Append(Span(random, polylines));
    }
}

/// Arrays of one length, mostly.
class Mesh {
public:
    explicit Mesh(Random& random) : m_positions(Count(random), {0.0f, 0.0f, 0.0f}) {
        std::size_t const count = m_positions.size();
        for (bx::Vec3& position : m_positions)
            position = Position(random);
        m_normals.resize(Attribute(random, count), {0.0f, 0.0f, 1.0f});
        for (bx::Vec3& normal : m_normals)
            normal = Position(random);
        m_colors.resize(Attribute(random, count), static_cast<std::uint32_t>(random.NewSeed()));
        m_textureCoordinates.resize(Attribute(random, count), {Number(random), Number(random)});
        m_indices.resize(random.Below(3 * count + 3));
        for (std::uint32_t& index : m_indices)
            index = static_cast<std::uint32_t>(Index(random, random.OneIn(64) ? count + 10 : count));
    }

    MeshVertices Vertices(Random& random) const {
        return {Span(random, m_positions), Span(random, m_normals), Span(random, m_colors),
                Span(random, m_textureCoordinates)};
    }
    zx3D::DataSpan<std::uint32_t const> Indices(Random& random) const { return Span(random, m_indices); }

private:
    /// How many of an attribute there are beside so many positions.
    static std::size_t Attribute(Random& random, std::size_t count) {
        if (random.OneIn(16))
            return random.Below(count + 3);
        return random.OneIn(2) ? count : 0;
    }

    std::vector<bx::Vec3> m_positions;
    std::vector<bx::Vec3> m_normals;
    std::vector<std::uint32_t> m_colors;
    std::vector<QVector2D> m_textureCoordinates;
    std::vector<std::uint32_t> m_indices;
};

std::vector<MeshInstance> Instances(Random& random) {
    std::vector<MeshInstance> instances;
    for (std::uint64_t count = random.Below(20); count > 0; --count)
        instances.emplace_back(Matrix(random), static_cast<std::uint32_t>(random.NewSeed()));
    return instances;
}

void AddLights(Random& random, BGFXLightingContext& lights) {
    for (std::uint64_t i = random.Below(10); i > 0; --i) {
        QVector4D const place(QPosition(random), random.OneIn(2) ? 1.0f : 0.0f);
        lights.Add(BGFXPointLightSource("u_light" + std::to_string(i - 1), place, RgbColor(random),
                                        RgbColor(random), RgbColor(random)));
    }
}

ColorMap Map(Random& random) {
    switch (random.Below(3)) {
    case 0:
        return ColorMap::Viridis();
    case 1:
        return ColorMap::CoolWarm();
    default:
        return {};
    }
}

PointStyle StyleOfPoints(Random& random) {
    PointStyle style;
    style.shape = static_cast<PointShape>(random.Below(3));
    style.size = Size(random);
    style.sizeUnit = random.OneIn(2) ? SizeUnit::World : SizeUnit::Pixels;
    style.colorMap = Map(random);
    style.leastValue = Number(random);
    style.greatestValue = Number(random);
    if (random.OneIn(4))
        style.state = BGFXRenderer::STATE_TRANSPARENT;
    return style;
}

/// Without what it would only name.
MeshStyle StyleOfMeshes(Random& random) {
    MeshStyle style;
    style.shading = static_cast<MeshShading>(random.Below(3));
    if (random.OneIn(2))
        style.color = RgbColor(random);
    if (random.OneIn(2))
        style.backColor = RgbColor(random);
    if (random.OneIn(4))
        style.state = BGFXRenderer::STATE_TRANSPARENT;
    return style;
}

LineStyle StyleOfLines(Random& random) {
    LineStyle style;
    style.width = Size(random);
    style.widthUnit = random.OneIn(2) ? SizeUnit::World : SizeUnit::Pixels;
    style.join = static_cast<LineJoin>(random.Below(3));
    style.miterLimit = 4.0f * Number(random);
    style.cap = static_cast<LineCap>(random.Below(3));
    style.stipple = Stipple(random).value_or(zx3D::LineStipplePattern());
    style.smoothEdges = random.OneIn(2);
    style.depthOffset = random.OneIn(2) ? Number(random) : 0.0f;
    if (random.OneIn(4))
        style.state = BGFXRenderer::STATE_TRANSPARENT;
    return style;
}

} // namespace

void Batches::Change(Random& random) {
    switch (random.Below(3)) {
    case 0:
        return ChangePoints(random);
    case 1:
        return ChangeLines(random);
    default:
        return ChangeMeshes(random);
    }
}

void Batches::ChangeMeshes(Random& random) {
    MeshBatch& batch = m_meshes[random.Below(m_meshes.size())];
    Mesh const mesh(random);
    std::vector<MeshInstance> const instances = Instances(random);
    switch (random.Below(12)) {
    case 0:
        return batch.Clear();
    case 1:
        return batch.SetOrigin(Place(random));
    case 2:
        return std::swap(m_meshes[0], m_meshes[1]);
    case 3:
        return batch.SetInstances(Span(random, instances));
    case 4:
        return batch.UpdateInstances(Index(random, batch.GetInstanceCount()), Span(random, instances));
    case 5:
        return m_lines[0].Set(
            FindMeshEdges(mesh.Vertices(random), mesh.Indices(random), 90.0f * Number(random)));
    case 6:
    case 7:
        return batch.Update(Index(random, batch.GetVertexCount()), mesh.Vertices(random));
    case 8:
    case 9:
        return batch.Append(mesh.Vertices(random), mesh.Indices(random));
    default:
        return batch.Set(mesh.Vertices(random), mesh.Indices(random));
    }
}

void Batches::ChangeLines(Random& random) {
    LineBatch& batch = m_lines[random.Below(m_lines.size())];
    switch (random.Below(8)) {
    case 0:
        return batch.Clear();
    case 1:
        return batch.SetOrigin(Place(random));
    case 2:
        return std::swap(m_lines[0], m_lines[1]);
    case 3:
    case 4:
        return HandOver(random, batch, Segments(random));
    default:
        return HandOverPolylines(random, batch);
    }
}

void Batches::ChangePoints(Random& random) {
    PointBatch& batch = m_points[random.Below(m_points.size())];
    switch (random.Below(8)) {
    case 0:
        return batch.Clear();
    case 1:
        return batch.SetOrigin(Place(random));
    case 2:
        return std::swap(m_points[0], m_points[1]);
    case 3:
        return HandOver(random, batch, ScalarPoints(random));
    default:
        return HandOver(random, batch, ColoredPoints(random));
    }
}

void Batches::Draw(Random& random, BGFXRenderer const& renderer, BGFXViewContext const& view,
                   bgfx::TextureHandle texture) {
    QMatrix4x4 const transform = random.OneIn(2) ? Matrix(random) : QMatrix4x4();
    if (random.OneIn(3)) {
        BGFXLightingContext lights;
        AddLights(random, lights);
        BGFXMaterial const material("u_material", RgbColor(random), RgbColor(random), RgbColor(random),
                                    RgbColor(random), Number(random));
        MeshStyle style = StyleOfMeshes(random);
        style.lights = random.OneIn(2) ? &lights : nullptr;
        style.material = random.OneIn(2) ? &material : nullptr;
        style.texture = texture;
        MeshBatch& meshes = m_meshes[random.Below(m_meshes.size())];
        meshes.Draw(renderer, view, style, transform);
        static_cast<void>(meshes.GetBoundingBox());
        return;
    }
    if (random.OneIn(2)) {
        LineBatch& lines = m_lines[random.Below(m_lines.size())];
        lines.Draw(renderer, view, StyleOfLines(random), transform);
        static_cast<void>(lines.GetBoundingBox());
        static_cast<void>(lines.GetUploadedCount());
        return;
    }
    PointBatch& points = m_points[random.Below(m_points.size())];
    points.Draw(renderer, view, StyleOfPoints(random), transform);
    static_cast<void>(points.GetBoundingBox());
}

} // namespace zarvex::fuzz
