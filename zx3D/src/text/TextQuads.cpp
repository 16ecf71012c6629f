// From glyphs with places to rectangles.
#include "TextQuads.h"

#include "Font.h"

#include <algorithm>

namespace zarvex::zx3D {

namespace {

/// A bitmap of a page with its top left at a place in the text, pixels.
TextQuad ToQuad(AtlasGlyph const& bitmap, std::int32_t x, std::int32_t y, std::uint32_t line) {
    auto const corner = [&](std::int32_t right, std::int32_t down) {
        return TextQuad::Corner{static_cast<float>(x + right), static_cast<float>(y + down),
                                static_cast<std::int16_t>((bitmap.x + right) * TextQuad::kTexelSteps),
                                static_cast<std::int16_t>((bitmap.y + down) * TextQuad::kTexelSteps)};
    };
    return {{corner(0, 0), corner(bitmap.width, 0), corner(bitmap.width, bitmap.height),
             corner(0, bitmap.height)},
            bitmap.page,
            line};
}

bool IsOnEarlierPage(TextQuad const& a, TextQuad const& b) {
    return a.page < b.page;
}

} // namespace

GlyphResolver::Missing GlyphResolver::Resolve(ShapedText const& text, Font const& font, GlyphAtlas& atlas,
                                              TextQuads& result) {
    Missing missing;
    result.quads.clear();
    for (std::uint32_t line = 0; line < text.lines.size(); ++line) {
        ShapedGlyph const* glyph = text.glyphs.data() + text.lines[line].firstGlyph;
        ShapedGlyph const* const end = glyph + text.lines[line].glyphCount;
        for (; glyph != end; ++glyph) {
            auto const place = FindOrAdd(*font.GetFaces()[glyph->face], glyph->glyph, atlas, missing);
            if (place && place->width != 0)
                result.quads.push_back(ToQuad(*place, glyph->x + place->left, glyph->y - place->top, line));
        }
    }
    std::sort(result.quads.begin(), result.quads.end(), IsOnEarlierPage);
    result.generation = missing.homeless == 0 ? atlas.GetGeneration() : TextQuads::kNever;
    return missing;
}

std::optional<AtlasGlyph> GlyphResolver::FindOrAdd(Face const& face, std::uint32_t glyph, GlyphAtlas& atlas,
                                                   Missing& missing) {
    GlyphKey const key{face.GetId(), glyph};
    if (std::optional<AtlasGlyph> const known = atlas.Find(key))
        return known;
    if (!face.Rasterize(glyph, m_bitmap)) // kept as a glyph without ink, and not tried again
        ++missing.damaged;
    std::optional<AtlasGlyph> const added = atlas.Add(key, m_bitmap);
    if (!added)
        ++missing.homeless;
    return added;
}

} // namespace zarvex::zx3D
