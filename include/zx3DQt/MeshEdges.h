// The edges of a mesh, to be drawn over its faces.
#pragma once

#include <zx3DQt/LineBatch.h>
#include <zx3DQt/MeshBatch.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/DataSpan.h>

#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

/// The edges at which a mesh bends by an angle or more, for a `LineBatch`:
///
///     edges.Set(FindMeshEdges({.positions = corners}, triangles, 30.0f));
///     ...
///     part.Draw(renderer, view);
///     edges.Draw(renderer, view, {.width = 2.0f, .depthOffset = 1.0f});
///
/// `degrees` is the angle between two triangles' directions; at 0, all edges are returned. Those of a single
/// triangle, or of more than two, are always among them. Corners are the same where their positions are
/// equal, whatever their other attributes; which way round triangles are does not matter. Each edge comes
/// once, in the colour `rgba`, 0xRRGGBBAA. Triangles that a `MeshBatch` refuses have no edges, and a last one
/// of fewer than three indices has none. Takes O(n log n). Thread: any. Errors: `std::bad_alloc`.
ZX3DQT_EXPORT std::vector<LineSegment> FindMeshEdges(MeshVertices const& vertices,
                                                     zx3D::DataSpan<std::uint32_t const> indices,
                                                     float degrees, std::uint32_t rgba = 0x000000FF);

} // namespace zarvex::zx3DQt
