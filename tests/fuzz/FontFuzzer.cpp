// Any bytes as a font file: loaded, shaped with, rasterised and drawn.
#include "Drawing.h"

#include <Face.h>
#include <TextSystem.h>

#include <cstdlib>

using namespace zarvex::zx3D;

namespace {

constexpr std::uint16_t kSizes[] = {14, 14, 14, 14, 1, 40, 150, 512};
constexpr std::uint32_t kGlyphs = 24;

/// Latin with a ligature and a mark, scripts that are shaped, a tab, letters that the font will lack.
constexpr std::string_view kText = "AVAST fi e\u0301 \u222B\n\u05E9\u05DC \u0633\u0644\u0627\t1"
                                   "\n\u0915\u094D\u0937\u093F \uD55C \U0001F44D";

void CheckInfo(FontInfo const& info, std::uint16_t pixelSize) {
    auto const bound = 4.0f * static_cast<float>(pixelSize);
    Require(info.pixelSize == pixelSize && info.ascender >= 0.0f && info.ascender <= bound &&
                info.descender <= 0.0f && info.descender >= -bound && info.lineGap >= 0.0f &&
                info.lineGap <= bound,
            "metrics are bounded by the size");
}

/// Glyphs that no character of the text may lead to.
void RasterizeFirstGlyphs(Face const& face) {
    GlyphBitmap bitmap;
    for (std::uint32_t glyph = 0; glyph < kGlyphs; ++glyph) {
        face.Rasterize(glyph, bitmap);
        Require(bitmap.width <= kMaxGlyphExtent && bitmap.height <= kMaxGlyphExtent &&
                    bitmap.coverage.size() >= std::size_t(bitmap.width) * bitmap.height,
                "a bitmap has all its pixels");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Without the system's fonts: to load those that stand in for missing letters would take all the time.
    setenv("FONTCONFIG_FILE", "/dev/null", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    StartContext();
    std::uint16_t const pixelSize = kSizes[size == 0 ? 0 : data[size - 1] % std::size(kSizes)];
    std::span const bytes(reinterpret_cast<std::byte const*>(data), size);
    std::optional<FontHandle> const font = LoadFontFromMemory(bytes, pixelSize);
    if (!font)
        return 0;
    CheckInfo(GetFontInfo(*font), pixelSize);
    RasterizeFirstGlyphs(TextSystem::Get().FindFont(*font)->GetPrimaryFace());
    DrawChecked({.font = *font, .content = kText, .horizontal = 0.5f, .vertical = 0.5f});
    DestroyFont(*font);
    return 0;
}
