// What is at a place of the picture, of arrays that are drawn at once.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/PickHit.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/DataSpan.h>
#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

/// Which of the elements within the radius is meant.
enum class SearchOrder : std::uint8_t {
    Nearest, ///< the nearest in the picture; of several at the same distance, the one in front
    Foremost ///< the nearest to the viewer
};

/// How arrays are searched. A plain value.
struct SearchOptions {
    double radius = 4.0;                      ///< how far from the place is still at it, pixels
    double size = 1.0;                        ///< of points, or the width of lines, pixels
    QMatrix4x4 transform{};                   ///< that they are drawn with
    SearchOrder order = SearchOrder::Nearest; ///< which of several
};

// Searches through all elements, on the CPU, in double precision: for what the renderer's operations draw,
// with the arrays that they are given, relative to the view's origin. Places, rectangles and distances are
// pixels of the viewport, physical ones, as `BGFXViewContext::ComputeRay` has them. Only what lies between
// the near plane and the far plane is found; nothing hides anything, but at the same distance the foremost is
// found. The hit names no batch. bgfx must run. A million points take some tens of milliseconds.

/// Finds the element at a place. Points are squares, lines have butt ends. Indices of triangles are taken
/// three by three; those that reach beyond the vertices make none.
/// @{
ZX3DQT_EXPORT std::optional<PickHit> FindPoint(BGFXViewContext const& view, QPointF const& position,
                                               zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points,
                                               SearchOptions const& options = {});
ZX3DQT_EXPORT std::optional<PickHit> FindLine(BGFXViewContext const& view, QPointF const& position,
                                              zx3D::DataSpan<zx3D::Line const> lines,
                                              SearchOptions const& options = {});
ZX3DQT_EXPORT std::optional<PickHit> FindTriangle(BGFXViewContext const& view, QPointF const& position,
                                                  zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                                                  zx3D::DataSpan<std::uint16_t const> indices,
                                                  SearchOptions const& options = {});
ZX3DQT_EXPORT std::optional<PickHit>
FindTriangle(BGFXViewContext const& view, QPointF const& position,
             zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const> vertices,
             zx3D::DataSpan<std::uint16_t const> indices, SearchOptions const& options = {});
/// @}

/// Finds all elements of which any part is in a rectangle: their indices, ascending. Of the options, radius
/// and order do not count.
/// @{
ZX3DQT_EXPORT std::vector<std::uint64_t>
FindPointsIn(BGFXViewContext const& view, QRectF const& rect,
             zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points, SearchOptions const& options = {});
ZX3DQT_EXPORT std::vector<std::uint64_t> FindLinesIn(BGFXViewContext const& view, QRectF const& rect,
                                                     zx3D::DataSpan<zx3D::Line const> lines,
                                                     SearchOptions const& options = {});
ZX3DQT_EXPORT std::vector<std::uint64_t>
FindTrianglesIn(BGFXViewContext const& view, QRectF const& rect,
                zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                zx3D::DataSpan<std::uint16_t const> indices, SearchOptions const& options = {});
ZX3DQT_EXPORT std::vector<std::uint64_t>
FindTrianglesIn(BGFXViewContext const& view, QRectF const& rect,
                zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const> vertices,
                zx3D::DataSpan<std::uint16_t const> indices, SearchOptions const& options = {});
/// @}

} // namespace zarvex::zx3DQt
