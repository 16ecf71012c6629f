// Points that stay on the GPU.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/ColorMap.h>
#include <zx3DQt/Highlight.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/SizeUnit.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/DataSpan.h>

#include <bx/math.h>

#include <QMatrix4x4>

#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

class BGFXRenderer;
class PickScene;

/// A point with a colour of its own: 16 bytes.
struct ColoredPoint {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< world units, relative to the batch's origin
    std::uint32_t rgba = 0xFFFFFFFF;     ///< 0xRRGGBBAA, not premultiplied, as `zx3D::Color::ToRGBA` gives it
};

/// A point with a number that a colour map gives the colour of: 16 bytes.
struct ScalarPoint {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< world units, relative to the batch's origin
    float value = 0.0f;                  ///< one that is not a number has the colour of the least
};

/// What a point looks like. In targets of several samples, outlines are smooth; those of discs and balls
/// where the state does not blend.
enum class PointShape : std::uint8_t {
    Square, ///< parallel to the picture's edges
    Disc,   ///< round and flat
    Ball,   ///< round, shaded from the viewer, and with the depth of a ball: balls cut into each other
};

/// How the points of a batch are drawn. A plain value.
struct PointStyle {
    PointShape shape = PointShape::Square;  ///< of all points
    float size = 1.0f;                      ///< diameter or edge; up to 1 pixel, a point is one pixel
    SizeUnit sizeUnit = SizeUnit::Pixels;   ///< of the size
    ColorMap colorMap{};                    ///< for points with numbers
    float leastValue = 0.0f;                ///< the number that has the map's first colour
    float greatestValue = 1.0f;             ///< the number that has its last one; may be less than the least
    std::optional<BGFXRenderState> state{}; ///< `BGFXRenderer::STATE_OPAQUE` unless given, of triangles
    Highlight highlight{};                  ///< points in another colour; outlines are not smooth
};

/// Points that are handed over once and drawn in every frame for a few bgfx calls, however many they are:
///
///     PointBatch cloud;                       // a member, not anew in every frame
///     cloud.Set(points);                      // once
///     cloud.Draw(renderer, view, {.size = 3}); // in every frame
///
/// Data: 16 bytes a point on the GPU, in textures with up to a texel row more. Until a point is there, and
/// afterwards when the batch keeps its data, it takes 16 bytes in the process, too. What is new is uploaded
/// by `Draw`, within the renderer's budget (`BGFXRenderer::SetUploadBudget`); what is there by then is drawn.
/// While `IsUploaded` is false, ask for another frame.
///
/// Lifetime: may be made, filled and destroyed at any time, before `Init` and after `Shutdown`, too. With
/// `KeepData::Yes` it is drawn again after the next `Init`; otherwise it is empty then, with a warning at the
/// first `Draw`. It may be moved, not copied.
///
/// Positions that are not finite are refused: the point keeps its index and is not drawn, and a warning
/// counts them. Thread: the GUI thread. Errors: `std::bad_alloc` leaves the batch as it was, in `Set` empty;
/// what the GPU has no room for is left out, counted (`FrameStatistics`) and warned about, and tried again in
/// the next frame.
class ZX3DQT_EXPORT PointBatch {
public:
    /// Whether the process keeps a copy of what is on the GPU.
    enum class KeepData : std::uint8_t {
        No, ///< what is on the GPU is nowhere else
        Yes ///< 16 bytes a point, from which it is uploaded again
    };

    /// Without points.
    explicit PointBatch(KeepData keepData = KeepData::No);
    ~PointBatch();

    /// Takes over what the other has, which may only be destroyed or assigned to afterwards.
    /// @{
    PointBatch(PointBatch&& other) noexcept;
    PointBatch& operator=(PointBatch&& other) noexcept;
    /// @}

    /// The world position that the points' coordinates are relative to; at first (0, 0, 0). Takes effect with
    /// the next `Draw`, at no cost.
    /// @{
    void SetOrigin(WorldPosition const& origin);
    WorldPosition const& GetOrigin() const;
    /// @}

    /// Replaces all points. They are copied.
    /// @{
    void Set(zx3D::DataSpan<ColoredPoint const> points);
    void Set(zx3D::DataSpan<ScalarPoint const> points);
    /// @}

    /// Adds points behind those that are there, which stay where they are: amortised, it costs what the new
    /// ones do. A batch has points of one kind: the others are refused with a warning.
    /// @{
    void Append(zx3D::DataSpan<ColoredPoint const> points);
    void Append(zx3D::DataSpan<ScalarPoint const> points);
    /// @}

    /// Replaces the points from index `first` on, all in the same frame. Refused as a whole, with a warning,
    /// where they would reach beyond the last point or are of the other kind.
    /// @{
    void Update(std::uint64_t first, zx3D::DataSpan<ColoredPoint const> points);
    void Update(std::uint64_t first, zx3D::DataSpan<ScalarPoint const> points);
    /// @}

    /// Without points, and without memory.
    void Clear();

    /// All points, and those that are on the GPU: the first ones.
    /// @{
    std::uint64_t GetCount() const;
    std::uint64_t GetUploadedCount() const;
    bool IsUploaded() const { return GetUploadedCount() == GetCount(); }
    /// @}

    /// The box around all finite positions, origin included and without a transform; empty without any. It
    /// grows with `Update`, and never shrinks.
    std::optional<WorldBox> GetBoundingBox() const;

    /// Uploads what the frame has room for, and draws what is there. `transform` turns, scales and moves the
    /// points about the batch's origin. Pieces of 262,144 points that are outside the view are not submitted.
    void Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, PointStyle const& style = {},
              QMatrix4x4 const& transform = {});

private:
    friend class PickScene; // draws and searches what it has

    class Data;
    std::shared_ptr<Data> m_data; ///< nobody else's for longer than a call
};

} // namespace zarvex::zx3DQt
