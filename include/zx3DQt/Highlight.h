// Elements of a batch that stand out.
#pragma once

#include <zx3D/DataSpan.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// Elements that are drawn once more, over themselves, in a colour of their own: of a hit, `{.elements =
/// {&hit->what.element, 1}}`. Costs a draw call for each run of elements that follow each other. A plain
/// value, which views the indices in `Draw` only.
struct Highlight {
    zx3D::DataSpan<std::uint64_t const> elements{}; ///< indices; those beyond the last element count not
    std::uint32_t rgba = 0xFFA000FF;                ///< 0xRRGGBBAA, not premultiplied

    /// Calls `draw(first, count)` for each run of elements, of so many that there are.
    template<typename Draw>
    void ForEachRun(std::uint64_t total, Draw draw) const {
        std::uint64_t const count = elements.IsEmpty() ? 0 : elements.count;
        for (std::uint64_t i = 0; i < count;) {
            std::uint64_t const first = elements.data[i];
            std::uint64_t run = 1;
            while (i + run < count && elements.data[i + run] == first + run)
                ++run;
            if (first < total)
                draw(first, run < total - first ? run : total - first);
            i += run;
        }
    }
};

} // namespace zarvex::zx3DQt
