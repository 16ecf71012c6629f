// A finely tessellated sphere.
#pragma once

#include <zx3D/Color.h>
#include <zx3D/Vertex.h>

#include <cstdint>
#include <vector>

namespace zarvex::testing {

/// As much of a mesh as 16-bit indices can address.
struct MeshPart {
    std::vector<zx3D::Vertex::Pos3fNormal3fColorRGBA> vertices;
    std::vector<std::uint16_t> indices;
};

/// The sphere of radius 1 around the origin in one colour: a cube of six parts of `steps` by `steps` squares
/// each, blown up. A square's sides are about as long as a quarter of the circumference over `steps`.
std::vector<MeshPart> CreateSphereMesh(int steps, zx3D::Color const& color);

} // namespace zarvex::testing
