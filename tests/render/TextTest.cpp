// Text on the screen, compared with glyphs that FreeType draws into an image.
#include "RenderTest.h"
#include "TextPainting.h"

#include <ReferenceText.h>

#include <zx3D/Text.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

zx3DQt::BGFXViewClearOptions const kClear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000ff, 1.0f, 0};

class TextTest : public RenderTest {
protected:
    TextTest() : RenderTest(QSize(240, 120)) {}

    /// What is on the target after one text in a view of one colour.
    QImage DrawOne(TextLabel const& label, QColor const& background = Qt::black) {
        StartFrame();
        SubmitPixelView(background);
        Draw(label);
        return Present();
    }

    /// The same, painted by hand: lines below each other from the pen on.
    QImage PaintOne(TextLabel const& label, std::vector<std::string> const& lines,
                    QColor const& background = Qt::black) {
        QImage image = Canvas(background);
        int top = static_cast<int>(label.y);
        for (std::string const& text : lines) {
            ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, label.pixelSize, text);
            Paint(image, line, static_cast<int>(label.x), top + line.ascender, label.color);
            top += line.ascender - line.descender + line.lineGap;
        }
        return image;
    }
};

} // namespace

TEST_P(TextTest, ALabelIsExactlyWhatFreeTypeDraws) {
    // Those of 12 pixels at the pixel ratios 1, 1.25, 1.5 and 2 among them.
    for (int const size : {8, 11, 12, 13, 14, 15, 18, 24, 40}) {
        TextLabel const label{.text = "AVAST (q̃j) 0,25", .x = 7, .y = 20, .pixelSize = size};
        EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {label.text}), kExact)) << size;
    }
}

TEST_P(TextTest, ColorAndOpacityBlendOverTheBackground) {
    for (QColor const& background : {QColor(255, 255, 255), QColor(30, 90, 200, 128), QColor(0, 0, 0, 0)}) {
        for (QColor const& color : {QColor(0, 0, 0), QColor(200, 100, 20), QColor(255, 0, 128, 100)}) {
            TextLabel const label{.text = "Label 12", .x = 7, .y = 20, .pixelSize = 24, .color = color};
            EXPECT_TRUE(Matches(DrawOne(label, background), PaintOne(label, {label.text}, background)));
        }
    }
}

TEST_P(TextTest, ATransparentTextChangesNothing) {
    TextLabel const label{.text = "Label", .x = 7, .y = 20, .color = QColor(255, 255, 255, 0)};
    EXPECT_TRUE(Matches(DrawOne(label, Qt::darkCyan), Canvas(Qt::darkCyan), kExact));
}

TEST_P(TextTest, LinesStandBelowEachOther) {
    TextLabel const label{.text = "one\n\nthree\r\nfour", .x = 5, .y = 3};
    EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {"one", "", "three", "four"}), kExact));
}

TEST_P(TextTest, HebrewRunsFromRightToLeft) {
    TextLabel const label{.text = "שלום עולם", .x = 5, .y = 30, .pixelSize = 20};
    EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {label.text}), kExact));
}

TEST_P(TextTest, ArabicLettersJoin) {
    TextLabel const label{.text = "السلامعليكم", .x = 5, .y = 30, .pixelSize = 20};
    EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {label.text}), kExact));
}

TEST_P(TextTest, MarksSitOnTheirLetters) {
    TextLabel const label{
        .text = "e\u0301 a\u030A\u0301 q\u0303 \u05E9\u05C1", .x = 5, .y = 30, .pixelSize = 30};
    QImage image = Canvas();
    int x = 5;
    // Hebrew is a line of its own to the reference.
    for (std::string const part : {"e\u0301 a\u030A\u0301 q\u0303 ", "\u05E9\u05C1"}) {
        ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, 30, part);
        Paint(image, line, x, 30 + line.ascender, label.color);
        x += line.width;
    }
    EXPECT_TRUE(Matches(DrawOne(label), image, kExact));
}

TEST_P(TextTest, ACharacterThatNoFontHasShowsTheFontsMark) {
    TextLabel const label{.text = "a\U0010FFFDb", .x = 5, .y = 30, .pixelSize = 20};
    EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {label.text}), kExact));
}

TEST_P(TextTest, TabsAlignColumns) {
    TextLabel const label{.text = "a\tb", .x = 5, .y = 30};
    QImage image = PaintOne(label, {"a"});
    ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, label.pixelSize, "b");
    int const stop = 8 * ShapeReferenceLine(DEFAULT_FONT_FILE, label.pixelSize, " ").width;
    Paint(image, line, 5 + stop, 30 + line.ascender, label.color);
    EXPECT_TRUE(Matches(DrawOne(label), image, kExact));
}

TEST_P(TextTest, AlignmentPlacesTheBlockAndItsLines) {
    constexpr int penX = 120, penY = 60, size = 15;
    ReferenceLine const lines[] = {ShapeReferenceLine(DEFAULT_FONT_FILE, size, "Ag"),
                                   ShapeReferenceLine(DEFAULT_FONT_FILE, size, "longer line")};
    int const lineHeight = lines[0].ascender - lines[0].descender;
    int const width = std::max(lines[0].width, lines[1].width);
    int const height = 2 * lineHeight + lines[0].lineGap;
    for (float const horizontal : {0.0f, 0.5f, 1.0f}) {
        for (float const vertical : {0.0f, 0.5f, 1.0f}) {
            QImage expected = Canvas();
            int const left =
                static_cast<int>(std::floor(penX - horizontal * static_cast<float>(width) + 0.5f));
            int baseline = static_cast<int>(std::floor(penY - vertical * static_cast<float>(height) + 0.5f)) +
                           lines[0].ascender;
            for (ReferenceLine const& line : lines) {
                auto const room = static_cast<float>(width - line.width);
                Paint(expected, line, left + static_cast<int>(std::floor(horizontal * room + 0.5f)), baseline,
                      Qt::white);
                baseline += lineHeight + line.lineGap;
            }
            QImage const actual = DrawOne({.text = "Ag\nlonger line",
                                           .x = penX,
                                           .y = penY,
                                           .pixelSize = size,
                                           .horizontal = horizontal,
                                           .vertical = vertical});
            EXPECT_TRUE(Matches(actual, expected, kExact)) << horizontal << ", " << vertical;
        }
    }
}

TEST_P(TextTest, PlacesCountFromTheTargetsCornerAndTheViewCuts) {
    QRect const viewport(30, 20, 100, 50);
    TextLabel const label{.text = "cut at both ends", .x = 10, .y = 40, .pixelSize = 20};
    StartFrame();
    PixelView(m_target.GetViewport(), Qt::black, 0).Submit(m_target.GetFrameBuffer());
    bgfx::touch(0);
    PixelView(viewport, Qt::darkBlue, 1).Submit(m_target.GetFrameBuffer());
    Draw(label, 1);
    QImage const actual = Present();
    QImage const whole = PaintOne(label, {label.text}, Qt::darkBlue);
    QImage expected = Canvas();
    for (int y = viewport.top(); y <= viewport.bottom(); ++y) {
        for (int x = viewport.left(); x <= viewport.right(); ++x)
            expected.setPixel(x, y, whole.pixel(x, y));
    }
    EXPECT_TRUE(Matches(actual, expected));
}

TEST_P(TextTest, InAViewOfTheDefaultModeTextIsOverWhatIsDrawnAfterIt) {
    auto const draw = [this](bgfx::ViewMode::Enum mode, bool textFirst, auto const& drawMesh) {
        StartFrame();
        zx3DQt::BGFXViewContext view(0, kClear, mode);
        view.SetViewport(m_target.GetViewport());
        view.SetOrthoProjectionFromRect(QRectF(m_target.GetViewport()), 0.0f, 1.0f, 0.0f);
        view.Submit(m_target.GetFrameBuffer());
        TextLabel const label{.text = "on top", .x = 20, .y = 20, .pixelSize = 40};
        if (textFirst)
            Draw(label);
        drawMesh(view);
        if (!textFirst)
            Draw(label);
        return Present();
    };
    using LitVertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
    zx3D::Color const color{0.8f, 0.5f, 0.2f, 0.7f};
    bx::Vec3 const normal(0.0f, 0.0f, 1.0f);
    LitVertex const vertices[] = {{{0.0f, 0.0f, 0.1f}, normal, color},
                                  {{240.0f, 0.0f, 0.1f}, normal, color},
                                  {{0.0f, 120.0f, 0.1f}, normal, color}};
    std::uint16_t const indices[] = {0, 1, 2};
    auto const opaque = [&](zx3DQt::BGFXViewContext const& view) {
        DrawRect(view, QRectF(10, 10, 100, 100), Qt::darkGreen, 0.1f);
    };
    auto const lit = [&](zx3DQt::BGFXViewContext const& view) {
        m_renderer.DrawTriangles(view, vertices, indices);
    };
    auto const check = [&](auto const& drawMesh) {
        QImage const expected = draw(bgfx::ViewMode::Sequential, false, drawMesh);
        EXPECT_FALSE(Compare(draw(bgfx::ViewMode::Sequential, true, drawMesh), expected).maximum == 0)
            << "the mesh does not cover the text";
        EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Default, true, drawMesh), expected, kExact));
    };
    check(opaque);
    check(lit);
}

TEST_P(TextTest, NoDepthHidesText) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::black, 0.0f);
    TextLabel const label{.text = "Label", .x = 7, .y = 20};
    Draw(label);
    EXPECT_TRUE(Matches(Present(), PaintOne(label, {label.text}), kExact));
}

TEST_P(TextTest, AmongTextsTheGreaterDepthIsOnTop) {
    TextLabel const below{.text = "WWWW", .x = 7, .y = 20, .pixelSize = 40, .color = Qt::red, .depth = 1};
    TextLabel const above{.text = "MMMM", .x = 9, .y = 25, .pixelSize = 40, .color = Qt::green, .depth = 2};
    TextLabel top = below;
    top.depth = std::numeric_limits<std::int32_t>::max();
    TextLabel negative = below;
    negative.depth = -1;
    auto const draw = [this](bgfx::ViewMode::Enum mode, TextLabel const& first, TextLabel const& second) {
        StartFrame();
        zx3DQt::BGFXViewContext view(0, kClear, mode);
        view.SetViewport(m_target.GetViewport());
        view.Submit(m_target.GetFrameBuffer());
        Draw(first);
        Draw(second);
        return Present();
    };
    auto const paint = [this](TextLabel const& first, TextLabel const& second) {
        QImage image = Canvas();
        for (TextLabel const* const label : {&first, &second}) {
            ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, label->pixelSize, label->text);
            Paint(image, line, static_cast<int>(label->x), static_cast<int>(label->y) + line.ascender,
                  label->color);
        }
        return image;
    };
    EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Default, below, above), paint(below, above)));
    EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Default, above, below), paint(below, above)));
    EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Default, top, above), paint(above, top)));
    EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Default, above, negative), paint(negative, above)));
    EXPECT_TRUE(Matches(draw(bgfx::ViewMode::Sequential, above, below), paint(above, below)));
}

TEST_P(TextTest, TextBeyondTheTargetIsCut) {
    for (TextLabel const& label : {TextLabel{.text = "left", .x = -20, .y = 20, .pixelSize = 40},
                                   TextLabel{.text = "right end", .x = 120, .y = 20, .pixelSize = 40},
                                   TextLabel{.text = "above", .x = 20, .y = -25, .pixelSize = 40},
                                   TextLabel{.text = "below", .x = 20, .y = 90, .pixelSize = 40},
                                   TextLabel{.text = "away", .x = 1e6f, .y = -1e6f, .pixelSize = 40}})
        EXPECT_TRUE(Matches(DrawOne(label), PaintOne(label, {label.text}), kExact)) << label.text;
}

TEST_P(TextTest, TheNextFrameAndTheNextSizeShowTheSame) {
    TextLabel const label{.text = "again and again", .x = 7, .y = 20};
    QImage const first = DrawOne(label);
    for (int frame = 0; frame < 3; ++frame) {
        DrawOne({.text = "something else", .x = 3, .y = 50, .pixelSize = 10 + frame});
        EXPECT_TRUE(Matches(DrawOne(label), first, kExact));
    }
}

TEST_P(TextTest, ATurnedTextIsTheUprightOneTurnedAboutItsPen) {
    // Letters that stand apart, so that one coverage is interpolated and not two blended.
    TextLabel label{
        .text = "H 7 e\nA", .x = 119.7f, .y = 60.2f, .pixelSize = 30, .horizontal = 0.5f, .vertical = 0.5f};
    QImage const upright = DrawOne(label);
    auto const at = [&](int x, int y) { return upright.valid(x, y) ? qRed(upright.pixel(x, y)) : 0; };
    for (float const angle : {90.0f, 180.0f, -90.0f, 30.0f, -135.5f, 361.0f}) {
        label.angle = angle;
        double const radians = angle * std::numbers::pi / 180.0;
        double const along = std::cos(radians), up = std::sin(radians);
        QImage expected = Canvas();
        for (int y = 0; y < expected.height(); ++y) {
            for (int x = 0; x < expected.width(); ++x) {
                double const dx = x + 0.5 - 120.0, dy = y + 0.5 - 60.0;
                double const u = 120.0 + dx * along - dy * up - 0.5, v = 60.0 + dx * up + dy * along - 0.5;
                int const left = static_cast<int>(std::floor(u)), top = static_cast<int>(std::floor(v));
                double const right = u - left, down = v - top;
                double const value = (1 - down) * ((1 - right) * at(left, top) + right * at(left + 1, top)) +
                                     down * ((1 - right) * at(left, top + 1) + right * at(left + 1, top + 1));
                int const level = static_cast<int>(std::lround(value));
                expected.setPixelColor(x, y, QColor(level, level, level));
            }
        }
        // GPUs interpolate between texels in 256 steps each way; quarter turns fall on texels.
        bool const isQuarter = std::fmod(angle, 90.0f) == 0.0f;
        EXPECT_TRUE(Matches(DrawOne(label), expected, isQuarter ? kExact : Tolerance{3, 0})) << angle;
    }
}

ZX3D_INSTANTIATE_BACKENDS(TextTest);
