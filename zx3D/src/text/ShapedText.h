// A text as glyphs with places.
#pragma once

#include <cstdint>
#include <vector>

namespace zarvex::zx3D {

/// A glyph and where its pen is.
struct ShapedGlyph {
    std::int32_t x = 0;      ///< pixels from the left of its line
    std::int32_t y = 0;      ///< pixels from the top of the block down to the baseline
    std::uint32_t glyph = 0; ///< index in the face
    std::uint32_t face = 0;  ///< number within the font
};

/// A line of a text.
struct ShapedLine {
    std::uint32_t firstGlyph = 0;
    std::uint32_t glyphCount = 0;
    std::int32_t width = 0; ///< pixels
};

/// A block of lines. Places are whole pixels within plus and minus `kMaxTextExtent`.
struct ShapedText {
    std::vector<ShapedLine> lines;
    std::vector<ShapedGlyph> glyphs;
    std::int32_t width = 0;  ///< of the longest line
    std::int32_t height = 0; ///< of all lines with the gaps between them
};

/// What lies farther from the block's top left is not drawn. A float counts pixels exactly up to here.
constexpr std::int32_t kMaxTextExtent = 1 << 24;

} // namespace zarvex::zx3D
