// Short texts set by hand: a font's file through FreeType and HarfBuzz into a texture and rectangles.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zarvex::benchmarks {

/// A glyph's bitmap: pixels from the text's top left, and texels of the page.
struct PlacedGlyph {
    float left = 0.0f;
    float top = 0.0f;
    float right = 0.0f;
    float bottom = 0.0f;
    std::uint16_t u = 0; ///< of the left
    std::uint16_t v = 0; ///< of the top
};

/// The default font, and a page of the size that the program for text expects, with room for a few glyphs.
class ShortTextFont {
public:
    explicit ShortTextFont(int pixelSize);
    ~ShortTextFont();

    ShortTextFont(ShortTextFont const&) = delete;
    ShortTextFont& operator=(ShortTextFont const&) = delete;

    /// A line of Latin letters. Glyphs that it is the first to need are rasterised and uploaded.
    std::vector<PlacedGlyph> Shape(std::string const& text);

    bgfx::TextureHandle GetPage() const { return m_page; }

private:
    struct Libraries; // what FreeType and HarfBuzz hold
    struct Glyph {
        std::uint32_t index = 0;
        int left = 0; ///< of the bitmap, from the pen to the right
        int top = 0;  ///< and up
        int width = 0;
        int height = 0;
        std::uint16_t u = 0;
    };

    Glyph const& FindOrUpload(std::uint32_t index);
    void Upload(std::uint32_t index);

    std::unique_ptr<Libraries> m_libraries;
    bgfx::TextureHandle m_page;
    std::vector<Glyph> m_glyphs;
    std::uint16_t m_nextColumn;
};

} // namespace zarvex::benchmarks
