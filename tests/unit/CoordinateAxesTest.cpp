// Coordinate axes: half lines, arrow heads and labels, and which style members count.
#include <DrawFixture.h>
#include <Warnings.h>

#include <ColorConversion.h>

#include <zx3D/Text.h>
#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/Shapes.h>

#include <QRectF>
#include <QVector3D>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr std::array kColors{QColor(1, 255, 87), QColor(255, 86, 0), QColor(0, 175, 255)};
constexpr std::array kOtherColors{QColor(1, 2, 3), QColor(4, 5, 6), QColor(7, 8, 9)};

class CoordinateAxesTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_font = zx3D::LoadDefaultFont(16).value();
        m_labelView.SetViewport(QRect(0, 0, 200, 200));
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        DrawFixture::TearDown();
    }

    CoordinateAxesLabelStyle Labels() const {
        CoordinateAxesLabelStyle labels;
        labels.font = m_font;
        return labels;
    }

    /// Where the lines of all draws begin, once it is sure that they end at the origin.
    static std::vector<QVector3D> Starts() {
        std::vector<QVector3D> starts;
        for (recorder::Draw const& draw : recorder::Draws()) {
            std::vector<Vertex> const vertices = draw.VerticesAs<Vertex>();
            EXPECT_THAT(vertices, SizeIs(2));
            EXPECT_EQ(ToQt(vertices.at(1).position), QVector3D());
            starts.push_back(ToQt(vertices.at(0).position));
        }
        return starts;
    }

    static QVector3D ToQt(bx::Vec3 const& position) { return {position.x, position.y, position.z}; }

    /// The vertices of a label in the middle of a pixel place.
    std::vector<std::byte> LabelAt(QPointF const& place, QString const& text, QColor const& color) {
        recorder::ClearCalls();
        m_renderer->RenderText(m_labelView, place, text, m_font, color, Qt::AlignCenter);
        return TheDraw().vertices;
    }

    QRectF const m_rect{-10, -5, 20, 10};
    BGFXViewContext m_labelView{6};
    zx3D::FontHandle m_font;
};

} // namespace

TEST_F(CoordinateAxesTest, LineStylesHaveTheirDefaults) {
    CoordinateAxesStyle style;
    EXPECT_EQ(style.margins, QVector2D());
    EXPECT_EQ(style.colors, kColors);
    EXPECT_THAT(style.lineWidths, Each(1.0f));
    for (CoordinateAxisId const axis : {X, Y, Z}) {
        EXPECT_TRUE(style.isAxisEnabled(axis));
        EXPECT_EQ(style.maxSideLineStipplePatterns[axis].pattern, 0xffff);
        EXPECT_EQ(style.maxSideLineStipplePatterns[axis].factor, 1);
        EXPECT_EQ(style.minSideLineStipplePatterns[axis].pattern, 0x0f0f);
        EXPECT_EQ(style.minSideLineStipplePatterns[axis].factor, 1);
    }
    EXPECT_FALSE(style.arrowHeads);
    EXPECT_FALSE(style.labels);
    EXPECT_THAT(CoordinateAxesStyle::defaultAxisIds, ElementsAre(0, 1, 2));
    style.enabledAxes.erase(Y);
    EXPECT_FALSE(style.isAxisEnabled(Y));
}

TEST_F(CoordinateAxesTest, ArrowHeadStylesHaveTheirDefaults) {
    CoordinateAxesArrowHeadStyle const style;
    EXPECT_EQ(style.colors, kColors);
    EXPECT_EQ(style.arrowHead, 1);
    EXPECT_FALSE(style.light);
    EXPECT_EQ(CoordinateAxesArrowHeadStyle::height, 0.1f);
    EXPECT_EQ(CoordinateAxesArrowHeadStyle::defaultArrowHead, 1);
}

TEST_F(CoordinateAxesTest, LabelStylesHaveTheirDefaultsAndAreEmptyAfterAMove) {
    CoordinateAxesLabelStyle style;
    EXPECT_EQ(style.font.idx, zx3D::FontHandle().idx);
    EXPECT_EQ(style.colors, kColors);
    EXPECT_THAT(style.labelTexts, ElementsAre("X", "Y", "Z"));
    EXPECT_EQ(style.placement, CoordinateAxesLabelStyle::Placement::BesideLines);
    EXPECT_THAT(CoordinateAxesLabelStyle::defaultLabelTexts,
                ElementsAre(testing::StrEq("X"), testing::StrEq("Y"), testing::StrEq("Z")));
    CoordinateAxesLabelStyle const moved = std::move(style);
    EXPECT_THAT(moved.labelTexts, SizeIs(3));
    EXPECT_THAT(style.labelTexts, IsEmpty());
}

TEST_F(CoordinateAxesTest, TheDefaultIsSixLinesDashedOnesFirst) {
    DrawCoordinateAxes(*m_renderer, m_view, m_labelView, m_rect, CoordinateAxesStyle());
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(6));
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(draws[i].view, 5);
        EXPECT_EQ(draws[i].state, std::uint64_t(BGFXRenderer::STATE_LINES));
        EXPECT_EQ(draws[i].transform, 0u);
        EXPECT_THAT(draws[i].uniforms.at("u_lineStipple"), ElementsAre(i < 3 ? 0x0f0f : 0xffff, 1, 0, 0));
        for (Vertex const& vertex : draws[i].VerticesAs<Vertex>())
            EXPECT_EQ(vertex.color, QColorToColor(kColors[i % 3]));
    }
}

TEST_F(CoordinateAxesTest, LinesReachFromTheEdgesToTheOrigin) {
    DrawCoordinateAxesLines(*m_renderer, m_view, m_rect, CoordinateAxesStyle());
    EXPECT_THAT(Starts(), ElementsAre(QVector3D(-10, 0, 0), QVector3D(0, 5, 0), QVector3D(0, 0, -10),
                                      QVector3D(10, 0, 0), QVector3D(0, -5, 0), QVector3D(0, 0, 10)));
}

TEST_F(CoordinateAxesTest, MarginsShortenTheLinesAndZTakesThatOfX) {
    CoordinateAxesStyle style;
    style.margins = {2, 1};
    DrawCoordinateAxesLines(*m_renderer, m_view, QRectF(-8, -4, 30, 10), style);
    EXPECT_THAT(Starts(), ElementsAre(QVector3D(-6, 0, 0), QVector3D(0, 3, 0), QVector3D(0, 0, -13),
                                      QVector3D(20, 0, 0), QVector3D(0, -5, 0), QVector3D(0, 0, 13)));
}

TEST_F(CoordinateAxesTest, EachAxisHasItsColorStipplesAndWidth) {
    DisableCompute();
    CoordinateAxesStyle style;
    style.colors = kOtherColors;
    style.minSideLineStipplePatterns = {{{1, 2}, {3, 4}, {5, 6}}};
    style.maxSideLineStipplePatterns = {{{7, 8}, {9, 10}, {11, 12}}};
    style.lineWidths = {1.0f, 4.0f, 1.0f};
    DrawCoordinateAxesLines(*m_renderer, m_view, m_rect, style);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(6));
    for (std::size_t i = 0; i < 6; ++i) {
        bool const isWide = i % 3 == 1;
        EXPECT_EQ(draws[i].state == std::uint64_t(BGFXRenderer::STATE_LINES), !isWide);
        EXPECT_EQ(draws[i].vertexBuffer == "transient", !isWide);
        EXPECT_THAT(draws[i].uniforms.at("u_lineStipple"), ElementsAre(2 * i + 1, 2 * i + 2, 0, 0));
        if (!isWide) {
            EXPECT_EQ(draws[i].VerticesAs<Vertex>().at(0).color, QColorToColor(kOtherColors[i % 3]));
        }
    }
}

TEST_F(CoordinateAxesTest, WithoutAnAxisTheOthersKeepTheirOrder) {
    CoordinateAxesStyle style;
    style.enabledAxes = {Z, X};
    DrawCoordinateAxesLines(*m_renderer, m_view, m_rect, style);
    EXPECT_THAT(Starts(), ElementsAre(QVector3D(-10, 0, 0), QVector3D(0, 0, -10), QVector3D(10, 0, 0),
                                      QVector3D(0, 0, 10)));
}

TEST_F(CoordinateAxesTest, WithoutAxesNothingIsDrawn) {
    CoordinateAxesStyle style;
    style.enabledAxes.clear();
    DrawCoordinateAxes(*m_renderer, m_view, m_labelView, m_rect, style);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(CoordinateAxesTest, ADisabledAxisKeepsItsHeadsAndLabels) {
    CoordinateAxesStyle style;
    style.enabledAxes = {X, Z};
    style.arrowHeads.emplace();
    style.labels = Labels();
    DrawCoordinateAxes(*m_renderer, m_view, m_labelView, m_rect, style);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(4 + 6 + 6));
    for (std::size_t i = 0; i < draws.size(); ++i)
        EXPECT_EQ(draws[i].view, i < 10 ? 5 : 6) << "lines, heads, labels";
}

TEST_F(CoordinateAxesTest, ArrowHeadsAreConesAtBothEnds) {
    CoordinateAxesArrowHeadStyle style;
    style.colors = kOtherColors;
    DrawCoordinateAxesArrowHeads(*m_renderer, m_view, style);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(6));
    for (std::size_t i = 0; i < 6; ++i) {
        float const sign = i % 2 == 0 ? 1.0f : -1.0f;
        BGFXConeModel cone;
        cone.height = 0.3f;
        cone.radius = 0.1f;
        cone.segments = 32;
        (&cone.direction.x)[i / 2] = sign;
        (&cone.apex.x)[i / 2] = 2.0f * sign;
        cone.color = QColorToColor(kOtherColors[i / 2]);
        recorder::ClearCalls();
        DrawCone(*m_renderer, m_view, cone);
        EXPECT_EQ(draws[i].VerticesAs<float>(), TheDraw().VerticesAs<float>()) << i;
        EXPECT_EQ(draws[i].indices, TheDraw().indices) << i;
        EXPECT_EQ(draws[i].view, 5);
        EXPECT_EQ(draws[i].state, std::uint64_t(BGFXRenderer::STATE_OPAQUE));
    }
}

TEST_F(CoordinateAxesTest, TipsAreAtTwoWhateverTheRectangle) {
    CoordinateAxesStyle style;
    style.enabledAxes.clear();
    style.arrowHeads.emplace();
    DrawCoordinateAxes(*m_renderer, m_view, m_labelView, QRectF(100, 100, 1, 1), style);
    std::vector<QVector3D> tips;
    for (recorder::Draw const& draw : recorder::Draws())
        tips.push_back(ToQt(draw.VerticesAs<Vertex>().at(0).position));
    EXPECT_THAT(tips, ElementsAre(QVector3D(2, 0, 0), QVector3D(-2, 0, 0), QVector3D(0, 2, 0),
                                  QVector3D(0, -2, 0), QVector3D(0, 0, 2), QVector3D(0, 0, -2)));
}

TEST_F(CoordinateAxesTest, LabelsAreBesideTheAxesNegativeOnesFirst) {
    // A world unit along x is 100 pixels to the right, one along y 100 up, and z shifts both by as much.
    QMatrix4x4 projection;
    projection(0, 2) = 0.5f;
    projection(1, 2) = 0.25f;
    m_labelView.SetProjectionMatrix(projection);
    auto const placeOf = [](QVector3D const& p) {
        return QPointF(100 + 100 * (p.x() + 0.5 * p.z()), 100 - 100 * (p.y() + 0.25 * p.z()));
    };
    CoordinateAxesLabelStyle style = Labels();
    style.colors = kOtherColors;
    style.labelTexts = {"ignored", "", "too"};
    DrawCoordinateAxesLabels(*m_renderer, m_labelView, style);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(6));
    std::array const places{QVector3D(-1.25f, 0.3f, 0.3f), QVector3D(1.25f, 0.3f, 0.3f),
                            QVector3D(0.3f, -1.25f, 0.3f), QVector3D(0.3f, 1.25f, 0.3f),
                            QVector3D(0.3f, 0.3f, -1.25f), QVector3D(0.3f, 0.3f, 1.25f)};
    std::array const texts{"-X", "X", "-Y", "Y", "-Z", "Z"};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(draws[i].vertices, LabelAt(placeOf(places[i]), texts[i], kOtherColors[i / 2])) << texts[i];
        EXPECT_EQ(draws[i].view, 6);
        EXPECT_EQ(draws[i].depth, 0u);
    }
}

TEST_F(CoordinateAxesTest, LabelsBehindTheCameraAreNotDrawn) {
    m_labelView.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}); // w is z
    DrawCoordinateAxesLabels(*m_renderer, m_labelView, Labels());
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(5));
    CoordinateAxesLabelStyle const style = Labels();
    std::array const places{QVector3D(-1.25f, 0.3f, 0.3f), QVector3D(1.25f, 0.3f, 0.3f),
                            QVector3D(0.3f, -1.25f, 0.3f), QVector3D(0.3f, 1.25f, 0.3f),
                            QVector3D(0.3f, 0.3f, 1.25f)};
    std::array const texts{"-X", "X", "-Y", "Y", "Z"};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(draws[i].vertices,
                  LabelAt(m_labelView.TransformToViewport(places[i]), texts[i], style.colors[i / 2]));
}

TEST_F(CoordinateAxesTest, LabelsWithoutAFontAreNotDrawn) {
    ExpectWarning("text.no-font");
    DrawCoordinateAxesLabels(*m_renderer, m_labelView, CoordinateAxesLabelStyle());
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(CoordinateAxesTest, ArrowHeadsWithLightAreLitCones) {
    CoordinateAxesArrowHeadStyle style;
    style.light.emplace().ambient = 0.2f;
    DrawCoordinateAxesArrowHeads(*m_renderer, m_view, style);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(6));
    for (std::size_t i = 0; i < 6; ++i) {
        float const sign = i % 2 == 0 ? 1.0f : -1.0f;
        BGFXConeModel cone;
        cone.height = 0.3f;
        cone.radius = 0.1f;
        (&cone.direction.x)[i / 2] = sign;
        (&cone.apex.x)[i / 2] = 2.0f * sign;
        cone.color = QColorToColor(kColors[i / 2]);
        recorder::ClearCalls();
        DrawCone(*m_renderer, m_view, cone, *style.light);
        EXPECT_EQ(draws[i].VerticesAs<float>(), TheDraw().VerticesAs<float>()) << i;
    }
}

namespace {

class LettersBeyondHeadsTest : public CoordinateAxesTest {
protected:
    void SetUp() override {
        CoordinateAxesTest::SetUp();
        m_style = Labels();
        m_style.placement = CoordinateAxesLabelStyle::Placement::BeyondHeads;
        m_labelView.SetViewport(QRect(0, 0, 800, 600));
    }

    void LookFrom(QVector3D const& eye, QVector3D const& up, bool isParallel) {
        QMatrix4x4 camera;
        camera.lookAt(eye, QVector3D(), up);
        QMatrix4x4 projection;
        if (isParallel)
            projection.ortho(-4, 4, -3, 3, 0.1f, 100);
        else
            projection.perspective(45.0f, 4.0f / 3.0f, 0.1f, 100.0f);
        m_labelView.SetViewMatrix(camera);
        m_labelView.SetProjectionMatrix(projection);
    }

    struct Letter {
        QRectF ink;
        std::array<std::uint8_t, 4> color;
        std::size_t glyphs;
    };

    std::vector<Letter> DrawLetters() {
        struct TextVertex {
            float x, y;
            std::int16_t u, v;
            std::array<std::uint8_t, 4> color;
        };
        recorder::ClearCalls();
        DrawCoordinateAxesLabels(*m_renderer, m_labelView, m_style);
        std::vector<Letter> letters;
        for (recorder::Draw const& draw : recorder::Draws()) {
            std::vector<TextVertex> const vertices = draw.VerticesAs<TextVertex>();
            QRectF ink;
            for (std::size_t i = 0; i + 3 < vertices.size(); i += 4)
                ink |= QRectF(QPointF(vertices[i].x, vertices[i].y),
                              QPointF(vertices[i + 2].x, vertices[i + 2].y));
            letters.push_back({ink, vertices.at(0).color, vertices.size() / 4});
        }
        return letters;
    }

    /// Places all over a half axis' head, in the picture.
    std::vector<QPointF> HeadPlaces(int axis, float sign) const {
        QVector3D along, across;
        along[axis] = sign;
        across[(axis + 1) % 3] = 1.0f;
        QVector3D const acrossBoth = QVector3D::crossProduct(along, across);
        std::vector<QPointF> places;
        for (int i = 0; i < 60; ++i) {
            float const angle = 6.2831853f * static_cast<float>(i) / 60.0f;
            for (int k = 0; k <= 20; ++k) {
                float const part = static_cast<float>(k) / 20.0f;
                places.push_back(m_labelView.TransformToViewport(
                    (2.0f - 0.3f * part) * along +
                    0.1f * part * (std::cos(angle) * across + std::sin(angle) * acrossBoth)));
            }
        }
        return places;
    }

    CoordinateAxesLabelStyle m_style;
};

} // namespace

TEST_F(LettersBeyondHeadsTest, InTheIsometricViewAllSixAreBeyondTheirHeadsOnTheirAxes) {
    for (bool const isParallel : {true, false}) {
        LookFrom(QVector3D(5, 5, 5), QVector3D(0, 0, 1), isParallel);
        std::vector<Letter> const letters = DrawLetters();
        ASSERT_THAT(letters, SizeIs(6));
        QPointF const origin = m_labelView.TransformToViewport(QVector3D());
        for (Letter const& letter : letters) {
            auto const colorOf = [](QColor const& c) {
                return std::array{std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()),
                                  std::uint8_t(255)};
            };
            int axis = 0;
            while (colorOf(kColors[static_cast<std::size_t>(axis)]) != letter.color)
                ASSERT_LT(++axis, 3);
            QVector3D along;
            along[axis] = letter.glyphs == 1 ? 1.0f : -1.0f; // the others have a minus sign
            QPointF const tip = m_labelView.TransformToViewport(2.0f * along) - origin;
            QPointF const center = letter.ink.center() - origin;
            double const tipDistance = std::hypot(tip.x(), tip.y());
            double const way = QPointF::dotProduct(center, tip) / tipDistance;
            EXPECT_GT(way, tipDistance + 5.0);
            EXPECT_LT(way, tipDistance + 25.0);
            double const beside = (center.x() * tip.y() - center.y() * tip.x()) / tipDistance;
            EXPECT_LT(std::abs(beside), 4.0);
        }
    }
}

TEST_F(LettersBeyondHeadsTest, FromNowhereALetterLiesOnItsHeadOrOnAnotherLetter) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    std::size_t drawn = 0;
    for (int i = 0; i < 100; ++i) {
        QVector3D const eye = 6.0f * QVector3D(unit(random), unit(random), unit(random)).normalized();
        LookFrom(eye, QVector3D(unit(random), unit(random), unit(random)), i % 2 == 0);
        std::vector<Letter> const letters = DrawLetters();
        drawn += letters.size();
        for (std::size_t k = 0; k < letters.size(); ++k) {
            int const axis = static_cast<int>(
                std::ranges::find_if(kColors,
                                     [&](QColor const& c) { return c.red() == letters[k].color[0]; }) -
                kColors.begin());
            for (QPointF const& place : HeadPlaces(axis, letters[k].glyphs == 1 ? 1.0f : -1.0f))
                ASSERT_FALSE(letters[k].ink.contains(place)) << i;
            for (std::size_t other = 0; other < k; ++other)
                ASSERT_FALSE(letters[k].ink.intersects(letters[other].ink)) << i;
        }
    }
    EXPECT_GT(drawn, 100u * 5u);
}

TEST_F(LettersBeyondHeadsTest, AlongAnAxisOnlyTheNearerHalfHasItsLetter) {
    for (bool const isParallel : {true, false}) {
        LookFrom(QVector3D(0, 0, 8), QVector3D(0, 1, 0), isParallel);
        std::vector<Letter> const letters = DrawLetters();
        EXPECT_THAT(letters, SizeIs(5));
        std::size_t blue = 0;
        for (Letter const& letter : letters) {
            if (letter.color[2] != 255)
                continue;
            ++blue;
            EXPECT_EQ(letter.glyphs, 1u) << "Z, not -Z";
            EXPECT_GT(letter.ink.left(), 400.0);
            EXPECT_LT(letter.ink.bottom(), 300.0);
        }
        EXPECT_EQ(blue, 1u);
    }
}

TEST_F(LettersBeyondHeadsTest, HeadsBehindTheCameraHaveNone) {
    LookFrom(QVector3D(0.5f, 0.4f, 0.3f), QVector3D(0, 0, 1), false);
    EXPECT_THAT(DrawLetters(), SizeIs(testing::Le(3u))) << "the positive heads are behind";
}

TEST_F(LettersBeyondHeadsTest, StrangeViewsDoNoHarm) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (float const number : {0.0f, nan, std::numeric_limits<float>::infinity(), 1e-30f, 1e30f}) {
        m_labelView.SetProjectionMatrix(QMatrix4x4() * number);
        DrawLetters();
        m_labelView.SetProjectionMatrix(QMatrix4x4());
        m_labelView.SetViewport(QRect());
        DrawLetters();
    }
}

TEST_F(LettersBeyondHeadsTest, WithoutAFontThatIsSaid) {
    ExpectWarning("text.no-font");
    m_style.font = {};
    EXPECT_THAT(DrawLetters(), IsEmpty());
}
