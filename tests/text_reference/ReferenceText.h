// Lines of text, shaped by HarfBuzz and rasterised by FreeType directly.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A glyph of a line.
struct ReferenceGlyph {
    std::uint32_t index = 0; ///< in the font
    int x = 0;               ///< pixels from the line's left to the bitmap's left
    int y = 0;               ///< pixels from the baseline down to the bitmap's top: mostly negative
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> coverage; ///< rows from the top
};

/// A line of one direction and script.
struct ReferenceLine {
    std::vector<ReferenceGlyph> glyphs; ///< from left to right, those without ink left out
    int width = 0;                      ///< pixels
    int ascender = 0;
    int descender = 0; ///< negative
    int lineGap = 0;
};

/// Shapes with the font file at the size. Pens are on whole pixels where a character cluster begins.
ReferenceLine ShapeReferenceLine(std::string const& fontFile, int pixelSize, std::string const& utf8);

/// The glyph that the font shows for a character: 0 when it has none.
std::uint32_t ReferenceGlyphIndex(std::string const& fontFile, char32_t codePoint);
