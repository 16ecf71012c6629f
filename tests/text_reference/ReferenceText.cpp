// HarfBuzz with its own reading of the font, FreeType with light hinting.
#include "ReferenceText.h"

#include <ft2build.h>
#include <hb-ot.h>
#include <hb.h>
#include FT_FREETYPE_H

#include <cmath>
#include <memory>
#include <stdexcept>

namespace {

/// A font file, open in FreeType.
class OpenFont {
public:
    explicit OpenFont(std::string const& file) {
        if (FT_Init_FreeType(&m_library) != 0 || FT_New_Face(m_library, file.c_str(), 0, &m_face) != 0)
            throw std::runtime_error("cannot open " + file);
    }
    ~OpenFont() {
        FT_Done_Face(m_face);
        FT_Done_FreeType(m_library);
    }
    OpenFont(OpenFont const&) = delete;
    OpenFont& operator=(OpenFont const&) = delete;

    FT_Face Face() const { return m_face; }

private:
    FT_Library m_library = nullptr;
    FT_Face m_face = nullptr;
};

using Blob = std::unique_ptr<hb_blob_t, decltype(&hb_blob_destroy)>;
using Face = std::unique_ptr<hb_face_t, decltype(&hb_face_destroy)>;
using Font = std::unique_ptr<hb_font_t, decltype(&hb_font_destroy)>;
using Buffer = std::unique_ptr<hb_buffer_t, decltype(&hb_buffer_destroy)>;

int Round(int position) {
    return static_cast<int>(std::floor(position / 64.0 + 0.5));
}

ReferenceGlyph Rasterize(FT_Face face, std::uint32_t index) {
    FT_Load_Glyph(face, index, FT_LOAD_TARGET_LIGHT | FT_LOAD_RENDER);
    FT_Bitmap const& bitmap = face->glyph->bitmap;
    ReferenceGlyph glyph{index,
                         face->glyph->bitmap_left,
                         -face->glyph->bitmap_top,
                         static_cast<int>(bitmap.width),
                         static_cast<int>(bitmap.rows),
                         {}};
    for (unsigned y = 0; y < bitmap.rows; ++y) {
        auto const* const row = bitmap.buffer + y * static_cast<unsigned>(bitmap.pitch);
        glyph.coverage.insert(glyph.coverage.end(), row, row + bitmap.width);
    }
    return glyph;
}

} // namespace

ReferenceLine ShapeReferenceLine(std::string const& fontFile, int pixelSize, std::string const& utf8) {
    OpenFont const open(fontFile);
    FT_Set_Pixel_Sizes(open.Face(), 0, static_cast<unsigned>(pixelSize));
    Blob const blob(hb_blob_create_from_file(fontFile.c_str()), hb_blob_destroy);
    Face const face(hb_face_create(blob.get(), 0), hb_face_destroy);
    Font const font(hb_font_create(face.get()), hb_font_destroy);
    hb_font_set_scale(font.get(), pixelSize * 64, pixelSize * 64);
    Buffer const buffer(hb_buffer_create(), hb_buffer_destroy);
    hb_buffer_add_utf8(buffer.get(), utf8.data(), static_cast<int>(utf8.size()), 0, -1);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_shape(font.get(), buffer.get(), nullptr, 0);

    ReferenceLine line;
    FT_Size_Metrics const& metrics = open.Face()->size->metrics;
    line.ascender = static_cast<int>(std::ceil(metrics.ascender / 64.0));
    line.descender = static_cast<int>(std::floor(metrics.descender / 64.0));
    line.lineGap = std::max(Round(static_cast<int>(metrics.height)) - line.ascender + line.descender, 0);
    unsigned count = 0;
    auto const* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    auto const* const positions = hb_buffer_get_glyph_positions(buffer.get(), &count);
    int sinceCluster = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (i > 0 && infos[i].cluster != infos[i - 1].cluster) {
            line.width += Round(sinceCluster);
            sinceCluster = 0;
        }
        ReferenceGlyph glyph = Rasterize(open.Face(), infos[i].codepoint);
        glyph.x += line.width + Round(sinceCluster + positions[i].x_offset);
        glyph.y -= Round(positions[i].y_offset);
        if (glyph.width > 0)
            line.glyphs.push_back(std::move(glyph));
        sinceCluster += positions[i].x_advance;
    }
    line.width += Round(sinceCluster);
    return line;
}

std::uint32_t ReferenceGlyphIndex(std::string const& fontFile, char32_t codePoint) {
    return FT_Get_Char_Index(OpenFont(fontFile).Face(), codePoint);
}
