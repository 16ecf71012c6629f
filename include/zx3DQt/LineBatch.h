// Lines that stay on the GPU.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/Highlight.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/SizeUnit.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/DataSpan.h>
#include <zx3D/Line.h>

#include <bx/math.h>

#include <QMatrix4x4>

#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

class BGFXRenderer;
class PickScene;

/// An end of a segment or a vertex of a polyline, with a colour of its own: 16 bytes.
struct LineVertex {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< world units, relative to the batch's origin
    std::uint32_t rgba = 0xFFFFFFFF;     ///< 0xRRGGBBAA, not premultiplied, as `zx3D::Color::ToRGBA` gives it
};

/// A line of its own between two ends, whose colours blend into each other along it: 32 bytes.
struct LineSegment {
    LineVertex start; ///< where the stipple begins
    LineVertex end;   ///< the other end
};

/// Whether a polyline comes back to where it began.
enum class PolylineEnds : std::uint8_t {
    Open,  ///< it has two ends
    Closed ///< its last vertex is joined to its first one; needs three vertices, otherwise it is open
};

/// A line through vertices, in their order. Like a span, it views them and copies nothing.
struct Polyline {
    zx3D::DataSpan<LineVertex const> vertices; ///< at least two, or nothing is drawn of it
    PolylineEnds ends = PolylineEnds::Open;    ///< open, or a loop
};

/// How the segments of a polyline meet, of a width above one pixel.
enum class LineJoin : std::uint8_t {
    Miter, ///< pointed, up to the style's miter limit; bevelled beyond it
    Round, ///< rounded
    Bevel, ///< cut off straight
};

/// How a line ends, of a width above one pixel. Where the picture cuts a line off there is no cap.
enum class LineCap : std::uint8_t {
    Butt,   ///< cut off at its end
    Square, ///< half the width farther
    Round,  ///< rounded, half the width farther
};

/// How the lines of a batch are drawn. A plain value.
struct LineStyle {
    float width = 1.0f;                    ///< of all lines; 1 unless it is above 0
    SizeUnit widthUnit = SizeUnit::Pixels; ///< of the width. Without smooth edges no line is below a pixel
    LineJoin join = LineJoin::Miter;       ///< of polylines
    /// Miters are at most so many times as long, from their tip to the inner corner, as the line is wide: 4
    /// bevels corners of less than 29 degrees.
    float miterLimit = 4.0f;
    LineCap cap = LineCap::Butt; ///< of open ends
    /// Counted in pixels of the target, from a segment's start, or along a whole polyline from its first
    /// vertex; solid by default. A factor of 0 is 1. Without compute shaders (`BGFX_CAPS_COMPUTE`) it begins
    /// anew at each vertex.
    zx3D::LineStipplePattern stipple{};
    /// Edges and ends fade out over one pixel, by alpha: the lines are blended, so draw them after what is
    /// behind them. Lines below a pixel are fainter instead of thinner. Targets of several samples are smooth
    /// without.
    bool smoothEdges = false;
    /// How much nearer to the viewer than they are the lines count, so that those on a surface are not cut by
    /// it: so many times what a pixel at their place is long, in world units, and as many times 1/65,536 of
    /// the depth buffer's range. 1 is enough for most edges of meshes; negative is farther away.
    float depthOffset = 0.0f;
    /// Of triangles. `BGFXRenderer::STATE_OPAQUE` unless given, with smooth edges `STATE_TRANSPARENT` that
    /// leaves the depth as it is.
    std::optional<BGFXRenderState> state{};
    /// Segments, or whole polylines, in another colour: solid, and a pixel's length nearer to the viewer.
    Highlight highlight{};
};

/// Lines that are handed over once and drawn in every frame for a few bgfx calls, however many they are:
///
///     LineBatch edges;                                        // a member, not anew in every frame
///     edges.Set(segments);                                    // once
///     edges.Draw(renderer, view, {.width = 3, .smoothEdges = true}); // in every frame
///
/// Data: segments, 32 bytes each on the GPU; or polylines, 16 bytes a vertex and 16 more for each, 96 for a
/// closed one, and in the process 8 bytes for each; in textures with up to a texel row more. Until they are
/// there, and afterwards when the batch keeps its data, they take as much in the process, too. What is new is
/// uploaded by `Draw`, within the renderer's budget (`BGFXRenderer::SetUploadBudget`); what is there by then
/// is drawn. While `IsUploaded` is false, ask for another frame.
///
/// A pixel is drawn once by a segment and by what joins it to the next, so that translucent lines have no
/// darker corners. Where lines cross themselves or others, or turn more tightly than they are wide, it is
/// drawn more often.
///
/// Lifetime: may be made, filled and destroyed at any time, before `Init` and after `Shutdown`, too. With
/// `KeepData::Yes` it is drawn again after the next `Init`; otherwise it is empty then, with a warning at the
/// first `Draw`. It may be moved, not copied.
///
/// Positions that are not finite are refused: a segment with one is not drawn, and a polyline is interrupted
/// there; indices stay, and a warning counts them. Thread: the GUI thread. Errors: `std::bad_alloc` leaves
/// the batch as it was, in `Set` empty; what the GPU has no room for is left out, counted (`FrameStatistics`)
/// and warned about, and tried again in the next frame.
class ZX3DQT_EXPORT LineBatch {
public:
    /// Whether the process keeps a copy of what is on the GPU.
    enum class KeepData : std::uint8_t {
        No, ///< what is on the GPU is nowhere else
        Yes ///< as many bytes, from which it is uploaded again
    };

    /// Without lines.
    explicit LineBatch(KeepData keepData = KeepData::No);
    ~LineBatch();

    /// Takes over what the other has, which may only be destroyed or assigned to afterwards.
    /// @{
    LineBatch(LineBatch&& other) noexcept;
    LineBatch& operator=(LineBatch&& other) noexcept;
    /// @}

    /// The world position that the lines' coordinates are relative to; at first (0, 0, 0). Takes effect with
    /// the next `Draw`, at no cost.
    /// @{
    void SetOrigin(WorldPosition const& origin);
    WorldPosition const& GetOrigin() const;
    /// @}

    /// Replaces all lines. They are copied.
    /// @{
    void Set(zx3D::DataSpan<LineSegment const> segments);
    void Set(zx3D::DataSpan<Polyline const> polylines);
    /// @}

    /// Adds lines behind those that are there, which stay where they are: amortised, it costs what the new
    /// ones do. A batch has segments or polylines: the others are refused with a warning.
    /// @{
    void Append(zx3D::DataSpan<LineSegment const> segments);
    void Append(zx3D::DataSpan<Polyline const> polylines);
    /// @}

    /// Replaces the segments from index `first` on, all in the same frame. Refused as a whole, with a
    /// warning, where they would reach beyond the last one or the batch has polylines.
    void Update(std::uint64_t first, zx3D::DataSpan<LineSegment const> segments);

    /// Replaces the vertices of a polyline from its vertex `first` on, all in the same frame. Refused as a
    /// whole, with a warning, where there is no such polyline, or they would reach beyond its last vertex, or
    /// the batch has segments.
    void Update(std::uint64_t polyline, std::uint64_t first, zx3D::DataSpan<LineVertex const> vertices);

    /// Without lines, and without memory.
    void Clear();

    /// All segments or polylines, and those that are on the GPU as a whole: the first ones.
    /// @{
    std::uint64_t GetCount() const;
    std::uint64_t GetUploadedCount() const;
    bool IsUploaded() const { return GetUploadedCount() == GetCount(); }
    /// @}

    /// The box around all finite positions, origin included and without a transform; empty without any. It
    /// grows with `Update`, and never shrinks.
    std::optional<WorldBox> GetBoundingBox() const;

    /// Uploads what the frame has room for, and draws what is there. `transform` turns, scales and moves the
    /// lines about the batch's origin. Pieces of 262,144 segments, or vertices of polylines, that are outside
    /// the view are not submitted.
    void Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, LineStyle const& style = {},
              QMatrix4x4 const& transform = {});

private:
    friend class PickScene; // draws and searches what it has

    class Data;
    std::shared_ptr<Data> m_data; ///< nobody else's for longer than a call
};

} // namespace zarvex::zx3DQt
