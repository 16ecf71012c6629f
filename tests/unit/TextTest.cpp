// The operations on fonts and texts: what they ask of bgfx, what they keep, what they refuse.
#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <Fixtures.h>
#include <ReferenceText.h>

#include <QTemporaryDir>

#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

using namespace zarvex::zx3D;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

struct Vertex {
    float x, y;
    std::int16_t u, v;
    std::uint8_t color[4];
};

/// A label whose parts may be left as they are.
struct Label {
    std::string text;
    float x = 0.0f;
    float y = 0.0f;
    std::uint32_t rgba = 0xffffffff;
    float horizontal = 0.0f;
    float vertical = 0.0f;
    std::uint16_t view = 0;
    std::int32_t depth = 0;
};

class TextTest : public ContextFixture {
protected:
    void SetUp() override {
        ContextFixture::SetUp();
        m_font = LoadDefaultFont(16).value();
    }
    void TearDown() override {
        DestroyFont(m_font);
        ContextFixture::TearDown();
    }

    /// Draws a label as one draws one for a frame.
    void Draw(Label const& label) {
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
        SetPenPosition(text, label.x, label.y);
        SetTextColor(text, label.rgba);
        AppendText(text, label.text.data(), label.text.data() + label.text.size());
        AlignText(text, label.horizontal, label.vertical);
        SubmitTextBuffer(text, label.view, label.depth);
        DestroyTextBuffer(text);
    }

    /// The draws of a label, with nothing else in the records.
    std::vector<recorder::Draw> DrawsOf(Label const& label) {
        recorder::ClearCalls();
        Draw(label);
        return recorder::Draws();
    }

    /// The top left corner of a label's first glyph.
    Vertex FirstCornerOf(Label const& label) { return DrawsOf(label).at(0).VerticesAs<Vertex>().at(0); }

    FontHandle m_font;
};

std::size_t QuadCount(recorder::Draw const& draw) {
    return draw.vertices.size() / (4 * sizeof(Vertex));
}

} // namespace

// What is submitted.

TEST_F(TextTest, TheFirstTextCreatesWhatAllTextsShare) {
    Draw({"a"});
    EXPECT_THAT(recorder::CallNames(),
                testing::IsSupersetOf({"createProgram", "createUniform", "createIndexBuffer",
                                       "createTexture2D", "updateTexture2D"}));
    auto const indices = recorder::CallsNamed("createIndexBuffer").at(0).PayloadAs<std::uint16_t>();
    ASSERT_THAT(indices, SizeIs(16'384 * 6));
    for (std::size_t i = 0; i < indices.size(); ++i) {
        constexpr std::uint16_t corners[] = {0, 1, 2, 2, 3, 0};
        ASSERT_EQ(indices[i], i / 6 * 4 + corners[i % 6]);
    }
}

TEST_F(TextTest, ATextIsOneDrawOverWhatIsThere) {
    Draw({"a"});
    auto const draws = DrawsOf({.text = "a label", .view = 7, .depth = 5});
    ASSERT_THAT(draws, SizeIs(1));
    EXPECT_EQ(draws[0].view, 7);
    EXPECT_EQ(draws[0].depth, 5u);
    EXPECT_EQ(draws[0].flags, BGFX_DISCARD_ALL);
    EXPECT_EQ(draws[0].state,
              BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                  BGFX_STATE_BLEND_FUNC(BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA));
    EXPECT_FALSE(draws[0].transform);
    EXPECT_EQ(draws[0].vertexBuffer, "transient");
    EXPECT_EQ(QuadCount(draws[0]), 6u) << "the blank has no ink";
    EXPECT_EQ(draws[0].textures.size(), 1u);
    EXPECT_EQ(recorder::CallsNamed("setIndexBuffer").at(0).arguments, draws[0].indexBuffer + ", 0, 36");
}

TEST_F(TextTest, NegativeDepthsCountAsZero) {
    EXPECT_EQ(DrawsOf({.text = "a", .depth = -1}).at(0).depth, 0u);
}

TEST_F(TextTest, GlyphsLandWhereFreeTypePutsThem) {
    std::string const text = "AVAST, q\u0303 (ij)";
    ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, text);
    auto const vertices = DrawsOf({.text = text, .x = 30.0f, .y = 50.0f}).at(0).VerticesAs<Vertex>();
    ASSERT_EQ(vertices.size(), 4 * reference.glyphs.size());
    for (std::size_t i = 0; i < reference.glyphs.size(); ++i) {
        ReferenceGlyph const& glyph = reference.glyphs[i];
        Vertex const& topLeft = vertices[4 * i];
        Vertex const& bottomRight = vertices[4 * i + 2];
        EXPECT_EQ(topLeft.x, static_cast<float>(30 + glyph.x)) << i;
        EXPECT_EQ(topLeft.y, static_cast<float>(50 + reference.ascender + glyph.y)) << i;
        EXPECT_EQ(bottomRight.x - topLeft.x, static_cast<float>(glyph.width)) << i;
        EXPECT_EQ(bottomRight.y - topLeft.y, static_cast<float>(glyph.height)) << i;
        EXPECT_EQ(bottomRight.u - topLeft.u, 16 * glyph.width) << i;
        EXPECT_EQ(bottomRight.v - topLeft.v, 16 * glyph.height) << i;
        EXPECT_EQ(vertices[4 * i + 1].x, bottomRight.x);
        EXPECT_EQ(vertices[4 * i + 1].y, topLeft.y);
        EXPECT_EQ(vertices[4 * i + 3].x, topLeft.x);
        EXPECT_EQ(vertices[4 * i + 3].y, bottomRight.y);
    }
}

TEST_F(TextTest, GlyphsAreUploadedAsFreeTypeDrawsThem) {
    ReferenceGlyph const glyph = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "g").glyphs.at(0);
    Draw({"g"});
    auto const uploads = recorder::CallsNamed("updateTexture2D");
    ASSERT_THAT(uploads, SizeIs(1));
    auto const texels = uploads[0].PayloadAs<std::uint8_t>();
    int const stride = glyph.width + 2;
    ASSERT_EQ(texels.size(), static_cast<std::size_t>(stride * (glyph.height + 2)));
    for (int y = 0; y < glyph.height; ++y) {
        for (int x = 0; x < glyph.width; ++x)
            ASSERT_EQ(texels[(y + 1) * stride + x + 1], glyph.coverage[y * glyph.width + x]);
    }
}

TEST_F(TextTest, TheColorIsThatOfEveryVertex) {
    for (Vertex const& vertex : DrawsOf({.text = "ab", .rgba = 0x12345678}).at(0).VerticesAs<Vertex>())
        EXPECT_THAT(vertex.color, ElementsAre(0x12, 0x34, 0x56, 0x78));
}

TEST_F(TextTest, AppendedPartsMakeOneText) {
    Draw({"fi"});
    recorder::ClearCalls();
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
    AppendText(text, "f");
    AppendText(text, "i");
    SubmitTextBuffer(text, 0, 0);
    DestroyTextBuffer(text);
    EXPECT_EQ(QuadCount(recorder::Draws().at(0)), 1u) << "the ligature";
}

TEST_F(TextTest, AppendedTextEndsAtItsEndOrAtTheTerminatingZero) {
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
    char const letters[] = "abcd\0efg";
    AppendText(text, letters, letters + 2);
    AppendText(text, letters);
    AppendText(text, letters + 5, letters + 5);
    AppendText(text, letters + 5, letters + 4);
    AppendText(text, nullptr);
    AppendText(text, nullptr, letters);
    SubmitTextBuffer(text, 0, 0);
    DestroyTextBuffer(text);
    EXPECT_EQ(QuadCount(recorder::Draws().at(0)), 6u);
}

TEST_F(TextTest, AZeroByteWithinTheTextIsLeftOut) {
    EXPECT_EQ(QuadCount(DrawsOf({.text = std::string("a\0b", 3)}).at(0)), 2u);
}

TEST_F(TextTest, EmptyAndBlankTextsDrawNothing) {
    EXPECT_THAT(DrawsOf({.text = ""}), IsEmpty());
    EXPECT_THAT(DrawsOf({.text = " \t\n "}), IsEmpty());
}

// Alignment.

TEST_F(TextTest, AlignmentShiftsTheBlockByItsSizeAndEachLineWithinIt) {
    FontInfo const info = GetFontInfo(m_font);
    int const lineHeight = static_cast<int>(info.ascender - info.descender);
    ReferenceLine const shortLine = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "m");
    int const width = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "nnnn").width;
    int const height = 2 * lineHeight + static_cast<int>(info.lineGap);
    for (float const horizontal : {0.0f, 0.5f, 1.0f}) {
        for (float const vertical : {0.0f, 0.5f, 1.0f}) {
            Vertex const corner = FirstCornerOf({.text = "m\nnnnn",
                                                 .x = 100.0f,
                                                 .y = 200.0f,
                                                 .horizontal = horizontal,
                                                 .vertical = vertical});
            double const left = std::floor(100.0 - horizontal * width + 0.5);
            double const shift = std::floor(horizontal * (width - shortLine.width) + 0.5);
            double const top = std::floor(200.0 - vertical * height + 0.5);
            EXPECT_EQ(corner.x, left + shift + shortLine.glyphs[0].x);
            EXPECT_EQ(corner.y, top + info.ascender + shortLine.glyphs[0].y);
        }
    }
}

TEST_F(TextTest, PensBetweenPixelsAreRounded) {
    float const left = FirstCornerOf({.text = "a", .x = 10.0f}).x;
    EXPECT_EQ(FirstCornerOf({.text = "a", .x = 10.49f}).x, left);
    EXPECT_EQ(FirstCornerOf({.text = "a", .x = 10.5f}).x, left + 1.0f);
    EXPECT_EQ(FirstCornerOf({.text = "a", .x = 9.5f}).x, left);
    EXPECT_EQ(FirstCornerOf({.text = "a", .x = -10.5f}).x, left - 20.0f);
}

TEST_F(TextTest, PensAndFactorsThatAreNowhereDrawNothing) {
    // Far away, and back by the factor.
    EXPECT_THAT(DrawsOf({.text = "a\nbb", .x = 3e38f, .horizontal = 1e37f}), IsEmpty());
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    for (float const nowhere : {nan, infinity, -infinity, 3e38f, -3e38f, 1e9f}) {
        EXPECT_THAT(DrawsOf({.text = "a\nbb", .x = nowhere}), IsEmpty());
        EXPECT_THAT(DrawsOf({.text = "a\nbb", .y = nowhere}), IsEmpty());
        EXPECT_THAT(DrawsOf({.text = "a\nbb", .horizontal = nowhere}), IsEmpty());
        EXPECT_THAT(DrawsOf({.text = "a\nbb", .vertical = nowhere}), IsEmpty());
    }
}

// What is kept.

TEST_F(TextTest, ATextDrawnBeforeIsNotUploadedAgain) {
    Draw({"a label"});
    recorder::ClearCalls();
    Draw({"a label"});
    EXPECT_THAT(recorder::CallNames(), ElementsAre("allocTransientVertexBuffer", "setState", "setTexture",
                                                   "setVertexBuffer", "setIndexBuffer", "submit"));
}

TEST_F(TextTest, OnlyNewGlyphsOfANewTextAreUploaded) {
    Draw({"abc"});
    recorder::ClearCalls();
    Draw({"cabd"});
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 1u);
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), 0u);
}

TEST_F(TextTest, ATransientTextIsEmptyAfterItsSubmission) {
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
    AppendText(text, "a");
    SubmitTextBuffer(text, 0, 0);
    SubmitTextBuffer(text, 0, 0);
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
    AppendText(text, "bc");
    SubmitTextBuffer(text, 0, 0);
    EXPECT_EQ(QuadCount(recorder::Draws().at(1)), 2u);
    DestroyTextBuffer(text);
}

TEST_F(TextTest, StaticAndDynamicTextsAreDrawnAgainAndAgain) {
    for (TextBufferType const type : {TextBufferType::Static, TextBufferType::Dynamic}) {
        TextBufferHandle const text = CreateTextBuffer(type, m_font);
        AppendText(text, "ab");
        recorder::ClearCalls();
        for (int i = 0; i < 3; ++i)
            SubmitTextBuffer(text, 0, 0);
        EXPECT_THAT(recorder::Draws(), SizeIs(3));
        AppendText(text, "c");
        SubmitTextBuffer(text, 0, 0);
        EXPECT_EQ(QuadCount(recorder::Draws().at(3)), 3u);
        DestroyTextBuffer(text);
    }
}

TEST_F(TextTest, TheNextBufferBeginsFresh) {
    Draw({.text = "abc", .x = 50.0f, .y = 60.0f, .rgba = 0x11223344, .horizontal = 1.0f, .vertical = 1.0f});
    Vertex const expected = FirstCornerOf({.text = "a"});
    recorder::ClearCalls();
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
    SubmitTextBuffer(text, 0, 0);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    AppendText(text, "a");
    SubmitTextBuffer(text, 0, 0);
    DestroyTextBuffer(text);
    Vertex const corner = recorder::Draws().at(0).VerticesAs<Vertex>().at(0);
    EXPECT_EQ(corner.x, expected.x);
    EXPECT_EQ(corner.y, expected.y);
    EXPECT_THAT(corner.color, ElementsAre(255, 255, 255, 255));
}

// Handles.

TEST_F(TextTest, UnknownTextsDoNothing) {
    TextBufferHandle const destroyed = CreateTextBuffer(TextBufferType::Static, m_font);
    DestroyTextBuffer(destroyed);
    for (TextBufferHandle const text : {TextBufferHandle(), destroyed, TextBufferHandle{12345}}) {
        SetPenPosition(text, 1.0f, 2.0f);
        SetTextColor(text, 3);
        AppendText(text, "a");
        AlignText(text, 0.5f, 0.5f);
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(TextTest, AnUnknownFontDrawsNothing) {
    for (FontHandle const font : {FontHandle(), FontHandle{12345}}) {
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, font);
        EXPECT_NE(text.idx, TextBufferHandle().idx);
        AppendText(text, "a");
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
        DestroyFont(font);
        EXPECT_EQ(GetFontInfo(font).pixelSize, 0);
        EXPECT_EQ(GetFontInfo(font).ascender, 0.0f);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(TextTest, TextsOfADestroyedFontStayAndDrawNothing) {
    FontHandle const font = LoadDefaultFont(20).value();
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Static, font);
    AppendText(text, "abc");
    SubmitTextBuffer(text, 0, 0);
    DestroyFont(font);
    recorder::ClearCalls();
    SubmitTextBuffer(text, 0, 0);
    AppendText(text, "d");
    SubmitTextBuffer(text, 0, 0);
    // The same handle again, for another font.
    FontHandle const successor = LoadDefaultFont(30).value();
    EXPECT_EQ(successor.idx, font.idx);
    SubmitTextBuffer(text, 0, 0);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    DestroyTextBuffer(text);
    DestroyFont(successor);
}

TEST_F(TextTest, ThereAreNoMoreBuffersThanHandles) {
    std::vector<TextBufferHandle> texts;
    for (int i = 0; i < 65'535; ++i)
        texts.push_back(CreateTextBuffer(TextBufferType::Static, m_font));
    EXPECT_NE(texts.back().idx, TextBufferHandle().idx);
    EXPECT_EQ(CreateTextBuffer(TextBufferType::Static, m_font).idx, TextBufferHandle().idx);
    for (TextBufferHandle const text : texts)
        DestroyTextBuffer(text);
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Static, m_font);
    EXPECT_NE(text.idx, TextBufferHandle().idx);
    DestroyTextBuffer(text);
}

// Fonts.

TEST_F(TextTest, FontInfoIsThatOfTheFont) {
    ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "");
    FontInfo const info = GetFontInfo(m_font);
    EXPECT_EQ(info.pixelSize, 16);
    EXPECT_EQ(info.ascender, static_cast<float>(reference.ascender));
    EXPECT_EQ(info.descender, static_cast<float>(reference.descender));
    EXPECT_EQ(info.lineGap, static_cast<float>(reference.lineGap));
}

TEST_F(TextTest, EveryWayToLoadAFontGivesTheSameGlyphs) {
    std::ifstream file(DEFAULT_FONT_FILE, std::ios::binary);
    std::string const bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    auto const asBytes = std::as_bytes(std::span(bytes));
    for (auto const& font : {LoadFont(DEFAULT_FONT_FILE, 16), LoadFontFromMemory(asBytes, 16),
                             LoadSystemFont("DejaVu Sans", 16)}) {
        ASSERT_TRUE(font);
        EXPECT_EQ(GetFontInfo(*font).ascender, GetFontInfo(m_font).ascender);
        recorder::ClearCalls();
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, *font);
        AppendText(text, "W");
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
        auto const upload = recorder::CallsNamed("updateTexture2D").at(0).PayloadAs<std::uint8_t>();
        ReferenceGlyph const glyph = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "W").glyphs.at(0);
        EXPECT_EQ(upload.size(), static_cast<std::size_t>((glyph.width + 2) * (glyph.height + 2)));
        DestroyFont(*font);
    }
    EXPECT_THAT(m_callback.traces, IsEmpty());
}

TEST_F(TextTest, AnUnknownFamilyGivesTheNearestFont) {
    auto const font = LoadSystemFont("No Such Family Anywhere:bold", 16);
    ASSERT_TRUE(font);
    DestroyFont(*font);
}

TEST_F(TextTest, SizesOutOfRangeGiveNothingAndAMessage) {
    for (std::uint16_t const size : {0, 513, 65535}) {
        m_callback.traces.clear();
        EXPECT_FALSE(LoadDefaultFont(size));
        EXPECT_FALSE(LoadFont(DEFAULT_FONT_FILE, size));
        EXPECT_FALSE(LoadSystemFont("DejaVu Sans", size));
        EXPECT_THAT(m_callback.traces, SizeIs(3));
        EXPECT_THAT(m_callback.traces, testing::Each(HasSubstr("the size is not between 1 and 512")));
    }
}

TEST_F(TextTest, TheSmallestAndTheLargestFontAreDrawn) {
    for (std::uint16_t const size : {1, 512}) {
        FontHandle const font = LoadDefaultFont(size).value();
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, font);
        AppendText(text, "Wg");
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
        DestroyFont(font);
    }
    EXPECT_THAT(m_callback.traces, IsEmpty());
    EXPECT_THAT(recorder::Draws(), SizeIs(2));
}

TEST_F(TextTest, FilesThatAreNoFontsGiveNothingAndAMessage) {
    QTemporaryDir const folder;
    std::string const path = folder.filePath("font.ttf").toStdString();
    std::ofstream(path) << "no font";
    EXPECT_FALSE(LoadFont(path, 16));
    EXPECT_FALSE(LoadFont("/no/such/file", 16));
    EXPECT_FALSE(LoadFont(folder.path().toStdString(), 16));
    EXPECT_FALSE(LoadFont("/dev/zero", 16));
    EXPECT_FALSE(LoadFont("", 16));
    EXPECT_FALSE(LoadFontFromMemory({}, 16));
    EXPECT_THAT(m_callback.traces, SizeIs(6));
    std::filesystem::resize_file(path, (128u << 20) + 1);
    EXPECT_FALSE(LoadFont(path, 16));
    EXPECT_THAT(m_callback.traces.back(), HasSubstr("larger than 128 MiB"));
}

TEST_F(TextTest, FamiliesOfAnyLengthAndContentAreSurvived) {
    for (std::string const& family :
         {std::string(1'000'000, 'x'), std::string(":::=,\\-"), std::string("%s%n%p"), std::string("a\0b", 3),
          std::string("\xff\xfe")}) {
        if (auto const font = LoadSystemFont(family, 16))
            DestroyFont(*font);
    }
}

// Limits.

TEST_F(TextTest, ABufferTakes64KiBAndSaysWhatItLeavesOut) {
    std::string const million(1'000'000, 'x');
    auto const draws = DrawsOf({.text = million});
    std::size_t quads = 0;
    for (recorder::Draw const& draw : draws)
        quads += QuadCount(draw);
    EXPECT_EQ(quads, 65'536u);
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("934464 bytes are left out")));
}

TEST_F(TextTest, AMillionCharactersUpToTheTerminatingZeroAreBoundedTooWithOneMessage) {
    std::string const million(5'000'000, 'x');
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, m_font);
    AppendText(text, million.c_str());
    AppendText(text, "more");
    DestroyTextBuffer(text);
    EXPECT_THAT(m_callback.traces, SizeIs(1));
}

TEST_F(TextTest, MoreGlyphsThanIndicesReachTakeSeveralDraws) {
    auto const draws = DrawsOf({.text = std::string(40'000, 'x')});
    ASSERT_THAT(draws, SizeIs(3));
    EXPECT_EQ(QuadCount(draws[0]), 16'384u);
    EXPECT_EQ(QuadCount(draws[1]), 16'384u);
    EXPECT_EQ(QuadCount(draws[2]), 7'232u);
    auto const first = draws[1].VerticesAs<Vertex>().front().x;
    auto const before = draws[0].VerticesAs<Vertex>()[4 * 16'383].x;
    int const advance = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, "x").width;
    EXPECT_EQ(first - before, static_cast<float>(advance));
}

TEST_F(TextTest, MalformedTextsAreDrawn) {
    EXPECT_EQ(QuadCount(DrawsOf({.text = "\xff\xc0\x80 \xed\xa0\x80 \xf4\x90\x80\x80"}).at(0)), 10u);
}

TEST_F(TextTest, ViewsBeyondTheLastDrawNothing) {
    EXPECT_THAT(DrawsOf({.text = "a", .view = 255}), SizeIs(1));
    EXPECT_THAT(DrawsOf({.text = "a", .view = 256}), IsEmpty());
    EXPECT_THAT(DrawsOf({.text = "a", .view = 65535}), IsEmpty());
}

TEST_F(TextTest, WithoutTransientSpaceNothingIsDrawnAndOneMessageSaysSo) {
    Draw({"a label"});
    bgfx::VertexLayout layout;
    layout.begin().add(bgfx::Attrib::Position, 4, bgfx::AttribType::Float).end();
    std::uint32_t const rest = bgfx::getAvailTransientVertexBuffer(100'000'000, layout);
    bgfx::TransientVertexBuffer everything;
    bgfx::allocTransientVertexBuffer(&everything, rest - 20, layout);
    m_callback.traces.clear();
    EXPECT_THAT(DrawsOf({.text = "a label"}), IsEmpty());
    EXPECT_THAT(DrawsOf({.text = "a label"}), IsEmpty());
    EXPECT_EQ(recorder::CountCalls("setState"), 0u) << "left for the next draw";
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("transient")));
    EXPECT_THAT(DrawsOf({.text = "abcde"}), SizeIs(1)) << "what fits is drawn";
    bgfx::frame();
    EXPECT_THAT(DrawsOf({.text = "a label"}), SizeIs(1));
}

TEST_F(TextTest, AShaderThatBgfxRejectsDrawsNothingAndIsNotTriedInEveryFrame) {
    Configure([](recorder::Settings& settings) { settings.failingShader = 0; });
    Draw({"a"});
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    EXPECT_THAT(DrawsOf({.text = "a"}), IsEmpty());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

// Eviction.

namespace {

/// A letter of the Latin supplement, of Greek or of Cyrillic.
std::string Utf8(char32_t letter) {
    return {static_cast<char>(0xC0 | letter >> 6), static_cast<char>(0x80 | (letter & 0x3F))};
}

/// So many large letters, a frame for each, that no page stays which is not in use.
template<typename DrawInBetween>
void DrawLargeLetters(FontHandle font, DrawInBetween drawInBetween) {
    for (char32_t letter = 0x410; letter < 0x4C0; ++letter) {
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, font);
        AppendText(text, Utf8(letter).c_str());
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
        drawInBetween();
        bgfx::frame();
    }
}

} // namespace

TEST_F(TextTest, ATextInUseKeepsItsPage) {
    FontHandle const font = LoadDefaultFont(500).value();
    Draw({"a"});
    recorder::ClearCalls();
    DrawLargeLetters(font, [this] { Draw({"a"}); });
    EXPECT_GT(recorder::CountCalls("createTexture2D"), 16u) << "pages were meant to be replaced";
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0x4C0u - 0x410u);
    DestroyFont(font);
}

TEST_F(TextTest, ATextWhosePageWasReplacedIsUploadedAgain) {
    FontHandle const font = LoadDefaultFont(500).value();
    Draw({"a"});
    DrawLargeLetters(font, [] {});
    auto const draws = DrawsOf({.text = "a"});
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 1u);
    ASSERT_THAT(draws, SizeIs(1));
    EXPECT_EQ(QuadCount(draws[0]), 1u);
    DestroyFont(font);
}

TEST_F(TextTest, PagesAreReplacedAndNeverRewritten) {
    FontHandle const font = LoadDefaultFont(500).value();
    auto const draw = [font](char32_t letter) {
        TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, font);
        AppendText(text, Utf8(letter).c_str());
        SubmitTextBuffer(text, 0, 0);
        DestroyTextBuffer(text);
    };
    constexpr char32_t first = 0x410, last = 0x44F; // Cyrillic letters, some six a page
    for (int round = 0; round < 3; ++round) {
        for (char32_t letter = first; letter <= last; ++letter)
            draw(letter);
        for (char32_t letter = 0x391; letter <= 0x3A1; ++letter)
            draw(letter);
        for (char32_t letter = 0xC0; letter <= 0xFF; ++letter)
            draw(letter);
        bgfx::frame();
    }
    EXPECT_GT(recorder::CountCalls("createTexture2D"), 20u);
    std::map<std::string, std::vector<std::array<int, 4>>> writtenTo;
    std::size_t uploads = 0;
    for (recorder::Call const& call : recorder::Calls()) {
        if (call.name == "createTexture2D")
            writtenTo[call.result].clear();
        if (call.name != "updateTexture2D")
            continue;
        ++uploads;
        char texture[64];
        int x, y, width, height;
        ASSERT_EQ(std::sscanf(call.arguments.c_str(), "%63[^,], 0, 0, %d, %d, %d, %d", texture, &x, &y,
                              &width, &height),
                  5);
        for (auto const& [ox, oy, ow, oh] : writtenTo[texture])
            ASSERT_TRUE(x + width <= ox || ox + ow <= x || y + height <= oy || oy + oh <= y) << call.Text();
        writtenTo[texture].push_back({x, y, width, height});
    }
    EXPECT_GT(uploads, 150u);
    DestroyFont(font);
}

TEST_F(TextTest, ATextWithTooManyLargeGlyphsIsDrawnInPartWithOneMessage) {
    FontHandle const font = LoadDefaultFont(512).value();
    std::string letters;
    for (char32_t letter = 0x410; letter < 0x4FF; ++letter)
        letters += Utf8(letter);
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Static, font);
    AppendText(text, letters.c_str());
    for (int frame = 0; frame < 3; ++frame) {
        recorder::ClearCalls();
        SubmitTextBuffer(text, 0, 0);
        EXPECT_THAT(recorder::Draws(), SizeIs(16)) << "one draw for each page";
        bgfx::frame();
    }
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("too many large ones")));
    DestroyTextBuffer(text);
    DestroyFont(font);
    EXPECT_THAT(DrawsOf({.text = "after that"}), SizeIs(1));
}

// The context's life.

TEST_F(TextTest, WithoutAContextTextsAreKeptAndNotDrawn) {
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Static, m_font);
    AppendText(text, "abc");
    SubmitTextBuffer(text, 0, 0);
    Context::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    recorder::ClearCalls();
    SubmitTextBuffer(text, 0, 0);
    FontHandle const another = LoadDefaultFont(10).value();
    DestroyFont(another);
    EXPECT_THAT(recorder::Calls(), IsEmpty());

    ASSERT_TRUE(Context::Initialize(Context::GetOptions()));
    recorder::ClearCalls();
    SubmitTextBuffer(text, 0, 0);
    EXPECT_EQ(QuadCount(recorder::Draws().at(0)), 3u);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 3u);
    DestroyTextBuffer(text);
}

TEST_F(TextTest, AFontLoadedBeforeTheContextIsDrawnInIt) {
    Context::Shutdown();
    FontHandle const font = LoadDefaultFont(11).value();
    EXPECT_EQ(GetFontInfo(font).pixelSize, 11);
    ASSERT_TRUE(Context::Initialize(Context::GetOptions()));
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, font);
    AppendText(text, "abc");
    SubmitTextBuffer(text, 0, 0);
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
    DestroyTextBuffer(text);
    DestroyFont(font);
}

TEST_F(TextTest, ATextIsMeasuredAsItIsAligned) {
    for (std::string const text : {"AVAST", "-1250.5", "x", " "}) {
        ReferenceLine const reference = ShapeReferenceLine(DEFAULT_FONT_FILE, 16, text);
        TextSize const size = MeasureText(m_font, text.c_str());
        EXPECT_EQ(size.width, reference.width) << text;
        EXPECT_EQ(size.height, reference.ascender - reference.descender) << text;
    }
    TextSize const line = MeasureText(m_font, "ab");
    TextSize const block = MeasureText(m_font, "a\nab\nb");
    EXPECT_EQ(block.width, line.width);
    EXPECT_EQ(block.height, 3 * line.height + static_cast<int>(2 * GetFontInfo(m_font).lineGap));
}

TEST_F(TextTest, AMeasuredTextEndsAtItsEndOrAtTheTerminatingZero) {
    char const text[] = "abcdef";
    EXPECT_EQ(MeasureText(m_font, text, text + 3).width, MeasureText(m_font, "abc").width);
    for (TextSize const& nothing :
         {MeasureText(m_font, ""), MeasureText(m_font, nullptr), MeasureText(m_font, text, text),
          MeasureText(m_font, text + 2, text), MeasureText({}, text), MeasureText({1234}, text)}) {
        EXPECT_EQ(nothing.width, 0);
        EXPECT_EQ(nothing.height, 0);
    }
    std::string const tooLong(100'000, 'x'); // a buffer takes 64 KiB
    EXPECT_EQ(MeasureText(m_font, tooLong.c_str()).width,
              MeasureText(m_font, tooLong.substr(0, 64 << 10).c_str()).width);
}

TEST_F(TextTest, MeasuringNeedsNoContext) {
    int const width = MeasureText(m_font, "abc").width;
    Context::Shutdown();
    EXPECT_EQ(MeasureText(m_font, "abc").width, width);
    EXPECT_GT(MeasureText(m_font, "not measured before").width, width);
}
