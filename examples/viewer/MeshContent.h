// A mesh as it goes to the GPU: materials, and pieces that 16-bit indices reach.
#pragma once

#include "Box.h"

#include <zx3D/Vertex.h>

#include <cstdint>
#include <vector>

namespace viewer {

/// A Blinn-Phong material. Colours are red, green, blue and, in `diffuse`, opacity. Aligned for what follows
/// it in a file.
struct alignas(8) MeshMaterial {
    float ambient[4] = {0.75f, 0.77f, 0.80f, 1.0f};
    float diffuse[4] = {0.75f, 0.77f, 0.80f, 1.0f};
    float specular[4] = {0.22f, 0.22f, 0.22f, 1.0f};
    float emission[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    float shininess = 32.0f;
};

enum class Primitive : std::uint32_t { Points = 1, Lines = 2, Triangles = 3 };

using MeshVertex = zarvex::zx3D::Vertex::Pos3fNormal3fColorRGBA;

/// Primitives of one kind and one material.
struct MeshPiece {
    std::uint32_t material = 0; ///< index into the mesh's materials
    Primitive primitive = Primitive::Triangles;
    Box box;
    std::vector<MeshVertex> vertices;
    std::vector<std::uint16_t> indices; ///< as many for each primitive as it has corners
    std::vector<std::uint16_t> edges;   ///< pairs: every edge of the triangles once
};

struct MeshContent {
    bool zIsUp = false; ///< as the file, or the custom of its format, has it
    std::vector<MeshMaterial> materials;
    std::vector<MeshPiece> pieces;
};

} // namespace viewer
