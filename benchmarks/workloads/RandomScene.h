// Random segments and points, the same in every program that follows the same recipe.
#pragma once

#include <zx3DQt/LineBatch.h>

#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::benchmarks {

/// xorshift32, with a seed of its own for each workload.
class Random {
public:
    explicit Random(std::uint32_t workload) : m_state(0x12345678 + workload) {}

    float Between(float low, float high);
    bx::Vec3 In(bx::Vec3 const& low, bx::Vec3 const& high);
    zx3D::Color BrightColor(); ///< three draws, 51 to 255 of 255, opaque
    char HexDigit();

private:
    std::uint32_t Next();

    std::uint32_t m_state;
};

/// Short segments in a box that nearly fills the view: centre, half the vector, colour.
std::vector<zx3D::Line> RandomSegments(std::uint32_t workload, std::size_t count);

/// The same for a batch.
std::vector<zx3DQt::LineSegment> KeptSegments(std::vector<zx3D::Line> const& lines);

/// Points in the same box: position, colour.
std::vector<zx3D::Vertex::Pos3fColorRGBA> RandomPoints(std::uint32_t workload, std::size_t count);

} // namespace zarvex::benchmarks
