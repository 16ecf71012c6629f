// Areas within closed outlines.
#pragma once

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Color.h>
#include <zx3D/DataSpan.h>

#include <QVector3D>

#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

class BGFXViewContext;

/// Positions that are joined in their order, and the last to the first; world units. Fewer than three enclose
/// nothing.
using PolygonOutline = std::vector<QVector3D>;

/// What is inside of outlines that lie in each other, or cross each other or themselves.
enum class FillRule : std::uint8_t {
    EvenOdd, ///< what a way from outside crosses an odd number of times: outlines in others are holes
    NonZero, ///< what the outlines go round in sum: those in others are holes where they run the other way
};

/// Triangles that fill a polygon: no two overlap, and together they cover what is inside.
struct PolygonTriangles {
    std::vector<QVector3D> positions;   ///< those of the outlines, and where they cross
    std::vector<std::uint32_t> indices; ///< three by three, all turning the same way
};

/// Fills outlines of one plane, whatever its position in space, with triangles, to be kept and drawn often.
/// With n positions and k crossings it takes a time of about (n + k) log(n + k).
///
/// Outlines with a position that is not finite are refused with a warning ("polygon.not-finite"). Where
/// nothing is inside, the result is empty. From any thread; throws `std::bad_alloc`.
ZX3DQT_EXPORT PolygonTriangles TriangulatePolygon(zx3D::DataSpan<PolygonOutline const> outlines,
                                                  FillRule rule = FillRule::EvenOdd);

/// The same, drawn at once in one colour, without light, with the renderer's current model transform, like
/// the shapes. To draw a polygon in many frames, keep its triangles.
ZX3DQT_EXPORT void DrawPolygon(BGFXRenderer const& renderer, BGFXViewContext const& view,
                               zx3D::DataSpan<PolygonOutline const> outlines, zx3D::Color const& color,
                               BGFXRenderState state = BGFXRenderer::STATE_OPAQUE,
                               FillRule rule = FillRule::EvenOdd);

/// Draws triangles of a polygon in the same way.
ZX3DQT_EXPORT void DrawPolygon(BGFXRenderer const& renderer, BGFXViewContext const& view,
                               PolygonTriangles const& triangles, zx3D::Color const& color,
                               BGFXRenderState state = BGFXRenderer::STATE_OPAQUE);

} // namespace zarvex::zx3DQt
