// The cache of laid-out texts: found again, bounded, forgotten with the font.
#include "ShapeCache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace zarvex::zx3D;
using testing::IsNull;
using testing::NotNull;

namespace {

ShapedText TextOfGlyphs(std::size_t count) {
    ShapedText text;
    text.glyphs.resize(count);
    return text;
}

} // namespace

TEST(ShapeCacheTest, FindsWhatWasAdded) {
    ShapeCache cache;
    auto const added = cache.Add(1, "text", TextOfGlyphs(4));
    EXPECT_EQ(added->shaped.glyphs.size(), 4u);
    EXPECT_EQ(cache.Find(1, "text"), added);
}

TEST(ShapeCacheTest, TellsTextsAndFontsApart) {
    ShapeCache cache;
    cache.Add(1, "text", TextOfGlyphs(1));
    EXPECT_THAT(cache.Find(1, "texts"), IsNull());
    EXPECT_THAT(cache.Find(1, ""), IsNull());
    EXPECT_THAT(cache.Find(2, "text"), IsNull());
    auto const other = cache.Add(2, "text", TextOfGlyphs(2));
    EXPECT_EQ(cache.Find(2, "text"), other);
    EXPECT_NE(cache.Find(1, "text"), other);
}

TEST(ShapeCacheTest, KeepsItsOwnCopyOfTheText) {
    ShapeCache cache;
    std::string text = "a text that is too long to be kept within the string object";
    cache.Add(1, text, TextOfGlyphs(1));
    std::string const same = text;
    text.assign(text.size(), 'x');
    EXPECT_THAT(cache.Find(1, same), NotNull());
    EXPECT_THAT(cache.Find(1, text), IsNull());
}

TEST(ShapeCacheTest, StaysWithinItsCapacityAndDropsWhatWasNotAskedForTheLongest) {
    constexpr std::size_t capacity = 100'000;
    ShapeCache cache(capacity);
    auto const name = [](int i) { return "text " + std::to_string(i); };
    cache.Add(1, "kept", TextOfGlyphs(10));
    for (int i = 0; i < 1000; ++i) {
        cache.Add(1, name(i), TextOfGlyphs(10));
        EXPECT_LE(cache.GetSize(), capacity);
        ASSERT_THAT(cache.Find(1, "kept"), NotNull());
    }
    EXPECT_THAT(cache.Find(1, name(0)), IsNull());
    EXPECT_THAT(cache.Find(1, name(999)), NotNull());
    EXPECT_GT(cache.GetSize(), capacity / 2);
}

TEST(ShapeCacheTest, WhoHoldsATextKeepsIt) {
    ShapeCache cache(10'000);
    auto const held = cache.Add(1, "held", TextOfGlyphs(7));
    for (int i = 0; i < 100; ++i)
        cache.Add(1, std::to_string(i), TextOfGlyphs(1));
    EXPECT_THAT(cache.Find(1, "held"), IsNull());
    EXPECT_EQ(held->shaped.glyphs.size(), 7u);
}

TEST(ShapeCacheTest, ATextLargerThanTheCacheIsNotKept) {
    ShapeCache cache(10'000);
    cache.Add(1, "small", TextOfGlyphs(1));
    EXPECT_THAT(cache.Add(1, "large", TextOfGlyphs(10'000)), NotNull());
    EXPECT_THAT(cache.Find(1, "large"), IsNull());
    EXPECT_THAT(cache.Find(1, "small"), NotNull());
}

TEST(ShapeCacheTest, ForgetsTheTextsOfAFont) {
    ShapeCache cache;
    cache.Add(1, "a", TextOfGlyphs(1));
    cache.Add(2, "a", TextOfGlyphs(1));
    cache.Add(1, "b", TextOfGlyphs(1));
    cache.Forget(1);
    EXPECT_THAT(cache.Find(1, "a"), IsNull());
    EXPECT_THAT(cache.Find(1, "b"), IsNull());
    EXPECT_THAT(cache.Find(2, "a"), NotNull());
    cache.Forget(2);
    EXPECT_EQ(cache.GetSize(), 0u);
}

TEST(ShapeCacheTest, ForgetsAlsoWhatItExpectsToBeAskedForNext) {
    ShapeCache cache;
    cache.Add(1, "first", TextOfGlyphs(1));
    cache.Add(2, "second", TextOfGlyphs(1));
    cache.Find(1, "first");
    cache.Find(2, "second");
    cache.Find(1, "first"); // "second" came after it the last time
    cache.Forget(2);
    EXPECT_THAT(cache.Find(2, "second"), IsNull());
}

// The cache guesses what comes next; whatever the order, a text must never be taken for another one.
TEST(ShapeCacheTest, FindsTheRightTextsInEveryOrder) {
    ShapeCache cache;
    constexpr std::size_t count = 300;
    for (std::size_t i = 0; i < count; ++i)
        cache.Add(1, std::to_string(i), TextOfGlyphs(i));
    auto const expectFound = [&](std::size_t i) {
        auto const& found = cache.Find(1, std::to_string(i));
        ASSERT_THAT(found, NotNull());
        ASSERT_EQ(found->shaped.glyphs.size(), i);
    };
    for (int frame = 0; frame < 20; ++frame) { // more questions than the cache remembers
        for (std::size_t i = 0; i < count; ++i)
            expectFound(i);
        for (std::size_t i = count; i-- > 0;)
            expectFound(i);
        for (std::size_t i = 0; i < count; i += 1 + static_cast<std::size_t>(frame) % 7)
            expectFound(i * 7 % count);
    }
}

TEST(ShapeCacheTest, FindsTheRightTextsWhileOthersMakeRoom) {
    ShapeCache cache(50'000);
    for (std::size_t frame = 0; frame < 2000; ++frame) {
        for (char const* const label : {"a", "b", "a", "c"}) {
            auto const& found = cache.Find(1, label);
            if (found == nullptr)
                cache.Add(1, label, TextOfGlyphs(static_cast<std::size_t>(*label)));
            else
                ASSERT_EQ(found->shaped.glyphs.size(), static_cast<std::size_t>(*label));
        }
        std::string const counter = std::to_string(frame);
        ASSERT_THAT(cache.Find(1, counter), IsNull());
        cache.Add(1, counter, TextOfGlyphs(1));
    }
    EXPECT_THAT(cache.Find(1, "a"), NotNull());
}
