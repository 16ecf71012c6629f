// Text at a point of a view: where it lands, in which colour and depth, and that nothing is kept.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3D/Text.h>

#include <QColor>
#include <QPointF>
#include <QString>

#include <limits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// A text's vertex: pixels, place in the glyphs' texture, and colour.
struct TextVertex {
    float x, y;
    std::int16_t u, v;
    std::uint8_t color[4];
};

class RenderTextTest : public DrawFixture {
protected:
    using Alignment = QFlags<Qt::AlignmentFlag>;

    void SetUp() override {
        DrawFixture::SetUp();
        m_font = zx3D::LoadDefaultFont(16).value();
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        DrawFixture::TearDown();
    }

    /// The one draw of a text at a place.
    template<typename Place>
    recorder::Draw DrawOf(Place const& place, QString const& text = "a\nlabel", Alignment alignment = {},
                          QColor const& color = Qt::white) {
        recorder::ClearCalls();
        m_renderer->RenderText(m_view, place, text, m_font, color, alignment);
        return TheDraw();
    }

    /// The vertices of a text that zx3D draws with its pen at a place.
    std::vector<std::byte> VerticesAt(float x, float y, float horizontal = 0.0f, float vertical = 0.0f) {
        recorder::ClearCalls();
        zx3D::TextBufferHandle const text = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, m_font);
        zx3D::SetPenPosition(text, x, y);
        zx3D::SetTextColor(text, 0xffffffff);
        zx3D::AppendText(text, "a\nlabel", nullptr);
        zx3D::AlignText(text, horizontal, vertical);
        zx3D::SubmitTextBuffer(text, 0, 0);
        zx3D::DestroyTextBuffer(text);
        return TheDraw().vertices;
    }

    void ExpectAligned(Alignment alignment, float horizontal, float vertical) {
        EXPECT_EQ(DrawOf(QPointF(30, 20), "a\nlabel", alignment).vertices,
                  VerticesAt(30.0f, 20.0f, horizontal, vertical))
            << alignment.toInt();
    }

    zx3D::FontHandle m_font;
};

} // namespace

TEST_F(RenderTextTest, PutsThePenAtThePosition) {
    EXPECT_EQ(DrawOf(QPointF(30, 20)).vertices, VerticesAt(30.0f, 20.0f));
    EXPECT_EQ(DrawOf(QPointF(-7, 200)).vertices, VerticesAt(-7.0f, 200.0f));
}

TEST_F(RenderTextTest, DrawsIntoTheViewAtTheDepth) {
    recorder::Draw const draw = DrawOf(std::pair<QPointF const, int>({30, 20}, 17));
    EXPECT_EQ(draw.view, 5);
    EXPECT_EQ(draw.depth, 17u);
    EXPECT_EQ(draw.vertices, VerticesAt(30.0f, 20.0f));
}

TEST_F(RenderTextTest, ANegativeDepthIsNotAboveAPositiveOne) {
    EXPECT_EQ(DrawOf(std::pair<QPointF const, int>({30, 20}, -1)).depth, 0u);
}

TEST_F(RenderTextTest, HalvesOfSurrogatePairsAreQuestionMarks) {
    std::vector<std::byte> const expected = DrawOf(QPointF(30, 20), "a?b?").vertices;
    QString const halves = QString("a") + QChar(0xD83D) + "b" + QChar(0xDE00);
    EXPECT_EQ(halves.toUtf8(), "a?b?");
    EXPECT_EQ(DrawOf(QPointF(30, 20), halves).vertices, expected);
}

TEST_F(RenderTextTest, WithoutADepthItIsZero) {
    EXPECT_EQ(DrawOf(QPointF(30, 20)).depth, 0u);
}

TEST_F(RenderTextTest, AWorldPositionIsDrawnWhereTheViewShowsIt) {
    QMatrix4x4 projection;
    projection.scale(0.5f);
    m_view.SetProjectionMatrix(projection);
    m_view.SetViewMatrix(Translation(1, 0, 0));
    // (0.6, 0.4) in NDC, of 100 by 50 pixels from (7, 3) on.
    recorder::Draw const draw = DrawOf(bx::Vec3(0.2f, 0.8f, 0.9f));
    EXPECT_EQ(draw.vertices, VerticesAt(87.0f, 18.0f));
    EXPECT_EQ(draw.depth, 0u);
    EXPECT_EQ(draw.view, 5);
}

TEST_F(RenderTextTest, AWorldPositionBehindTheCameraIsNotDrawn) {
    m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}); // w is z
    for (float const z : {-3.0f, -1e-30f, -0.0f, 0.0f}) {
        recorder::ClearCalls();
        m_renderer->RenderText(m_view, bx::Vec3(0.1f, 0.2f, z), "label", m_font, Qt::white, {});
        EXPECT_THAT(recorder::Calls(), IsEmpty()) << z;
    }
    EXPECT_EQ(DrawOf(bx::Vec3(0.1f, 0.2f, 0.5f)).vertices, VerticesAt(67.0f, 18.0f));
}

TEST_F(RenderTextTest, InAParallelProjectionEveryWorldPositionIsDrawn) {
    for (float const z : {-1e6f, -1.0f, 0.0f, 2.0f, 1e6f})
        EXPECT_EQ(DrawOf(bx::Vec3(0.2f, 0.4f, z)).vertices, VerticesAt(67.0f, 18.0f)) << z;
}

TEST_F(RenderTextTest, AlignsHorizontally) {
    ExpectAligned(Qt::AlignLeft, 0.0f, 0.0f);
    ExpectAligned(Qt::AlignJustify, 0.0f, 0.0f);
    ExpectAligned(Qt::AlignHCenter, 0.5f, 0.0f);
    ExpectAligned(Qt::AlignRight, 1.0f, 0.0f);
}

TEST_F(RenderTextTest, AlignsVertically) {
    ExpectAligned(Qt::AlignTop, 0.0f, 0.0f);
    ExpectAligned(Qt::AlignBaseline, 0.0f, 0.0f);
    ExpectAligned(Qt::AlignVCenter, 0.0f, 0.5f);
    ExpectAligned(Qt::AlignBottom, 0.0f, 1.0f);
}

TEST_F(RenderTextTest, AlignsBothWays) {
    ExpectAligned(Qt::AlignCenter, 0.5f, 0.5f);
    ExpectAligned(Qt::AlignRight | Qt::AlignBottom, 1.0f, 1.0f);
    ExpectAligned({}, 0.0f, 0.0f);
}

TEST_F(RenderTextTest, RightAndBottomWinOverTheCenterAndTheOtherSide) {
    ExpectAligned(Qt::AlignRight | Qt::AlignHCenter, 1.0f, 0.0f);
    ExpectAligned(Qt::AlignBottom | Qt::AlignVCenter, 0.0f, 1.0f);
    ExpectAligned(Qt::AlignRight | Qt::AlignLeft, 1.0f, 0.0f);
    ExpectAligned(Qt::AlignHCenter | Qt::AlignLeft, 0.5f, 0.0f);
    ExpectAligned(Qt::AlignVCenter | Qt::AlignTop, 0.0f, 0.5f);
}

TEST_F(RenderTextTest, VerticesHaveTheColor) {
    for (TextVertex const& vertex :
         DrawOf(QPointF(), "ab", {}, QColor(0x12, 0x34, 0x56, 0x78)).VerticesAs<TextVertex>())
        EXPECT_THAT(vertex.color, ElementsAre(0x12, 0x34, 0x56, 0x78));
}

TEST_F(RenderTextTest, TakesTextBeyondLatin) {
    EXPECT_THAT(DrawOf(QPointF(), QString::fromUtf8("\u00e4\u03a9\u0416")).vertices,
                SizeIs(3 * 4 * sizeof(TextVertex)));
}

TEST_F(RenderTextTest, ATextEndsAtItsFirstZero) {
    EXPECT_THAT(DrawOf(QPointF(), QString::fromUtf8("ab\0c", 4)).vertices,
                SizeIs(2 * 4 * sizeof(TextVertex)));
}

TEST_F(RenderTextTest, AnEmptyTextDrawsNothing) {
    m_renderer->RenderText(m_view, QPointF(), "", m_font, Qt::white, {});
    m_renderer->RenderText(m_view, QPointF(), QString(), m_font, Qt::white, {});
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(RenderTextTest, WithoutAFontNothingIsDrawn) {
    ExpectWarning("text.no-font");
    m_renderer->RenderText(m_view, QPointF(), "a", zx3D::FontHandle(), Qt::white, {});
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(RenderTextTest, NoTextBufferOutlivesTheCall) {
    auto const newBuffer = [this] {
        zx3D::TextBufferHandle const buffer = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, m_font);
        zx3D::DestroyTextBuffer(buffer);
        return buffer.idx;
    };
    std::uint16_t const before = newBuffer();
    for (QString const text : {"a", "", "b"})
        m_renderer->RenderText(m_view, QPointF(), text, m_font, Qt::white, {});
    EXPECT_EQ(newBuffer(), before) << "an empty text's is destroyed too";
}

TEST_F(RenderTextTest, TheRendererKeepsNothing) {
    DrawOf(QPointF());
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(RenderTextTest, AnAngleOfWholeTurnsChangesNothing) {
    QPointF const place(30, 20);
    DrawOf(place); // makes the glyphs
    recorder::Draw const expected = DrawOf(place, "a\nlabel", Qt::AlignCenter);
    std::vector<std::string> const calls = recorder::CallTexts();
    for (float const angle : {0.0f, -0.0f, 360.0f, -720.0f, std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN()}) {
        recorder::ClearCalls();
        m_renderer->RenderText(m_view, place, "a\nlabel", m_font, Qt::white, Qt::AlignCenter, angle);
        EXPECT_EQ(TheDraw().vertices, expected.vertices) << angle;
        EXPECT_EQ(recorder::CallTexts(), calls) << angle;
    }
}

TEST_F(RenderTextTest, AQuarterTurnExchangesTheDirectionsAndKeepsTheDepth) {
    QPointF const place(30, 20);
    auto const upright = DrawOf(place, "a\nlabel", Qt::AlignCenter).VerticesAs<TextVertex>();
    recorder::ClearCalls();
    m_renderer->RenderText(m_view, {place, 17}, "a\nlabel", m_font, Qt::white, Qt::AlignCenter, 90.0f);
    EXPECT_EQ(TheDraw().depth, 17u);
    auto const turned = TheDraw().VerticesAs<TextVertex>();
    ASSERT_EQ(turned.size(), upright.size());
    for (std::size_t i = 0; i < turned.size(); ++i) {
        // Half a pixel and half a texel are added around each glyph; what ran to the right runs up.
        float const right = i % 4 == 1 || i % 4 == 2 ? 1.0f : -1.0f;
        float const down = i % 4 >= 2 ? 1.0f : -1.0f;
        EXPECT_EQ(turned[i].x, 30.0f + (upright[i].y + 0.5f * down - 20.0f)) << i;
        EXPECT_EQ(turned[i].y, 20.0f - (upright[i].x + 0.5f * right - 30.0f)) << i;
        EXPECT_EQ(turned[i].u, upright[i].u + 8 * static_cast<int>(right)) << i;
        EXPECT_EQ(turned[i].v, upright[i].v + 8 * static_cast<int>(down)) << i;
    }
}
