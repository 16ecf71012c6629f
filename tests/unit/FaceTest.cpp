// Faces: what FreeType reads, compared with FreeType called directly.
#include "Face.h"

#include <ReferenceText.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace zarvex::zx3D;
using testing::Each;
using testing::IsNull;
using testing::NotNull;

TEST(FaceTest, MetricsAreThoseOfTheFontInWholePixels) {
    FaceLoader loader;
    for (int const size : {1, 7, 12, 13, 20, 64, 511, 512}) {
        auto const face = loader.Load(DefaultFontData(), 0, static_cast<std::uint16_t>(size));
        ASSERT_THAT(face, NotNull());
        ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, size, "");
        EXPECT_EQ(face->GetPixelSize(), size);
        EXPECT_EQ(face->GetMetrics().ascender, reference.ascender) << size;
        EXPECT_EQ(face->GetMetrics().descender, reference.descender) << size;
        EXPECT_EQ(face->GetMetrics().lineGap, reference.lineGap) << size;
    }
}

TEST(FaceTest, GlyphsAreRasterizedAsFreeTypeDoes) {
    FaceLoader loader;
    auto const face = loader.Load(DefaultFontData(), 0, 17);
    for (std::string const text : {"A", "g", "W", "@"}) {
        ReferenceGlyph const expected = ShapeReferenceLine(DEFAULT_FONT_FILE, 17, text).glyphs.at(0);
        GlyphBitmap bitmap;
        ASSERT_TRUE(face->Rasterize(expected.index, bitmap));
        EXPECT_EQ(bitmap.width, expected.width);
        EXPECT_EQ(bitmap.height, expected.height);
        EXPECT_EQ(bitmap.left, expected.x);
        EXPECT_EQ(bitmap.top, -expected.y);
        EXPECT_EQ(bitmap.coverage, expected.coverage);
    }
}

TEST(FaceTest, ABlankHasNoInkAndNoError) {
    FaceLoader loader;
    auto const face = loader.Load(DefaultFontData(), 0, 17);
    GlyphBitmap bitmap;
    EXPECT_TRUE(face->Rasterize(ReferenceGlyphIndex(DEFAULT_FONT_FILE, U' '), bitmap));
    EXPECT_EQ(bitmap.width, 0);
    EXPECT_EQ(bitmap.height, 0);
}

TEST(FaceTest, AGlyphThatDoesNotExistIsAnError) {
    FaceLoader loader;
    auto const face = loader.Load(DefaultFontData(), 0, 17);
    GlyphBitmap bitmap;
    EXPECT_FALSE(face->Rasterize(1'000'000, bitmap));
    EXPECT_EQ(bitmap.width, 0);
}

TEST(FaceTest, TheLargestSizeFitsAPage) {
    FaceLoader loader;
    auto const face = loader.Load(DefaultFontData(), 0, 512);
    GlyphBitmap bitmap;
    EXPECT_TRUE(face->Rasterize(ReferenceGlyphIndex(DEFAULT_FONT_FILE, U'W'), bitmap));
    EXPECT_GT(bitmap.width, 400);
}

TEST(FaceTest, KnowsWhichCharactersItHas) {
    FaceLoader loader;
    auto const face = loader.Load(DefaultFontData(), 0, 17);
    EXPECT_TRUE(face->HasGlyph(U'A'));
    EXPECT_TRUE(face->HasGlyph(U'ש'));
    EXPECT_FALSE(face->HasGlyph(U'日'));
}

TEST(FaceTest, IdsAreNotUsedAgain) {
    FaceLoader loader;
    std::set<std::uint32_t> ids;
    for (int i = 0; i < 10; ++i)
        ids.insert(loader.Load(DefaultFontData(), 0, 17)->GetId());
    EXPECT_EQ(ids.size(), 10u);
}

TEST(FaceTest, AFaceNumberBeyondTheFileGivesNothing) {
    FaceLoader loader;
    EXPECT_THAT(loader.Load(DefaultFontData(), 1, 17), IsNull());
}
