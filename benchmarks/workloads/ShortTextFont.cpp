// Light hinting and whole pixels, as the library does it; without its care for the fonts and texts of
// strangers.
#include "workloads/ShortTextFont.h"

#include <ft2build.h>
#include <hb-ft.h>
#include FT_FREETYPE_H

#include <cstring>
#include <stdexcept>

namespace zarvex::benchmarks {

namespace {

constexpr std::uint16_t kPageSize = 1024;
constexpr std::uint16_t kPadding = 1;
constexpr FT_Int32 kLoadFlags = FT_LOAD_TARGET_LIGHT | FT_LOAD_NO_BITMAP;

int RoundToPixels(int position) {
    return (position + 32) >> 6;
}

int CeilToPixels(FT_Pos position) {
    return static_cast<int>((position + 63) >> 6);
}

} // namespace

struct ShortTextFont::Libraries {
    FT_Library freeType = nullptr;
    FT_Face face = nullptr;
    hb_font_t* font = nullptr;
    hb_buffer_t* buffer = hb_buffer_create();

    ~Libraries() {
        hb_buffer_destroy(buffer);
        hb_font_destroy(font);
        FT_Done_Face(face);
        FT_Done_FreeType(freeType);
    }
};

ShortTextFont::ShortTextFont(int pixelSize)
    : m_libraries(std::make_unique<Libraries>()),
      m_page(bgfx::createTexture2D(kPageSize, kPageSize, false, 1, bgfx::TextureFormat::R8,
                                   BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP)),
      m_nextColumn(kPadding) {
    if (FT_Init_FreeType(&m_libraries->freeType) != 0 ||
        FT_New_Face(m_libraries->freeType, DEFAULT_FONT_FILE, 0, &m_libraries->face) != 0)
        throw std::runtime_error("cannot open " DEFAULT_FONT_FILE);
    FT_Set_Pixel_Sizes(m_libraries->face, 0, static_cast<unsigned>(pixelSize));
    m_libraries->font = hb_ft_font_create_referenced(m_libraries->face);
    hb_ft_font_set_load_flags(m_libraries->font, kLoadFlags);
}

ShortTextFont::~ShortTextFont() {
    bgfx::destroy(m_page);
}

ShortTextFont::Glyph const& ShortTextFont::FindOrUpload(std::uint32_t index) {
    for (Glyph const& glyph : m_glyphs) {
        if (glyph.index == index)
            return glyph;
    }
    Upload(index);
    return m_glyphs.back();
}

void ShortTextFont::Upload(std::uint32_t index) {
    FT_Load_Glyph(m_libraries->face, index, kLoadFlags | FT_LOAD_RENDER);
    FT_GlyphSlot const slot = m_libraries->face->glyph;
    FT_Bitmap const& bitmap = slot->bitmap;
    bgfx::Memory const* const memory = bgfx::alloc(bitmap.width * bitmap.rows);
    for (unsigned y = 0; y < bitmap.rows; ++y)
        std::memcpy(memory->data + y * bitmap.width, bitmap.buffer + y * static_cast<unsigned>(bitmap.pitch),
                    bitmap.width);
    bgfx::updateTexture2D(m_page, 0, 0, m_nextColumn, kPadding, static_cast<std::uint16_t>(bitmap.width),
                          static_cast<std::uint16_t>(bitmap.rows), memory);
    m_glyphs.push_back({index, slot->bitmap_left, slot->bitmap_top, static_cast<int>(bitmap.width),
                        static_cast<int>(bitmap.rows), m_nextColumn});
    m_nextColumn = static_cast<std::uint16_t>(m_nextColumn + bitmap.width + 2 * kPadding);
}

std::vector<PlacedGlyph> ShortTextFont::Shape(std::string const& text) {
    hb_buffer_t* const buffer = m_libraries->buffer;
    hb_buffer_clear_contents(buffer);
    hb_buffer_add_utf8(buffer, text.data(), static_cast<int>(text.size()), 0, -1);
    hb_buffer_set_direction(buffer, HB_DIRECTION_LTR);
    hb_buffer_set_script(buffer, HB_SCRIPT_LATIN);
    hb_shape(m_libraries->font, buffer, nullptr, 0);

    unsigned count = 0;
    hb_glyph_info_t const* const infos = hb_buffer_get_glyph_infos(buffer, &count);
    hb_glyph_position_t const* const positions = hb_buffer_get_glyph_positions(buffer, &count);
    int const ascender = CeilToPixels(m_libraries->face->size->metrics.ascender);
    int pen = 0;
    std::vector<PlacedGlyph> placed;
    for (unsigned i = 0; i < count; ++i) {
        Glyph const& glyph = FindOrUpload(infos[i].codepoint);
        int const left = pen + glyph.left;
        int const top = ascender - glyph.top;
        placed.push_back({static_cast<float>(left), static_cast<float>(top),
                          static_cast<float>(left + glyph.width), static_cast<float>(top + glyph.height),
                          glyph.u, kPadding});
        pen += RoundToPixels(positions[i].x_advance);
    }
    return placed;
}

} // namespace zarvex::benchmarks
