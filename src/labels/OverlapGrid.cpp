// Boxes against those in the same cells; turned ones by their separating axes.
#include "OverlapGrid.h"

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

constexpr int kMaxCells = 2048; // each way; beyond lies what no target is large enough for

bool IsUpright(PictureBox const& box) {
    return box.direction.y == 0.0f;
}

/// Whether an axis along `box` separates it from another.
bool IsSeparatedAlong(PictureBox const& box, PictureBox const& other, float gap) {
    float const x = other.x - box.x;
    float const y = other.y - box.y;
    float const dx = box.direction.x;
    float const dy = box.direction.y;
    float const along = std::abs(x * dx + y * dy);
    float const across = std::abs(y * dx - x * dy);
    float const cosine = std::abs(dx * other.direction.x + dy * other.direction.y);
    float const sine = std::abs(dx * other.direction.y - dy * other.direction.x);
    return along >= box.halfLength + other.halfLength * cosine + other.halfBreadth * sine + gap ||
           across >= box.halfBreadth + other.halfLength * sine + other.halfBreadth * cosine + gap;
}

} // namespace

float PictureBox::ReachX() const {
    return halfLength * std::abs(direction.x) + halfBreadth * std::abs(direction.y);
}

float PictureBox::ReachY() const {
    return halfLength * std::abs(direction.y) + halfBreadth * std::abs(direction.x);
}

bool Overlap(PictureBox const& a, PictureBox const& b, float gap) {
    if (IsSeparatedAlong(a, b, gap))
        return false;
    return (IsUpright(a) && IsUpright(b)) || !IsSeparatedAlong(b, a, gap);
}

void OverlapGrid::Start(QRect const& viewport) {
    m_viewport = viewport;
    m_columns = std::clamp(viewport.width() / kCellWidth, 0, kMaxCells) + 1;
    m_rows = std::clamp(viewport.height() / kCellHeight, 0, kMaxCells) + 1;
    m_first.assign(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows), kNone);
    m_entries.clear();
    m_boxes.clear();
}

OverlapGrid::Cells OverlapGrid::CellsOf(PictureBox const& box, float gap) const {
    auto const cell = [](float place, int begin, int size, int count) {
        float const index = std::floor((place - static_cast<float>(begin)) / static_cast<float>(size));
        return static_cast<int>(std::clamp(index, 0.0f, static_cast<float>(count - 1)));
    };
    float const reachX = box.ReachX() + gap;
    float const reachY = box.ReachY() + gap;
    return {cell(box.x - reachX, m_viewport.x(), kCellWidth, m_columns),
            cell(box.y - reachY, m_viewport.y(), kCellHeight, m_rows),
            cell(box.x + reachX, m_viewport.x(), kCellWidth, m_columns),
            cell(box.y + reachY, m_viewport.y(), kCellHeight, m_rows)};
}

bool OverlapGrid::IsFree(PictureBox const& box, float gap) const {
    Cells const cells = CellsOf(box, gap);
    for (int row = cells.top; row <= cells.bottom; ++row) {
        for (int column = cells.left; column <= cells.right; ++column) {
            std::int32_t entry = m_first[static_cast<std::size_t>(row * m_columns + column)];
            for (; entry != kNone; entry = m_entries[static_cast<std::size_t>(entry)].next) {
                auto const taken = static_cast<std::size_t>(m_entries[static_cast<std::size_t>(entry)].box);
                if (Overlap(box, m_boxes[taken], gap))
                    return false;
            }
        }
    }
    return true;
}

void OverlapGrid::Take(PictureBox const& box) {
    auto const index = static_cast<std::int32_t>(m_boxes.size());
    m_boxes.push_back(box);
    Cells const cells = CellsOf(box, 0.0f);
    for (int row = cells.top; row <= cells.bottom; ++row) {
        for (int column = cells.left; column <= cells.right; ++column) {
            std::int32_t& first = m_first[static_cast<std::size_t>(row * m_columns + column)];
            m_entries.push_back({index, first});
            first = static_cast<std::int32_t>(m_entries.size() - 1);
        }
    }
}

} // namespace zarvex::zx3DQt
