// Curves and surfaces by their formulas.
#include "DemoGeometry.h"

#include <array>
#include <cmath>
#include <numbers>

namespace viewer {

using namespace zarvex;

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kTurn = 2.0f * kPi;

bx::Vec3 At(QVector2D const& stand, float x, float y, float z) {
    return {stand.x() + x, stand.y() + y, z};
}

/// On an upright board that faces those who come from the front and the right.
bx::Vec3 OnBoard(QVector2D const& stand, float along, float z) {
    constexpr float diagonal = 0.70710678f;
    return At(stand, diagonal * along, diagonal * along, z);
}

bx::Vec3 ToVec3(QVector3D const& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

/// Straight lines that make a curved surface: each joins two circles, turned against each other.
DemoGeometry::Lines MakeHyperboloid() {
    constexpr int count = 72;
    constexpr float radius = 1.3f;
    constexpr float height = 2.8f;
    DemoGeometry::Lines lines;
    for (int i = 0; i < count; ++i) {
        float const angle = kTurn * i / count;
        for (float const twist : {0.62f * kPi, -0.62f * kPi}) {
            lines.push_back({At(Stand::kThinLines, radius * std::cos(angle), radius * std::sin(angle), 0.05f),
                             At(Stand::kThinLines, radius * std::cos(angle + twist),
                                radius * std::sin(angle + twist), height),
                             DemoColor(0.5f - 0.5f * std::cos(angle))});
        }
    }
    return lines;
}

/// A rainbow whose bands are as wide as their numbers.
std::vector<DemoGeometry::Arch> MakeArches() {
    constexpr int segments = 64;
    std::vector<DemoGeometry::Arch> arches;
    for (int band = 0; band < 6; ++band) {
        DemoGeometry::Arch arch{.width = 1.0f + 1.5f * band, .lines = {}};
        float const radius = 0.55f + 0.05f * band * (band + 1.6f);
        auto const place = [&](int i) {
            float const angle = kPi * i / segments;
            return OnBoard(Stand::kWideLines, radius * std::cos(angle), radius * std::sin(angle));
        };
        for (int i = 0; i < segments; ++i)
            arch.lines.push_back({place(i), place(i + 1), DemoColor(1.0f - band / 5.0f)});
        arches.push_back(std::move(arch));
    }
    return arches;
}

/// A fan of ribs, each with a pattern of its own, every other one wide.
std::vector<DemoGeometry::StippledLine> MakeFan() {
    constexpr std::array<std::uint16_t, 6> patterns{0x5555, 0x1111, 0x0F0F, 0x3FFF, 0x18FF, 0x333F};
    constexpr int ribs = 12;
    std::vector<DemoGeometry::StippledLine> fan;
    for (int i = 0; i < ribs; ++i) {
        float const angle = kPi * (i + 0.5f) / ribs;
        bool const isWide = i % 2 == 1;
        bx::Vec3 const inner = OnBoard(Stand::kStipples, 0.3f * std::cos(angle), 0.3f * std::sin(angle));
        bx::Vec3 const outer = OnBoard(Stand::kStipples, 2.1f * std::cos(angle), 2.1f * std::sin(angle));
        fan.push_back({isWide ? 4.0f : 1.0f,
                       {patterns[static_cast<std::size_t>(i / 2)], static_cast<std::uint8_t>(isWide ? 2 : 1)},
                       {{inner, outer, DemoColor(i / (ribs - 1.0f))}}});
    }
    return fan;
}

/// Points of even density on a sphere: each is turned by the golden angle against the one before.
std::vector<DemoGeometry::Vertex> MakeSphere() {
    constexpr int count = 9000;
    constexpr float radius = 1.35f;
    std::vector<DemoGeometry::Vertex> points;
    for (int i = 0; i < count; ++i) {
        float const height = 2.0f * (i + 0.5f) / count - 1.0f;
        float const level = std::sqrt(1.0f - height * height);
        float const angle = 2.39996323f * i;
        points.emplace_back(At(Stand::kPoints, radius * level * std::cos(angle),
                               radius * level * std::sin(angle), radius * (1.0f + height) + 0.1f),
                            DemoColor(0.5f + 0.5f * height));
    }
    return points;
}

/// Larger and larger on the way up.
std::vector<DemoGeometry::Sprite> MakeSpiral() {
    constexpr int count = 44;
    std::vector<DemoGeometry::Sprite> sprites;
    for (int i = 0; i < count; ++i) {
        float const t = i / (count - 1.0f);
        float const angle = 2.5f * kTurn * t;
        float const radius = 1.45f - 0.9f * t;
        sprites.push_back(
            {2.0f + 12.0f * t,
             {At(Stand::kSprites, radius * std::cos(angle), radius * std::sin(angle), 0.15f + 2.5f * t),
              DemoColor(t)}});
    }
    return sprites;
}

/// The cube of all colours: red, green and blue grow along x, y and z.
DemoGeometry::Triangles<DemoGeometry::Vertex> MakeCube() {
    DemoGeometry::Triangles<DemoGeometry::Vertex> cube;
    for (int corner = 0; corner < 8; ++corner) {
        float const x = corner & 1 ? 1.0f : 0.0f;
        float const y = corner & 2 ? 1.0f : 0.0f;
        float const z = corner & 4 ? 1.0f : 0.0f;
        cube.vertices.emplace_back(
            At(Stand::kTriangles, 1.9f * x - 0.95f, 1.9f * y - 0.95f, 1.9f * z + 0.02f),
            zx3D::Color{0.08f + 0.92f * x, 0.08f + 0.92f * y, 0.08f + 0.92f * z, 1.0f});
    }
    cube.indices = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                    2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    return cube;
}

/// A trefoil knot; `u` counts turns along it.
QVector3D KnotCenter(float u) {
    float const around = 2.0f * kTurn * u;
    float const wound = 3.0f * kTurn * u;
    float const radius = 0.98f + 0.46f * std::cos(wound);
    return {radius * std::cos(around), radius * std::sin(around), 0.46f * std::sin(wound)};
}

DemoGeometry::Triangles<MeshVertex> MakeKnot() {
    constexpr int rings = 300;
    constexpr int sides = 28;
    DemoGeometry::Triangles<MeshVertex> knot;
    for (int ring = 0; ring < rings; ++ring) {
        float const u = static_cast<float>(ring) / rings;
        QVector3D const center = KnotCenter(u);
        QVector3D const along = (KnotCenter(u + 0.001f) - KnotCenter(u - 0.001f)).normalized();
        QVector3D const spoke(std::cos(2.0f * kTurn * u), std::sin(2.0f * kTurn * u), 0.0f);
        QVector3D const side = QVector3D::crossProduct(along, center - spoke).normalized();
        QVector3D const up = QVector3D::crossProduct(side, along);
        for (int i = 0; i < sides; ++i) {
            float const angle = kTurn * i / sides;
            QVector3D const normal = std::cos(angle) * side + std::sin(angle) * up;
            knot.vertices.emplace_back(ToVec3(center + 0.25f * normal), ToVec3(normal),
                                       zx3D::Color{1.0f, 1.0f, 1.0f, 1.0f});
            int const next = (ring + 1) % rings * sides;
            int const a = ring * sides + i;
            int const b = ring * sides + (i + 1) % sides;
            int const c = next + i;
            int const d = next + (i + 1) % sides;
            for (int const index : {a, b, c, b, d, c})
                knot.indices.push_back(static_cast<std::uint16_t>(index));
        }
    }
    return knot;
}

} // namespace

zx3D::Color DemoColor(float t) {
    constexpr std::array<std::array<float, 3>, 4> stops{
        {{0.28f, 0.56f, 0.98f}, {0.24f, 0.80f, 0.74f}, {0.98f, 0.80f, 0.36f}, {0.98f, 0.42f, 0.38f}}};
    float const place = std::clamp(t, 0.0f, 1.0f) * (stops.size() - 1);
    auto const from = std::min(static_cast<std::size_t>(place), stops.size() - 2);
    auto const channel = [&](std::size_t i) {
        return std::lerp(stops[from][i], stops[from + 1][i], place - static_cast<float>(from));
    };
    return {channel(0), channel(1), channel(2), 1.0f};
}

DemoGeometry::DemoGeometry()
    : hyperboloid(MakeHyperboloid()),
      arches(MakeArches()),
      fan(MakeFan()),
      sphere(MakeSphere()),
      spiral(MakeSpiral()),
      cube(MakeCube()),
      knot(MakeKnot()) {}

} // namespace viewer
