// A text's glyphs as rectangles of the atlas.
#pragma once

#include "GlyphAtlas.h"
#include "ShapedText.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace zarvex::zx3D {

class Font;

/// A glyph's bitmap and where it goes.
struct TextQuad {
    static constexpr int kTexelSteps = 16; ///< vs_text knows it too

    struct Corner {
        float x = 0.0f;     ///< whole pixels from the left of its line
        float y = 0.0f;     ///< whole pixels from the block's top
        std::int16_t u = 0; ///< 1/16 texels
        std::int16_t v = 0;
    };

    std::array<Corner, 4> corners; ///< clockwise from the top left
    std::uint16_t page = 0;
    std::uint32_t line = 0;
};
static_assert(GlyphAtlas::kPageSize * TextQuad::kTexelSteps <= std::numeric_limits<std::int16_t>::max());

/// A text's quads, page by page; right as long as the atlas is of the same generation.
struct TextQuads {
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t generation = kNever;
    std::vector<TextQuad> quads;
};

/// Finds texts' glyphs in the atlas and adds those that are missing; keeps its memory between texts.
class GlyphResolver {
public:
    /// What is missing from a text's quads.
    struct Missing {
        std::size_t damaged = 0;  ///< glyphs that cannot be drawn, those met for the first time
        std::size_t homeless = 0; ///< glyphs without room in the atlas; the quads do not count as right then
    };

    /// Makes the quads of a text.
    Missing Resolve(ShapedText const& text, Font const& font, GlyphAtlas& atlas, TextQuads& result);

private:
    std::optional<AtlasGlyph> FindOrAdd(Face const& face, std::uint32_t glyph, GlyphAtlas& atlas,
                                        Missing& missing);

    GlyphBitmap m_bitmap;
};

} // namespace zarvex::zx3D
