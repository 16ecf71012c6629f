// FreeType behind a face: light hinting, 256 levels of coverage, everything checked before it is believed.
#include "Face.h"

#include <hb-ft.h>
#include FT_OUTLINE_H

#include <algorithm>
#include <cstdlib>

namespace zarvex::zx3D {

namespace {

constexpr int kUnitsPerPixel = 64;

int FloorToPixels(FT_Pos position) {
    return static_cast<int>(position >> 6);
}

int CeilToPixels(FT_Pos position) {
    return static_cast<int>((position + kUnitsPerPixel - 1) >> 6);
}

// A compressed font file of a few bytes can ask for gigabytes.
constexpr long kMaxAllocation = 256l << 20;

void* Allocate(FT_Memory, long size) {
    return size <= kMaxAllocation ? std::malloc(static_cast<std::size_t>(size)) : nullptr;
}

void Free(FT_Memory, void* block) {
    std::free(block);
}

void* Reallocate(FT_Memory, long, long size, void* block) {
    return size <= kMaxAllocation ? std::realloc(block, static_cast<std::size_t>(size)) : nullptr;
}

/// What a hostile file claims is cut to what a font of the size may have.
FaceMetrics ReadMetrics(FT_FaceRec_ const& face, int pixelSize) {
    int const bound = 4 * pixelSize;
    FT_Size_Metrics const& size = face.size->metrics;
    FaceMetrics metrics;
    metrics.ascender = std::clamp(CeilToPixels(size.ascender), 0, bound);
    metrics.descender = std::clamp(FloorToPixels(size.descender), -bound, 0);
    int const height = std::clamp(CeilToPixels(size.height), 0, bound);
    metrics.lineGap = std::max(height - (metrics.ascender - metrics.descender), 0);
    return metrics;
}

/// The side lengths are compared before a bitmap of them is made.
bool FitsExtent(FT_Outline const& outline) {
    FT_BBox box;
    FT_Outline_Get_CBox(&outline, &box);
    constexpr FT_Pos limit = FT_Pos(kMaxGlyphExtent) * kUnitsPerPixel;
    constexpr FT_Pos farthest = FT_Pos(16) * limit;
    return box.xMin >= -farthest && box.yMin >= -farthest && box.xMax <= farthest && box.yMax <= farthest &&
           CeilToPixels(box.xMax) - FloorToPixels(box.xMin) <= kMaxGlyphExtent &&
           CeilToPixels(box.yMax) - FloorToPixels(box.yMin) <= kMaxGlyphExtent;
}

std::uint8_t const* RowOf(FT_Bitmap const& bitmap, unsigned y) {
    // A negative pitch means that rows follow each other upwards; the buffer then begins with the lowest.
    std::ptrdiff_t const pitch = bitmap.pitch;
    return pitch >= 0 ? bitmap.buffer + pitch * y : bitmap.buffer - pitch * (bitmap.rows - 1 - y);
}

bool CopyCoverage(FT_Bitmap const& source, std::vector<std::uint8_t>& coverage) {
    coverage.resize(std::size_t(source.width) * source.rows);
    std::uint8_t* target = coverage.data();
    for (unsigned y = 0; y < source.rows; ++y, target += source.width) {
        std::uint8_t const* const row = RowOf(source, y);
        if (source.pixel_mode == FT_PIXEL_MODE_GRAY) {
            std::copy_n(row, source.width, target);
        } else if (source.pixel_mode == FT_PIXEL_MODE_MONO) {
            for (unsigned x = 0; x < source.width; ++x)
                target[x] = (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0;
        } else {
            return false;
        }
    }
    return true;
}

} // namespace

Face::Face(std::uint32_t id, FontData data, FreeTypeFaceOwner face, std::uint16_t pixelSize)
    : m_id(id),
      m_pixelSize(pixelSize),
      m_data(std::move(data)),
      m_face(std::move(face)) {
    // Light hinting snaps to the pixel grid vertically and keeps the shapes. The small bitmaps that some
    // outline fonts carry would not match their neighbours.
    m_loadFlags = FT_LOAD_TARGET_LIGHT;
    if (FT_IS_SCALABLE(m_face))
        m_loadFlags |= FT_LOAD_NO_BITMAP;
    m_metrics = ReadMetrics(*m_face, pixelSize);
    m_harfBuzzFont.reset(hb_ft_font_create_referenced(m_face.get()));
    hb_ft_font_set_load_flags(m_harfBuzzFont.get(), m_loadFlags);
}

std::string Face::GetFamily() const {
    return m_face->family_name != nullptr ? m_face->family_name : "";
}

int Face::GetBlankAdvance() const {
    hb_codepoint_t glyph = 0;
    hb_font_get_nominal_glyph(m_harfBuzzFont.get(), U' ', &glyph);
    FT_Pos const advance = hb_font_get_glyph_h_advance(m_harfBuzzFont.get(), glyph);
    return std::clamp(FloorToPixels(advance + kUnitsPerPixel / 2), 1, 4 * m_pixelSize);
}

bool Face::Rasterize(std::uint32_t glyph, GlyphBitmap& bitmap) const {
    bitmap.width = bitmap.height = 0;
    if (FT_Load_Glyph(m_face.get(), glyph, m_loadFlags) != 0)
        return false;
    FT_GlyphSlot const slot = m_face->glyph;
    if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
        if (!FitsExtent(slot->outline) || FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) != 0)
            return false;
    }
    FT_Bitmap const& source = slot->bitmap;
    if (slot->format != FT_GLYPH_FORMAT_BITMAP || source.width > kMaxGlyphExtent ||
        source.rows > kMaxGlyphExtent)
        return false;
    if (source.width == 0 || source.rows == 0)
        return true;
    if (!CopyCoverage(source, bitmap.coverage))
        return false;
    bitmap.width = static_cast<std::uint16_t>(source.width);
    bitmap.height = static_cast<std::uint16_t>(source.rows);
    bitmap.left = slot->bitmap_left;
    bitmap.top = slot->bitmap_top;
    return true;
}

FaceLoader::FaceLoader() : m_memory{nullptr, Allocate, Free, Reallocate} {
    FT_Library library = nullptr;
    if (FT_New_Library(&m_memory, &library) != 0)
        return;
    m_library.reset(library);
    FT_Add_Default_Modules(library);
    FT_Set_Default_Properties(library);
}

std::unique_ptr<Face> FaceLoader::Load(FontData data, long faceIndex, std::uint16_t pixelSize) {
    if (m_library == nullptr || data.bytes.empty() || data.bytes.size() > kMaxFontFileSize)
        return nullptr;
    FT_Face opened = nullptr;
    if (FT_New_Memory_Face(m_library.get(), reinterpret_cast<FT_Byte const*>(data.bytes.data()),
                           static_cast<FT_Long>(data.bytes.size()), faceIndex, &opened) != 0)
        return nullptr;
    FreeTypeFaceOwner face(opened);
    if (FT_Set_Pixel_Sizes(opened, 0, pixelSize) != 0)
        return nullptr;
    return std::unique_ptr<Face>(new Face(m_nextId++, std::move(data), std::move(face), pixelSize));
}

} // namespace zarvex::zx3D
