// Many texts at places in the world.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Annotations.h>
#include <zx3D/Color.h>
#include <zx3D/DataSpan.h>
#include <zx3D/TextHandles.h>

#include <bx/math.h>

#include <QFlags>
#include <QMatrix4x4>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

class BGFXRenderer;

/// A text at a place.
struct Label {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< world units, relative to the batch's origin
    QString text;                        ///< an empty one is not drawn
    float priority = 0.0f;               ///< of two labels without room for both, the greater one is shown
    std::optional<std::uint32_t> rgba{}; ///< 0xRRGGBBAA, not premultiplied; absent, the style's colour
    /// A direction in the world that the text follows in the picture, either way round, so that it is never
    /// upside down; its depths are those along the direction. Zero, or one that the camera looks along: the
    /// text is horizontal.
    bx::Vec3 direction{0.0f, 0.0f, 0.0f};
};

/// Whether labels may lie on each other.
enum class LabelOverlap : std::uint8_t {
    Avoided, ///< those that find no room are hidden
    Allowed, ///< all are drawn, those of greater priority over the others
};

/// How the labels of a batch are drawn. A plain value. Pixels are physical ones of the target.
struct LabelStyle {
    zx3D::FontHandle font{};                   ///< of all labels; without one, nothing is drawn
    zx3D::Color color{1.0f, 1.0f, 1.0f, 1.0f}; ///< of labels without one of their own
    QFlags<Qt::AlignmentFlag> alignment =
        Qt::AlignCenter;      ///< of the box beside the place, as of `RenderText`
    QPointF offset{0.0, 0.0}; ///< how far the box is moved, pixels: along the text, and down
    zx3D::AnnotationDepth depth = zx3D::AnnotationDepth::Ignored; ///< whether what is in front hides labels
    /// How much nearer to the viewer than their places labels count, where depth is tested: so many times
    /// what a pixel there is long. About a text's height keeps surfaces that carry labels from cutting into
    /// them.
    float depthOffset = 16.0f;
    std::optional<zx3D::Color> boxColor{};    ///< of what is behind the text; absent, nothing
    float padding = 2.0f;                     ///< of the box around the text, whole pixels, drawn or not
    std::optional<zx3D::Color> leaderColor{}; ///< of lines from places to boxes that are moved away from them
    float leaderWidth = 1.0f;                 ///< pixels, at least 1
    LabelOverlap overlap = LabelOverlap::Avoided; ///< of the boxes, within the batch
    /// How much room a label that was hidden by others has to find around its box before it is shown again,
    /// pixels: what keeps labels from flickering.
    float gap = 8.0f;
    /// How much greater the priority of a hidden label has to be than that of one that is shown, to take its
    /// place. Among equals, what is shown stays.
    float priorityLead = 0.1f;
};

/// A label as it was drawn.
struct DrawnLabel {
    std::uint64_t index = 0; ///< in the batch
    QPointF center;          ///< of its box, pixels of the target, y down
    QSizeF size;             ///< of its box, along the text and across it, pixels
    double angle = 0.0;      ///< of its text, anticlockwise as it is seen, degrees, -90 to 90
};

/// Labels that are handed over once and drawn in every frame, kept from lying on each other:
///
///     LabelBatch names;                                        // a member, not anew in every frame
///     names.Set(labels);                                       // once
///     names.Draw(renderer, view, {.font = font, .offset = {0, -12}}); // in every frame
///
/// Shown are labels whose places are in the view; by priority, as far as there is room. They stay while the
/// camera moves: a label gives way only to one that it really touches and whose priority is greater, or that
/// was shown before, and comes back when there is room to spare. Each view of each renderer has its own.
///
/// Upright labels are at whole pixels; those that follow a direction are where they are, interpolated.
///
/// Data: in the process only, some 500 bytes a label and 70 for each of its glyphs. What is shown is written
/// into the frame's transient vertices, 96 bytes for each glyph, box and leader line; where that is full, the
/// labels of least priority are left out, counted (`FrameStatistics`) and warned about. A label is laid out
/// when it first comes into view.
///
/// Lifetime: may be made, filled and destroyed at any time, and survives `Shutdown` and `Init`. It may be
/// moved, not copied.
///
/// Positions and directions that are not finite are refused: the label keeps its index and is not drawn, and
/// a warning counts them. A priority that is not a number counts as the least. Thread: the GUI thread.
/// Errors: `std::bad_alloc` leaves the batch as it was, in `Set` empty, in `Update` with some labels
/// replaced.
class ZX3DQT_EXPORT LabelBatch {
public:
    /// Without labels.
    LabelBatch();
    ~LabelBatch();

    /// Takes over what the other has, which may only be destroyed or assigned to afterwards.
    /// @{
    LabelBatch(LabelBatch&& other) noexcept;
    LabelBatch& operator=(LabelBatch&& other) noexcept;
    /// @}

    /// The world position that the labels' coordinates are relative to; at first (0, 0, 0). Takes effect with
    /// the next `Draw`, at no cost.
    /// @{
    void SetOrigin(WorldPosition const& origin);
    WorldPosition const& GetOrigin() const;
    /// @}

    /// Replaces all labels. They are copied. None counts as shown before.
    void Set(zx3D::DataSpan<Label const> labels);

    /// Adds labels behind those that are there.
    void Append(zx3D::DataSpan<Label const> labels);

    /// Replaces the labels from index `first` on; those that are shown keep their claim. A text that stays
    /// the same is not laid out again. Refused as a whole, with a warning, where they would reach beyond the
    /// last label.
    void Update(std::uint64_t first, zx3D::DataSpan<Label const> labels);

    /// Without labels, and without memory.
    void Clear();

    /// All labels.
    std::uint64_t GetCount() const;

    /// The box around all finite positions, origin included and without a transform; empty without any.
    std::optional<WorldBox> GetBoundingBox() const;

    /// Chooses what is shown, and draws it into the view, which has the viewport and the matrices that are
    /// drawn with. `transform` turns, scales and moves places and directions about the batch's origin.
    void Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, LabelStyle const& style,
              QMatrix4x4 const& transform = {});

    /// What the last `Draw` into this view showed, the greatest priorities first; what depth hides is among
    /// it. Good until the next call that is not const.
    zx3D::DataSpan<DrawnLabel const> GetDrawnLabels(BGFXRenderer const& renderer,
                                                    BGFXViewContext const& view) const;

private:
    class Data;
    std::unique_ptr<Data> m_data;
};

} // namespace zarvex::zx3DQt
