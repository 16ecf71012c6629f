// One font file at one size.
#pragma once

#include "FontData.h"
#include "LibraryOwners.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zarvex::zx3D {

/// Vertical metrics in whole pixels.
struct FaceMetrics {
    int ascender = 0;  ///< from the baseline up
    int descender = 0; ///< from the baseline up: negative where the face reaches below
    int lineGap = 0;   ///< between a line's bottom and the next one's top, never negative
};

/// A glyph as coverage, 0 to 255, rows from the top without gaps between them.
struct GlyphBitmap {
    std::uint16_t width = 0;  ///< 0 for a glyph without ink
    std::uint16_t height = 0; ///< likewise
    int left = 0;             ///< from the pen to the left column
    int top = 0;              ///< from the baseline up to the top row's upper edge
    std::vector<std::uint8_t> coverage;
};

/// The largest side of a glyph's bitmap, in pixels.
constexpr int kMaxGlyphExtent = 1022;

/// A face of a font file at a pixel size: which glyphs it has, how HarfBuzz shapes with it, how they look.
///
/// Untrusted: whatever the file says, metrics are bounded by the size and no bitmap exceeds the extent.
class Face {
public:
    /// Unlike those of all other faces, past ones included.
    std::uint32_t GetId() const { return m_id; }

    FaceMetrics const& GetMetrics() const { return m_metrics; }
    std::uint16_t GetPixelSize() const { return m_pixelSize; }

    /// The family's name as the file tells it, and its style.
    std::string GetFamily() const;
    bool IsBold() const { return (m_face->style_flags & FT_STYLE_FLAG_BOLD) != 0; }
    bool IsItalic() const { return (m_face->style_flags & FT_STYLE_FLAG_ITALIC) != 0; }

    bool HasGlyph(char32_t codePoint) const { return FT_Get_Char_Index(m_face.get(), codePoint) != 0; }

    /// The advance of the blank in whole pixels, at least 1.
    int GetBlankAdvance() const;

    /// The face for HarfBuzz, in units of 1/64 pixel.
    hb_font_t* GetHarfBuzzFont() const { return m_harfBuzzFont.get(); }

    /// Draws a glyph. False when it is damaged or exceeds the extent; a glyph without ink is none of that.
    bool Rasterize(std::uint32_t glyph, GlyphBitmap& bitmap) const;

private:
    friend class FaceLoader;
    Face(std::uint32_t id, FontData data, FreeTypeFaceOwner face, std::uint16_t pixelSize);

    std::uint32_t m_id;
    std::uint16_t m_pixelSize;
    FontData m_data; // read by FreeType as long as the face lives
    FreeTypeFaceOwner m_face;
    FT_Int32 m_loadFlags;
    FaceMetrics m_metrics;
    HarfBuzzFontOwner m_harfBuzzFont;
};

/// Opens faces. Owns FreeType, so it lives longer than they do.
class FaceLoader {
public:
    FaceLoader();

    FaceLoader(FaceLoader const&) = delete;
    FaceLoader& operator=(FaceLoader const&) = delete;

    /// A face of the file, counted as FreeType and fontconfig do. Null when the file is no font or does not
    /// offer the size.
    std::unique_ptr<Face> Load(FontData data, long faceIndex, std::uint16_t pixelSize);

private:
    FT_MemoryRec_ m_memory; // used by the library
    FreeTypeLibraryOwner m_library;
    std::uint32_t m_nextId = 0;
};

} // namespace zarvex::zx3D
