// A text's glyphs as rectangles of the atlas.
#pragma once

#include "GlyphAtlas.h"
#include "ShapedText.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace zarvex::zx3D {

class Font;

/// A glyph's bitmap and where it goes.
struct TextQuad {
    std::int32_t x = 0; ///< pixels from the left of its line to the bitmap's left
    std::int32_t y = 0; ///< pixels from the block's top to the bitmap's top
    std::uint16_t page = 0;
    std::uint16_t u = 0; ///< texels
    std::uint16_t v = 0;
    std::uint16_t width = 0; ///< texels, which are pixels
    std::uint16_t height = 0;
    std::uint32_t line = 0;
};

/// The quads that one page of the atlas serves.
struct PageQuads {
    std::uint16_t page = 0;
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// A text's quads, page by page; right as long as the atlas is of the same generation.
struct TextQuads {
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t generation = kNever;
    std::vector<TextQuad> quads;
    std::vector<PageQuads> pages;
};

/// Finds texts' glyphs in the atlas and adds those that are missing; keeps its memory between texts.
class GlyphResolver {
public:
    /// Makes the quads of a text. Returns how many of its glyphs cannot be drawn, because they are damaged,
    /// too large, or too many; of the first two each glyph counts only once.
    std::size_t Resolve(ShapedText const& text, Font const& font, GlyphAtlas& atlas, TextQuads& result);

private:
    std::optional<AtlasGlyph> FindOrAdd(Face const& face, std::uint32_t glyph, GlyphAtlas& atlas,
                                        bool& isDamaged);

    GlyphBitmap m_bitmap;
};

} // namespace zarvex::zx3D
