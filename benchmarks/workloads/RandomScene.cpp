// The random numbers and what is made of them. Every draw is a statement or an element of a braced list of
// its own: their order is part of the recipe.
#include "workloads/RandomScene.h"

namespace zarvex::benchmarks {

namespace {

constexpr bx::Vec3 kBoxLow{-4.5f, -2.5f, -1.0f};
constexpr bx::Vec3 kBoxHigh{4.5f, 2.5f, 1.0f};
constexpr bx::Vec3 kHalfLow{-0.08f, -0.08f, -0.08f};
constexpr bx::Vec3 kHalfHigh{0.08f, 0.08f, 0.08f};

} // namespace

std::uint32_t Random::Next() {
    m_state ^= m_state << 13;
    m_state ^= m_state >> 17;
    m_state ^= m_state << 5;
    return m_state;
}

float Random::Between(float low, float high) {
    return low + (high - low) * (static_cast<float>(Next() >> 8) / 16777216.0f);
}

bx::Vec3 Random::In(bx::Vec3 const& low, bx::Vec3 const& high) {
    return {Between(low.x, high.x), Between(low.y, high.y), Between(low.z, high.z)};
}

zx3D::Color Random::BrightColor() {
    auto const channel = [this] { return static_cast<float>(51 + (Next() >> 24) * 204 / 255) / 255.0f; };
    return {channel(), channel(), channel(), 1.0f};
}

char Random::HexDigit() {
    return "0123456789abcdef"[Next() >> 28];
}

std::vector<zx3D::Line> RandomSegments(std::uint32_t workload, std::size_t count) {
    Random random(workload);
    std::vector<zx3D::Line> lines(count);
    for (zx3D::Line& line : lines) {
        bx::Vec3 const center = random.In(kBoxLow, kBoxHigh);
        bx::Vec3 const half = random.In(kHalfLow, kHalfHigh);
        line = {bx::sub(center, half), bx::add(center, half), random.BrightColor()};
    }
    return lines;
}

std::vector<zx3DQt::LineSegment> KeptSegments(std::vector<zx3D::Line> const& lines) {
    std::vector<zx3DQt::LineSegment> segments;
    for (zx3D::Line const& line : lines) {
        std::uint32_t const rgba = line.color.ToRGBA();
        segments.push_back({{line.start, rgba}, {line.end, rgba}});
    }
    return segments;
}

std::vector<zx3D::Vertex::Pos3fColorRGBA> RandomPoints(std::uint32_t workload, std::size_t count) {
    Random random(workload);
    std::vector<zx3D::Vertex::Pos3fColorRGBA> points(count);
    for (zx3D::Vertex::Pos3fColorRGBA& point : points) {
        point.position = random.In(kBoxLow, kBoxHigh);
        point.color = random.BrightColor();
    }
    return points;
}

} // namespace zarvex::benchmarks
