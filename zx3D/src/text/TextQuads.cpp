// From glyphs with places to rectangles.
#include "TextQuads.h"

#include "Font.h"

#include <algorithm>

namespace zarvex::zx3D {

namespace {

void CollectPages(TextQuads& result) {
    auto const isOnEarlierPage = [](TextQuad const& a, TextQuad const& b) { return a.page < b.page; };
    std::sort(result.quads.begin(), result.quads.end(), isOnEarlierPage);
    result.pages.clear();
    for (std::uint32_t i = 0; i < result.quads.size(); ++i) {
        if (result.pages.empty() || result.pages.back().page != result.quads[i].page)
            result.pages.push_back({result.quads[i].page, i, 0});
        ++result.pages.back().count;
    }
}

} // namespace

std::size_t GlyphResolver::Resolve(ShapedText const& text, Font const& font, GlyphAtlas& atlas,
                                   TextQuads& result) {
    std::size_t failures = 0;
    result.quads.clear();
    for (std::uint32_t line = 0; line < text.lines.size(); ++line) {
        ShapedGlyph const* glyph = text.glyphs.data() + text.lines[line].firstGlyph;
        ShapedGlyph const* const end = glyph + text.lines[line].glyphCount;
        for (; glyph != end; ++glyph) {
            bool isDamaged = false;
            auto const found = FindOrAdd(*font.GetFaces()[glyph->face], glyph->glyph, atlas, isDamaged);
            if (isDamaged || !found)
                ++failures;
            if (found && found->width != 0)
                result.quads.push_back({glyph->x + found->left, glyph->y - found->top, found->page, found->x,
                                        found->y, found->width, found->height, line});
        }
    }
    CollectPages(result);
    result.generation = atlas.GetGeneration();
    return failures;
}

std::optional<AtlasGlyph> GlyphResolver::FindOrAdd(Face const& face, std::uint32_t glyph, GlyphAtlas& atlas,
                                                   bool& isDamaged) {
    GlyphKey const key{face.GetId(), glyph};
    if (std::optional<AtlasGlyph> const known = atlas.Find(key))
        return known;
    // A damaged glyph is kept as one without ink, and not tried again.
    isDamaged = !face.Rasterize(glyph, m_bitmap);
    return atlas.Add(key, m_bitmap);
}

} // namespace zarvex::zx3D
