// A mesh as it goes to the GPU: materials, and pieces that 16-bit indices reach.
#pragma once

#include "Box.h"

#include <zx3D/Vertex.h>

#include <QStringList>

#include <cmath>
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

/// The largest number of vertices in a piece. Index 65535 stays unused: to some GPUs it means "begin anew".
constexpr std::size_t kMaxPieceVertices = 65535;

/// The largest number of materials in a mesh: each counts among the users of the same uniforms.
constexpr std::size_t kMaxMaterials = 10'000;

/// Whether something can be drawn there: squares of distances are still far from what a float can hold. False
/// also for what is no number.
inline bool IsInReach(bx::Vec3 const& place) {
    constexpr float reach = 1e15f;
    return std::abs(place.x) < reach && std::abs(place.y) < reach && std::abs(place.z) < reach;
}

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
    QStringList notes; ///< on what could not be had; a sentence each
};

/// Says that a file which the mesh names is missing from the picture. `obstacle`: a sentence without its
/// stop.
inline QString NoteOn(QString const& file, QString const& obstacle) {
    return file + " is left out. " + obstacle;
}

} // namespace viewer
