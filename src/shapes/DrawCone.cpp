// A cone as a fan around its tip and one around the centre of its base.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Shapes.h>

#include <cmath>
#include <limits>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr float kFullTurn = 6.2831855f; // radians

/// The coordinate axis that the direction has the least of; of equals, the first.
QVector3D LeastAxis(QVector3D const& direction) {
    float const x = std::abs(direction.x());
    float const y = std::abs(direction.y());
    float const z = std::abs(direction.z());
    if (x <= y && x <= z)
        return {1.0f, 0.0f, 0.0f};
    return y <= z ? QVector3D(0.0f, 1.0f, 0.0f) : QVector3D(0.0f, 0.0f, 1.0f);
}

Vertex ToVertex(QVector3D const& position, zx3D::Color const& color) {
    return {{position.x(), position.y(), position.z()}, color};
}

/// The tip, the base's centre, and the base's edge.
std::vector<Vertex> ConeVertices(QVector3D const& direction, QVector3D const& apex, float height,
                                 float radius, int segments, zx3D::Color const& color) {
    QVector3D const base = apex - direction * height;
    QVector3D const u = QVector3D::crossProduct(direction, LeastAxis(direction));
    QVector3D const w = QVector3D::crossProduct(u, direction);
    std::vector<Vertex> vertices;
    vertices.reserve(static_cast<std::size_t>(segments) + 2);
    vertices.push_back(ToVertex(apex, color));
    vertices.push_back(ToVertex(base, color));
    float const step = kFullTurn / static_cast<float>(segments);
    for (int i = 0; i < segments; ++i) {
        float const angle = static_cast<float>(i) * step;
        vertices.push_back(ToVertex(base + radius * (u * std::cos(angle) + w * std::sin(angle)), color));
    }
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

} // namespace

void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view, QVector3D const& direction,
              QVector3D const& apex, double height, double radius, int segments, zx3D::Color const& color) {
    bool const isEmpty = std::abs(radius) < std::numeric_limits<float>::epsilon();
    if (isEmpty || std::isnan(height) || std::isnan(radius) || segments < 1)
        return;
    std::vector<Vertex> const vertices = ConeVertices(direction, apex, static_cast<float>(height),
                                                      static_cast<float>(radius), segments, color);
    renderer.DrawTriangles(view, vertices, ConeIndices(segments));
}

void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view, BGFXConeModel const& model) {
    auto const toQt = [](bx::Vec3 const& v) { return QVector3D(v.x, v.y, v.z); };
    DrawCone(renderer, view, toQt(model.direction), toQt(model.apex), model.height, model.radius,
             model.segments, model.color);
}

} // namespace zarvex::zx3DQt
