// Splitting a line into stretches that are shaped in one go.
#pragma once

#include <hb.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace zarvex::zx3D {

class Font;

/// Consecutive characters of one direction, script and face. A tab is a run of its own.
struct TextRun {
    std::uint32_t start = 0; ///< first character, counted in code points from the line's start
    std::uint32_t length = 0;
    std::uint32_t face = 0; ///< number within the font
    hb_script_t script = HB_SCRIPT_INVALID;
    std::uint8_t level = 0; ///< of embedding: right to left when odd
    bool isTab = false;

    bool IsRightToLeft() const { return (level & 1) != 0; }
};

/// Splits lines; keeps its memory between them.
class TextRunSplitter {
public:
    /// The runs of one line in the order in which they stand, from left to right. Valid until the next call.
    std::vector<TextRun> const& Split(std::u32string_view line, Font& font);

    /// Whether the line that was split last reads from right to left as a whole.
    bool IsLineRightToLeft() const { return m_isLineRightToLeft; }

private:
    void FindLevels(std::u32string_view line);
    void FindScripts(std::u32string_view line);
    void FindFaces(std::u32string_view line, Font& font);
    void CollectRuns(std::u32string_view line);
    void OrderRuns();

    std::vector<std::uint32_t> m_bidiTypes;
    std::vector<std::uint32_t> m_bracketTypes;
    std::vector<std::int8_t> m_levels;
    std::vector<hb_script_t> m_scripts;
    std::vector<std::uint32_t> m_faces;
    std::vector<TextRun> m_runs;
    bool m_isLineRightToLeft = false;
};

} // namespace zarvex::zx3D
