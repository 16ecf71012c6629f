// The glyph atlas: where glyphs are put, what is uploaded, which page goes.
#include "GlyphAtlas.h"

#include <Fixtures.h>

#include <set>
#include <string>
#include <vector>

using namespace zarvex::zx3D;
using testing::IsEmpty;

namespace {

GlyphBitmap Bitmap(int width, int height, std::uint8_t coverage = 255) {
    GlyphBitmap bitmap;
    bitmap.width = static_cast<std::uint16_t>(width);
    bitmap.height = static_cast<std::uint16_t>(height);
    bitmap.coverage.assign(static_cast<std::size_t>(width * height), coverage);
    return bitmap;
}

/// So large that each takes a page of its own.
GlyphBitmap PageFiller() {
    return Bitmap(kMaxGlyphExtent, kMaxGlyphExtent);
}

class GlyphAtlasTest : public ContextFixture {
protected:
    void SetUp() override {
        ContextFixture::SetUp();
        m_atlas.BeginText();
    }
    void TearDown() override {
        m_atlas.Clear();
        ContextFixture::TearDown();
    }

    /// Puts a glyph of its own number on every page.
    void FillAllPages() {
        for (std::uint32_t i = 0; i < GlyphAtlas::kMaxPages; ++i) {
            m_atlas.BeginText();
            ASSERT_TRUE(m_atlas.Add({0, i}, PageFiller()));
        }
    }

    GlyphAtlas m_atlas;
};

} // namespace

TEST_F(GlyphAtlasTest, AnEmptyAtlasHasNoTextures) {
    EXPECT_FALSE(m_atlas.Find({0, 1}));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(GlyphAtlasTest, AGlyphIsUploadedOnceWithABlankFrame) {
    GlyphBitmap bitmap = Bitmap(2, 3);
    bitmap.coverage = {1, 2, 3, 4, 5, 6};
    bitmap.left = -1;
    bitmap.top = 9;
    auto const glyph = m_atlas.Add({7, 8}, bitmap);
    ASSERT_TRUE(glyph);
    EXPECT_EQ(glyph->width, 2);
    EXPECT_EQ(glyph->height, 3);
    EXPECT_EQ(glyph->left, -1);
    EXPECT_EQ(glyph->top, 9);
    EXPECT_THAT(recorder::CallTexts(),
                testing::ElementsAre(testing::StartsWith("createTexture2D(1024, 1024, false, 1, R8"),
                                     "alloc(20)",
                                     "updateTexture2D(texture#0, 0, 0, " + std::to_string(glyph->x - 1) +
                                         ", " + std::to_string(glyph->y - 1) + ", 4, 5, 65535)"));
    EXPECT_THAT(recorder::CallsNamed("updateTexture2D").at(0).PayloadAs<std::uint8_t>(),
                testing::ElementsAre(0, 0, 0, 0, //
                                     0, 1, 2, 0, //
                                     0, 3, 4, 0, //
                                     0, 5, 6, 0, //
                                     0, 0, 0, 0));
    recorder::ClearCalls();
    auto const again = m_atlas.Find({7, 8});
    ASSERT_TRUE(again);
    EXPECT_EQ(again->x, glyph->x);
    EXPECT_EQ(again->y, glyph->y);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(GlyphAtlasTest, AGlyphWithoutInkIsKeptWithoutAPage) {
    ASSERT_TRUE(m_atlas.Add({0, 1}, GlyphBitmap()));
    ASSERT_TRUE(m_atlas.Find({0, 1}));
    EXPECT_EQ(m_atlas.Find({0, 1})->width, 0);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(GlyphAtlasTest, NoTexelIsWrittenTwice) {
    std::vector<std::vector<bool>> written(GlyphAtlas::kMaxPages, std::vector<bool>(1024 * 1024));
    for (std::uint32_t i = 0; i < 3000; ++i) {
        int const width = 1 + static_cast<int>(i * 7 % 60);
        int const height = 1 + static_cast<int>(i * 13 % 50);
        auto const glyph = m_atlas.Add({0, i}, Bitmap(width, height));
        ASSERT_TRUE(glyph);
        for (int y = glyph->y - 1; y < glyph->y + height + 1; ++y) {
            for (int x = glyph->x - 1; x < glyph->x + width + 1; ++x) {
                ASSERT_TRUE(x >= 0 && x < 1024 && y >= 0 && y < 1024);
                ASSERT_FALSE(written[glyph->page][static_cast<std::size_t>(y * 1024 + x)]) << i;
                written[glyph->page][static_cast<std::size_t>(y * 1024 + x)] = true;
            }
        }
    }
    EXPECT_GT(recorder::CountCalls("createTexture2D"), 1u) << "more than a page was meant to be filled";
    EXPECT_LT(recorder::CountCalls("createTexture2D"), 6u)
        << "3000 glyphs of 30 x 25 texels need 3 to 4 pages";
}

TEST_F(GlyphAtlasTest, GrowsPageByPageBeforeAnythingGoes) {
    FillAllPages();
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), GlyphAtlas::kMaxPages);
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
    EXPECT_EQ(m_atlas.GetGeneration(), 0u);
    for (std::uint32_t i = 0; i < GlyphAtlas::kMaxPages; ++i)
        EXPECT_TRUE(m_atlas.Find({0, i})) << i;
}

TEST_F(GlyphAtlasTest, TheLeastRecentlyUsedPageIsReplacedByANewTexture) {
    FillAllPages();
    m_atlas.BeginText();
    auto const first = m_atlas.Find({0, 0}); // now the second page is the oldest
    auto const second = m_atlas.Find({0, 1});
    m_atlas.BeginText();
    m_atlas.Use(first->page);
    m_atlas.BeginText();
    for (std::uint32_t i = 2; i < GlyphAtlas::kMaxPages; ++i)
        m_atlas.Use(static_cast<std::uint16_t>(i));
    bgfx::TextureHandle const old = m_atlas.GetTexture(second->page);
    recorder::ClearCalls();
    m_atlas.BeginText();
    auto const added = m_atlas.Add({1, 0}, PageFiller());
    ASSERT_TRUE(added);
    EXPECT_EQ(added->page, second->page);
    EXPECT_FALSE(m_atlas.Find({0, 1}));
    EXPECT_TRUE(m_atlas.Find({0, 0}));
    EXPECT_EQ(m_atlas.GetGeneration(), 1u);
    EXPECT_NE(m_atlas.GetTexture(added->page).idx, old.idx);
    EXPECT_THAT(recorder::CallNames(),
                testing::ElementsAre("destroy", "createTexture2D", "alloc", "updateTexture2D"));
}

TEST_F(GlyphAtlasTest, APageOfTheCurrentTextIsNotReplaced) {
    m_atlas.BeginText();
    for (std::uint32_t i = 0; i < GlyphAtlas::kMaxPages; ++i)
        ASSERT_TRUE(m_atlas.Add({0, i}, PageFiller()));
    EXPECT_FALSE(m_atlas.Add({1, 0}, PageFiller()));
    EXPECT_EQ(m_atlas.GetGeneration(), 0u);
    m_atlas.BeginText();
    EXPECT_TRUE(m_atlas.Add({1, 0}, PageFiller()));
}

TEST_F(GlyphAtlasTest, AFrameEmptiesABoundedNumberOfPages) {
    FillAllPages();
    std::uint32_t added = 0;
    for (std::uint32_t i = 0; i < 3 * GlyphAtlas::kMaxPages; ++i) {
        m_atlas.BeginText();
        added += m_atlas.Add({1, i}, PageFiller()).has_value();
    }
    EXPECT_EQ(added, GlyphAtlas::kMaxPagesEmptiedInFrame);
    bgfx::frame();
    m_atlas.BeginText();
    EXPECT_TRUE(m_atlas.Add({2, 0}, PageFiller()));
}

TEST_F(GlyphAtlasTest, ForgottenFacesAreNotFound) {
    m_atlas.Add({1, 5}, Bitmap(3, 3));
    m_atlas.Add({1, 6}, GlyphBitmap());
    m_atlas.Add({2, 5}, Bitmap(3, 3));
    m_atlas.Forget(1);
    EXPECT_FALSE(m_atlas.Find({1, 5}));
    EXPECT_FALSE(m_atlas.Find({1, 6}));
    EXPECT_TRUE(m_atlas.Find({2, 5}));
}

TEST_F(GlyphAtlasTest, PagesOfForgottenFacesAreUsedAgainBeforeMoreAreMade) {
    for (std::uint32_t face = 1; face < 100; ++face) {
        m_atlas.BeginText();
        std::optional<AtlasGlyph> const glyph = m_atlas.Add({face, 5}, PageFiller());
        ASSERT_TRUE(glyph);
        EXPECT_LE(glyph->page, 1);
        EXPECT_EQ(m_atlas.GetGeneration(), 0u) << "what others have placed stays";
        m_atlas.Forget(face - 1);
        bgfx::frame();
    }
}

TEST_F(GlyphAtlasTest, ClearingDestroysTheTexturesAndMakesPlacesWrong) {
    m_atlas.Add({1, 5}, Bitmap(3, 3));
    std::uint64_t const generation = m_atlas.GetGeneration();
    m_atlas.Clear();
    EXPECT_NE(m_atlas.GetGeneration(), generation);
    EXPECT_FALSE(m_atlas.Find({1, 5}));
    bgfx::frame();
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}
