// From UTF-8 to glyphs with places.
#pragma once

#include "LibraryOwners.h"
#include "ShapedText.h"
#include "TextRuns.h"

#include <string>
#include <string_view>

namespace zarvex::zx3D {

class Font;

/// Lays out texts; keeps its memory between them.
class TextShaper {
public:
    TextShaper();

    ShapedText Shape(std::string_view utf8, Font& font);

private:
    /// A run's glyphs as places relative to where the run begins.
    struct RunExtent {
        std::uint32_t firstGlyph = 0;
        std::uint32_t glyphCount = 0;
        std::int64_t width = 0;
    };

    void DecodeLines(std::string_view utf8);
    void ShapeLine(std::u32string_view line, std::int64_t baseline, Font& font, ShapedText& text);
    RunExtent ShapeRun(std::u32string_view line, TextRun const& run, std::int64_t baseline, Font const& font,
                       ShapedText& text);
    void FitTabs(std::vector<TextRun> const& runs, Font const& font);

    HarfBuzzBufferOwner m_buffer;
    TextRunSplitter m_splitter;
    std::u32string m_codePoints;
    std::vector<RunExtent> m_extents;
};

} // namespace zarvex::zx3D
