// A cone as a fan around its tip and one around the centre of its base; with light, as facets of their own.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Shapes.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr float kFullTurn = 6.2831855f; // radians

/// With light: as many as the vertices that 16-bit indices can address make.
constexpr int kMostShadedSegments = 21845;

/// The coordinate axis that the direction has the least of; of equals, the first.
QVector3D LeastAxis(QVector3D const& direction) {
    float const x = std::abs(direction.x());
    float const y = std::abs(direction.y());
    float const z = std::abs(direction.z());
    if (x <= y && x <= z)
        return {1.0f, 0.0f, 0.0f};
    return y <= z ? QVector3D(0.0f, 1.0f, 0.0f) : QVector3D(0.0f, 0.0f, 1.0f);
}

QVector3D ToQt(bx::Vec3 const& vector) {
    return {vector.x, vector.y, vector.z};
}

Vertex ToVertex(QVector3D const& position, zx3D::Color const& color) {
    return {{position.x(), position.y(), position.z()}, color};
}

bool IsEmpty(double height, double radius, int segments) {
    bool const isThin = std::abs(radius) < std::numeric_limits<float>::epsilon();
    return isThin || std::isnan(height) || std::isnan(radius) || segments < 1;
}

/// From the centre of the base to its edge, in radii: u and w of the first and of a quarter turn later.
struct Ring {
    explicit Ring(QVector3D const& direction)
        : u(QVector3D::crossProduct(direction, LeastAxis(direction))),
          w(QVector3D::crossProduct(u, direction)) {}

    QVector3D At(int i, int segments) const {
        float const angle = static_cast<float>(i) * (kFullTurn / static_cast<float>(segments));
        return u * std::cos(angle) + w * std::sin(angle);
    }

    QVector3D u, w;
};

/// The tip, the base's centre, and the base's edge.
std::vector<Vertex> ConeVertices(QVector3D const& direction, QVector3D const& apex, float height,
                                 float radius, int segments, zx3D::Color const& color) {
    QVector3D const base = apex - direction * height;
    Ring const ring(direction);
    std::vector<Vertex> vertices;
    vertices.reserve(static_cast<std::size_t>(segments) + 2);
    vertices.push_back(ToVertex(apex, color));
    vertices.push_back(ToVertex(base, color));
    for (int i = 0; i < segments; ++i)
        vertices.push_back(ToVertex(base + radius * ring.At(i, segments), color));
    return vertices;
}

/// The side, then the base.
std::vector<std::uint16_t> ConeIndices(int segments) {
    constexpr std::uint16_t tip = 0;
    constexpr std::uint16_t baseCenter = 1;
    constexpr std::uint16_t firstOnEdge = 2;
    std::vector<std::uint16_t> indices(static_cast<std::size_t>(segments) * 6);
    std::uint16_t* side = indices.data();
    std::uint16_t* base = side + static_cast<std::size_t>(segments) * 3;
    for (int i = 0; i < segments; ++i) {
        auto const from = static_cast<std::uint16_t>(i + firstOnEdge);
        auto const to = i + 1 < segments ? static_cast<std::uint16_t>(from + 1) : firstOnEdge;
        for (std::uint16_t const index : {from, to, tip})
            *side++ = index;
        for (std::uint16_t const index : {from, baseCenter, to})
            *base++ = index;
    }
    return indices;
}

/// Towards the lamp, in the world: from the viewer's left shoulder. 0 for matrices without directions.
QVector3D DirectionToLamp(BGFXViewContext const& view) {
    QMatrix4x4 const worldToClip = view.GetProjectionMatrix() * view.GetViewMatrix();
    auto const direction = [&](int row) { return worldToClip.row(row).toVector3D(); };
    QVector3D const right = direction(0).normalized();
    QVector3D const up = direction(1).normalized();
    QVector3D toViewer = QVector3D::crossProduct(right, up).normalized();
    // Away from the viewer w grows in perspective, and depth in a parallel projection.
    QVector3D const away = direction(3).isNull() ? direction(2) : direction(3);
    if (QVector3D::dotProduct(toViewer, away) > 0.0f)
        toViewer = -toViewer;
    return (toViewer - 0.5f * right + 0.7f * up).normalized();
}

/// Colours by the light on a surface.
class Shading {
public:
    Shading(BGFXRenderer const& renderer, BGFXViewContext const& view, CameraLight const& light,
            zx3D::Color const& color)
        : m_normalMatrix(renderer.GetModelTransform().normalMatrix()),
          m_toLamp(DirectionToLamp(view)),
          m_ambient(light.ambient),
          m_color(color) {}

    zx3D::Color At(QVector3D const& normal) const {
        QVector3D world;
        for (int i = 0; i < 3; ++i)
            world[i] = m_normalMatrix(i, 0) * normal.x() + m_normalMatrix(i, 1) * normal.y() +
                       m_normalMatrix(i, 2) * normal.z();
        float const cosine = std::max(0.0f, QVector3D::dotProduct(world.normalized(), m_toLamp));
        float const brightness = m_ambient + (1.0f - m_ambient) * cosine;
        return {brightness * m_color.red, brightness * m_color.green, brightness * m_color.blue,
                m_color.alpha};
    }

private:
    QMatrix3x3 m_normalMatrix;
    QVector3D m_toLamp;
    float m_ambient;
    zx3D::Color m_color;
};

/// By segment, a corner of the side, the tip as the side's middle sees it, and a corner of the base; last,
/// the base's centre.
std::vector<Vertex> ShadedConeVertices(BGFXConeModel const& cone, Shading const& shading) {
    QVector3D const direction = ToQt(cone.direction);
    QVector3D const apex = ToQt(cone.apex);
    QVector3D const base = apex - direction * cone.height;
    Ring const ring(direction);
    zx3D::Color const baseColor = shading.At(-direction);
    // Perpendicular to the side, which runs from radius * outwards up to height * direction.
    auto const sideColor = [&](QVector3D const& outwards) {
        return shading.At(cone.height * direction.lengthSquared() * outwards +
                          cone.radius * outwards.lengthSquared() * direction);
    };
    std::vector<Vertex> vertices;
    vertices.reserve(3 * static_cast<std::size_t>(cone.segments) + 1);
    for (int i = 0; i < cone.segments; ++i) {
        QVector3D const outwards = ring.At(i, cone.segments);
        QVector3D const middle = ring.At(2 * i + 1, 2 * cone.segments);
        QVector3D const corner = base + cone.radius * outwards;
        vertices.push_back(ToVertex(corner, sideColor(outwards)));
        vertices.push_back(ToVertex(apex, sideColor(middle)));
        vertices.push_back(ToVertex(corner, baseColor));
    }
    vertices.push_back(ToVertex(base, baseColor));
    return vertices;
}

std::vector<std::uint16_t> ShadedConeIndices(int segments) {
    std::vector<std::uint16_t> indices;
    indices.reserve(static_cast<std::size_t>(segments) * 6);
    auto const baseCenter = static_cast<std::uint16_t>(3 * segments);
    for (int i = 0; i < segments; ++i) {
        auto const from = static_cast<std::uint16_t>(3 * i);
        auto const to = static_cast<std::uint16_t>(i + 1 < segments ? from + 3 : 0);
        auto const onBase = [](std::uint16_t corner) { return static_cast<std::uint16_t>(corner + 2); };
        auto const tip = static_cast<std::uint16_t>(from + 1);
        indices.insert(indices.end(), {from, to, tip, onBase(from), baseCenter, onBase(to)});
    }
    return indices;
}

} // namespace

void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view, QVector3D const& direction,
              QVector3D const& apex, double height, double radius, int segments, zx3D::Color const& color) {
    if (IsEmpty(height, radius, segments))
        return;
    std::vector<Vertex> const vertices = ConeVertices(direction, apex, static_cast<float>(height),
                                                      static_cast<float>(radius), segments, color);
    renderer.DrawTriangles(view, vertices, ConeIndices(segments));
}

void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view, BGFXConeModel const& model) {
    DrawCone(renderer, view, ToQt(model.direction), ToQt(model.apex), model.height, model.radius,
             model.segments, model.color);
}

void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view, BGFXConeModel const& model,
              CameraLight const& light) {
    if (IsEmpty(model.height, model.radius, model.segments))
        return;
    BGFXConeModel cone = model;
    cone.segments = std::min(cone.segments, kMostShadedSegments);
    std::vector<Vertex> const vertices = ShadedConeVertices(cone, Shading(renderer, view, light, cone.color));
    renderer.DrawTriangles(view, vertices, ShadedConeIndices(cone.segments));
}

} // namespace zarvex::zx3DQt
