// From UTF-8 to glyphs with places: lines, tabs, directions, marks, fallback.
#include "Font.h"
#include "TextShaper.h"

#include <ReferenceText.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using namespace zarvex::zx3D;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kSize = 20;

class TextLayoutTest : public testing::Test {
protected:
    ShapedText Shape(std::string_view utf8) { return m_shaper.Shape(utf8, m_font); }
    int WidthOf(std::string_view utf8) { return Shape(utf8).width; }
    int LineHeight() const { return Metrics().ascender - Metrics().descender; }
    FaceMetrics const& Metrics() const { return m_font.GetPrimaryFace().GetMetrics(); }

    /// A font that lacks much of what the default font has.
    static std::string MonoFontFile() {
        std::string file = DEFAULT_FONT_FILE;
        return file.replace(file.rfind("DejaVuSans"), 10, "DejaVuSansMono");
    }

    /// The glyphs of a character string, in its order.
    static std::vector<std::uint32_t> GlyphsOf(std::u32string_view characters) {
        std::vector<std::uint32_t> glyphs;
        for (char32_t const c : characters)
            glyphs.push_back(ReferenceGlyphIndex(DEFAULT_FONT_FILE, c));
        return glyphs;
    }

    /// The glyphs of a text from left to right.
    static std::vector<std::uint32_t> GlyphsOf(ShapedText const& text) {
        std::vector<std::uint32_t> glyphs;
        for (ShapedGlyph const& glyph : text.glyphs)
            glyphs.push_back(glyph.glyph);
        return glyphs;
    }

    FaceLoader m_loader;
    SystemFonts m_systemFonts;
    Font m_font{1, m_loader.Load(DefaultFontData(), 0, kSize), m_loader, m_systemFonts};
    TextShaper m_shaper;
};

} // namespace

TEST_F(TextLayoutTest, AnEmptyTextHasNothing) {
    ShapedText const text = Shape("");
    EXPECT_THAT(text.lines, IsEmpty());
    EXPECT_THAT(text.glyphs, IsEmpty());
    EXPECT_EQ(text.width, 0);
    EXPECT_EQ(text.height, 0);
}

TEST_F(TextLayoutTest, ALineIsAsWideAsItsAdvancesAndAsHighAsTheFont) {
    ShapedText const text = Shape("AVAST");
    ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, kSize, "AVAST");
    EXPECT_EQ(text.width, reference.width);
    EXPECT_EQ(text.height, reference.ascender - reference.descender);
    EXPECT_EQ(GlyphsOf(text), GlyphsOf(U"AVAST"));
    for (ShapedGlyph const& glyph : text.glyphs)
        EXPECT_EQ(glyph.y, reference.ascender);
}

TEST_F(TextLayoutTest, LettersAreKerned) {
    EXPECT_LT(WidthOf("AV"), WidthOf("A") + WidthOf("V"));
}

TEST_F(TextLayoutTest, LigaturesAreOneGlyph) {
    EXPECT_EQ(Shape("fi").glyphs.size(), 1u);
}

TEST_F(TextLayoutTest, ALineFeedStartsALine) {
    ShapedText const text = Shape("a\nlonger\nb");
    ASSERT_EQ(text.lines.size(), 3u);
    EXPECT_EQ(text.width, WidthOf("longer"));
    EXPECT_EQ(text.lines[0].width, WidthOf("a"));
    EXPECT_EQ(text.lines[1].width, WidthOf("longer"));
    EXPECT_EQ(text.height, 3 * LineHeight() + 2 * Metrics().lineGap);
    EXPECT_EQ(text.glyphs.back().y, Metrics().ascender + 2 * (LineHeight() + Metrics().lineGap));
}

TEST_F(TextLayoutTest, EmptyLinesCount) {
    EXPECT_EQ(Shape("\n").lines.size(), 2u);
    EXPECT_EQ(Shape("a\n\nb").lines.size(), 3u);
    EXPECT_EQ(Shape("a\n").height, 2 * LineHeight() + Metrics().lineGap);
}

TEST_F(TextLayoutTest, OtherControlCharactersAreLeftOut) {
    EXPECT_EQ(GlyphsOf(Shape("a\r\nb")), GlyphsOf(U"ab"));
    EXPECT_EQ(GlyphsOf(Shape(std::string_view("\x01"
                                              "a\0b\x7F\x1F\xC2\x85",
                                              8))),
              GlyphsOf(U"ab"));
}

TEST_F(TextLayoutTest, UnicodeLineSeparatorsAreLineFeeds) {
    EXPECT_EQ(Shape("a\u2028b\u2029c").lines.size(), 3u);
}

TEST_F(TextLayoutTest, ATabGoesToTheNextMultipleOfEightBlanks) {
    int const stop = 8 * WidthOf(" ");
    for (std::string const before : {"", "a", "abcdef"}) {
        ShapedText const text = Shape(before + "\tx");
        int const expected = (WidthOf(before) / stop + 1) * stop;
        EXPECT_EQ(text.glyphs.back().x, expected) << before;
        EXPECT_EQ(text.width, expected + WidthOf("x")) << before;
    }
    EXPECT_EQ(WidthOf("\t\t"), 2 * stop);
    EXPECT_EQ(Shape("a\tb\tc\n\tb\tc").lines[0].width, Shape("a\tb\tc\n\tb\tc").lines[1].width);
}

TEST_F(TextLayoutTest, HebrewRunsFromTheRight) {
    EXPECT_EQ(GlyphsOf(Shape("שלום")), GlyphsOf(U"םולש"));
}

TEST_F(TextLayoutTest, NumbersAndLatinWithinHebrewRunFromTheLeft) {
    EXPECT_EQ(GlyphsOf(Shape("אב 12 cd")), GlyphsOf(U"cd 12 בא"));
    EXPECT_EQ(GlyphsOf(Shape("ab אב cd")), GlyphsOf(U"ab בא cd"));
}

TEST_F(TextLayoutTest, BracketsWithinHebrewAreMirrored) {
    EXPECT_EQ(GlyphsOf(Shape("א(ב)")), GlyphsOf(U"(ב)א"));
}

TEST_F(TextLayoutTest, TabsOfARightToLeftLineCountFromItsRight) {
    int const stop = 8 * WidthOf(" ");
    ShapedText const text = Shape("א\tב");
    EXPECT_EQ(GlyphsOf(text), GlyphsOf(U"בא"));
    EXPECT_EQ(text.width, stop + WidthOf("ב"));
    EXPECT_EQ(text.glyphs[1].x, text.width - WidthOf("א"));
}

TEST_F(TextLayoutTest, ArabicLettersJoin) {
    // Initial, medial and final form of beh, from the right.
    EXPECT_EQ(GlyphsOf(Shape("ببب")), GlyphsOf(U"\uFE90\uFE92\uFE91"));
}

TEST_F(TextLayoutTest, DirectionsAreFoundLineByLine) {
    ShapedText const text = Shape("אב\nab");
    EXPECT_EQ(GlyphsOf(text), GlyphsOf(U"באab"));
}

TEST_F(TextLayoutTest, MarksSitOnTheirLetter) {
    EXPECT_EQ(GlyphsOf(Shape("e\u0301")), GlyphsOf(U"é"));
    EXPECT_EQ(WidthOf("q\u0303"), WidthOf("q"));
    ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, kSize, "q\u0303");
    ShapedText const text = Shape("q\u0303");
    ASSERT_EQ(text.glyphs.size(), 2u);
    EXPECT_EQ(text.glyphs[1].glyph, reference.glyphs[1].index);
}

TEST_F(TextLayoutTest, AJoinerStaysInvisible) {
    EXPECT_EQ(WidthOf("a\u200Db"), WidthOf("ab"));
    EXPECT_EQ(WidthOf("a\uFE0F"), WidthOf("a"));
}

TEST_F(TextLayoutTest, ACharacterThatNoFontHasShowsTheFontsOwnMark) {
    // From a private area.
    ShapedText const text = Shape("a\U0010FFFDb");
    ASSERT_EQ(text.glyphs.size(), 3u);
    EXPECT_EQ(text.glyphs[1].glyph, 0u);
    EXPECT_EQ(text.glyphs[1].face, 0u);
    EXPECT_GT(WidthOf("\U0010FFFD"), 0);
}

TEST_F(TextLayoutTest, MalformedBytesShowTheReplacementCharacter) {
    EXPECT_EQ(GlyphsOf(Shape("a\xFF"
                             "b")),
              GlyphsOf(U"a\uFFFDb"));
}

TEST_F(TextLayoutTest, LettersThatTheFontLacksComeFromAnother) {
    Font font(2, m_loader.Load(*ReadFontFile(MonoFontFile()), 0, kSize), m_loader, m_systemFonts);
    ASSERT_FALSE(font.HasGlyph(0, U'ש'));
    ShapedText const text = m_shaper.Shape("aשb", font);
    ASSERT_EQ(text.glyphs.size(), 3u);
    EXPECT_EQ(text.glyphs[0].face, 0u);
    EXPECT_NE(text.glyphs[1].face, 0u);
    EXPECT_NE(text.glyphs[1].glyph, 0u);
    EXPECT_EQ(text.glyphs[2].face, 0u);
    std::size_t const faces = font.GetFaces().size();
    m_shaper.Shape("לום", font);
    EXPECT_EQ(font.GetFaces().size(), faces) << "a face was loaded twice";
}

TEST_F(TextLayoutTest, AMarkThatTheFontLacksTakesItsLetterAlong) {
    Font font(2, m_loader.Load(*ReadFontFile(MonoFontFile()), 0, kSize), m_loader, m_systemFonts);
    ASSERT_FALSE(font.HasGlyph(0, U'\u20D7'));
    ShapedText const text = m_shaper.Shape("ax\u20D7", font);
    ASSERT_EQ(text.glyphs.size(), 3u);
    EXPECT_EQ(text.glyphs[0].face, 0u);
    EXPECT_NE(text.glyphs[1].face, 0u);
    EXPECT_EQ(text.glyphs[2].face, text.glyphs[1].face);
    EXPECT_NE(text.glyphs[2].glyph, 0u);
}

TEST_F(TextLayoutTest, TheNumberOfFacesIsBounded) {
    for (char32_t c = 0x20; c < 0x30000; c += 5)
        m_font.FindFace(c);
    EXPECT_LE(m_font.GetFaces().size(), 33u);
}

TEST_F(TextLayoutTest, LongLinesKeepTheirPlacesInBounds) {
    Font large(3, m_loader.Load(DefaultFontData(), 0, 512), m_loader, m_systemFonts);
    ShapedText const text = m_shaper.Shape(std::string(65'536, 'W'), large);
    EXPECT_LE(text.width, kMaxTextExtent);
    for (ShapedGlyph const& glyph : text.glyphs)
        ASSERT_LE(glyph.x, kMaxTextExtent);
    ShapedText const lines = m_shaper.Shape(std::string(65'535, '\n') + 'W', large);
    EXPECT_EQ(lines.lines.size(), 65'536u);
    EXPECT_LE(lines.height, kMaxTextExtent);
}

TEST_F(TextLayoutTest, AnyBytesAreLaidOut) {
    std::uint32_t state = 1;
    auto const next = [&state] { return state = state * 1664525 + 1013904223; };
    for (int i = 0; i < 300; ++i) {
        std::string bytes(1 + next() % 200, ' ');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(next() >> 24); });
        ShapedText const text = Shape(bytes);
        std::size_t glyphs = 0;
        for (ShapedLine const& line : text.lines)
            glyphs += line.glyphCount;
        EXPECT_EQ(glyphs, text.glyphs.size());
    }
}

TEST_F(TextLayoutTest, PilesOfMarksAndDirectionsAreLaidOutInTime) {
    std::string marks = "e", turns, isolates;
    for (int i = 0; i < 20'000; ++i) {
        marks += "\u20D7";
        turns += i % 2 == 0 ? "אa" : "1\u202E";
        isolates += "\u2067(";
    }
    EXPECT_FALSE(Shape(marks).glyphs.empty());
    EXPECT_FALSE(Shape(turns).glyphs.empty());
    EXPECT_FALSE(Shape(isolates).glyphs.empty());
}
