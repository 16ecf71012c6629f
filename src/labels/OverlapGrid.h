// Which rectangles of a picture are taken.
#pragma once

#include <zx3D/Annotations.h>

#include <QRect>

#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

/// A rectangle of a picture, its length along a direction. Pixels, y down.
struct PictureBox {
    float x = 0.0f; ///< of its centre
    float y = 0.0f;
    float halfLength = 0.0f;
    float halfBreadth = 0.0f;
    zx3D::PictureDirection direction;

    /// How far it reaches from its centre to the right and down.
    float ReachX() const;
    float ReachY() const;
};

/// Whether two boxes have an area in common when one is `gap` larger on every side. Touching is none.
bool Overlap(PictureBox const& a, PictureBox const& b, float gap);

/// Boxes that do not overlap, found by the cells of a uniform grid over the viewport. What is beyond it
/// counts to the outer cells.
class OverlapGrid {
public:
    /// Without boxes.
    void Start(QRect const& viewport);

    /// Whether a box, larger by a gap on every side, overlaps none that was taken.
    bool IsFree(PictureBox const& box, float gap) const;
    void Take(PictureBox const& box);

private:
    /// Of about a label's size: few boxes to a cell, and few cells to a box.
    static constexpr int kCellWidth = 64;
    static constexpr int kCellHeight = 32;
    static constexpr std::int32_t kNone = -1;

    struct Entry {
        std::int32_t box;
        std::int32_t next; ///< of the same cell
    };
    struct Cells {
        int left, top, right, bottom; ///< the last ones included
    };

    Cells CellsOf(PictureBox const& box, float gap) const;

    QRect m_viewport;
    int m_columns = 1;
    int m_rows = 1;
    std::vector<std::int32_t> m_first; ///< entry of each cell
    std::vector<Entry> m_entries;
    std::vector<PictureBox> m_boxes;
};

} // namespace zarvex::zx3DQt
