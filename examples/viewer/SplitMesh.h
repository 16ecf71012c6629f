// Cutting a mesh of any size into pieces that 16-bit indices reach.
#pragma once

#include "MeshContent.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace viewer {

/// Splits primitives of `cornerCount` corners each (1 to 3), `indices` into `vertices`. Keeps the order of
/// the primitives; a vertex that several pieces use is in each of them. Primitives with an index beyond the
/// vertices, or with a corner at no place or beyond 1e15, are left out. The pieces have boxes and edges, and
/// material 0.
std::vector<MeshPiece> SplitMesh(std::span<MeshVertex const> vertices, std::span<std::uint32_t const> indices,
                                 std::size_t cornerCount, std::size_t maxPieceVertices = kMaxPieceVertices);

/// Every edge of a list of triangles once, as pairs of indices.
std::vector<std::uint16_t> FindEdges(std::span<std::uint16_t const> triangles);

} // namespace viewer
