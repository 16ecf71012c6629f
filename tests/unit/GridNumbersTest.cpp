// Numbers of a grid that keep a gap: never over each other, as many as fit, in regular steps.
#include <DrawFixture.h>
#include <LogCapture.h>
#include <Warnings.h>

#include <zx3D/Text.h>
#include <zx3DQt/CoordinateGrid.h>

#include <QRectF>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

namespace {

constexpr QRect kViewport(0, 0, 800, 600);

struct TextVertex {
    float x, y;
    std::int16_t u, v;
    std::uint8_t color[4];
};

class GridNumbersTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_font = zx3D::LoadDefaultFont(14).value();
        m_style.gridSpacing = {10, 10};
        m_style.gridMargins = {};
        m_style.frameTickLabels.emplace();
        m_style.frameTickLabels->font = m_font;
        m_style.frameTickLabels->minimumGap = 4.0f;
        m_view.SetViewport(kViewport);
        m_labelView.SetViewport(kViewport);
        auto const text = CoordinateGridFrameTickLabelStyle::PlainTickLabelFunction(1.0f);
        m_style.frameTickLabels->tickLabelFunctions = {text, text};
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        DrawFixture::TearDown();
    }

    /// Straight down at a place, so many pixels for a unit.
    void LookDown(double x, double y, double pixelsPerUnit) {
        auto const halfWidth = static_cast<float>(0.5 * kViewport.width() / pixelsPerUnit);
        auto const halfHeight = static_cast<float>(0.5 * kViewport.height() / pixelsPerUnit);
        QMatrix4x4 projection;
        projection.ortho(static_cast<float>(x) - halfWidth, static_cast<float>(x) + halfWidth,
                         static_cast<float>(y) - halfHeight, static_cast<float>(y) + halfHeight, -1e4f, 1e4f);
        m_view.SetViewMatrix(QMatrix4x4());
        m_view.SetProjectionMatrix(projection);
    }

    void LookFrom(QVector3D const& eye, QVector3D const& target, float angle = 50.0f) {
        QMatrix4x4 view;
        view.lookAt(eye, target, QVector3D(0, 0, 1));
        QMatrix4x4 projection;
        projection.perspective(angle, 4.0f / 3.0f, 0.1f, 1e5f);
        m_view.SetViewMatrix(view);
        m_view.SetProjectionMatrix(projection);
    }

    void DrawNumbers() {
        recorder::ClearCalls();
        DrawCoordinateGridFrameTickLabels(*m_renderer, m_view, m_labelView, m_rect, m_style);
    }

    /// What the glyphs of each number cover.
    static std::vector<QRectF> DrawnRects() {
        std::vector<QRectF> rects;
        for (recorder::Draw const& draw : recorder::Draws()) {
            QRectF rect;
            std::vector<TextVertex> const vertices = draw.VerticesAs<TextVertex>();
            for (std::size_t i = 0; i + 3 < vertices.size(); i += 4)
                rect |= QRectF(QPointF(vertices[i].x, vertices[i].y),
                               QPointF(vertices[i + 2].x, vertices[i + 2].y));
            rects.push_back(rect);
        }
        return rects;
    }

    void ExpectNoneOverAnother(double gap) {
        std::vector<QRectF> const rects = DrawnRects();
        for (std::size_t i = 0; i < rects.size(); ++i) {
            QRectF const wider = rects[i].adjusted(-gap, -gap, gap, gap);
            for (std::size_t k = 0; k < i; ++k)
                ASSERT_FALSE(wider.intersects(rects[k])) << i << " and " << k << " of " << rects.size();
        }
    }

    /// Which glyph of the atlas each digit is.
    std::map<std::pair<int, int>, char> DigitsByGlyph() {
        std::map<std::pair<int, int>, char> digits;
        for (char const digit : std::string("-0123456789")) {
            recorder::ClearCalls();
            m_renderer->RenderText(m_labelView, QPointF(100, 100), QString(QChar(digit)), m_font, Qt::white,
                                   {});
            TextVertex const corner = TheDraw().VerticesAs<TextVertex>().at(0);
            digits[{corner.u, corner.v}] = digit;
        }
        return digits;
    }

    /// The numbers along the bottom edge, as multiples of the spacing, in order.
    std::vector<int> DrawnXs() {
        std::map<std::pair<int, int>, char> const digits = DigitsByGlyph();
        m_style.frameTickLabels->enabledAxes = {X};
        DrawNumbers();
        std::vector<int> xs;
        for (recorder::Draw const& draw : recorder::Draws()) {
            std::map<float, char> byPlace;
            std::vector<TextVertex> const vertices = draw.VerticesAs<TextVertex>();
            for (std::size_t i = 0; i < vertices.size(); i += 4)
                byPlace[vertices[i].x] = digits.at({vertices[i].u, vertices[i].v});
            std::string text;
            for (auto const& [place, digit] : byPlace)
                text += digit;
            xs.push_back(static_cast<int>(std::lround(std::stod(text) / m_style.gridSpacing.x())));
        }
        std::ranges::sort(xs);
        return xs;
    }

    QRectF m_rect{-1000, -1000, 2001, 2001};
    CoordinateGridStyle m_style;
    BGFXViewContext m_labelView{6};
    zx3D::FontHandle m_font;
    std::mt19937 m_random{11};
};

} // namespace

TEST_F(GridNumbersTest, ByDefaultThereIsNoGapAndAllAreDrawn) {
    EXPECT_FALSE(CoordinateGridFrameTickLabelStyle().minimumGap);
    m_style.frameTickLabels->minimumGap.reset();
    LookDown(0, -1000, 0.1);
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), SizeIs(2 * 201));
}

TEST_F(GridNumbersTest, WithRoomAllAreDrawn) {
    m_rect = QRectF(-60, -40, 121, 81);
    LookDown(5, -5, 5.0); // 50 pixels apart
    DrawNumbers();
    std::size_t const count = recorder::Draws().size();
    // In the corner there is room for one of two.
    EXPECT_EQ(count, 13u + 9u - 1u);
    ExpectNoneOverAnother(1.0);
}

TEST_F(GridNumbersTest, NoneLiesOverAnotherFromAnyCamera) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    auto const random = [&](float size) {
        return size * QVector3D(unit(m_random), unit(m_random), unit(m_random));
    };
    std::size_t drawn = 0;
    for (int i = 0; i < 600; ++i) {
        SCOPED_TRACE(i);
        float const size = std::exp(2.0f + 4.0f * unit(m_random)); // of the whole
        m_rect =
            QRectF(-size * (1.0f + unit(m_random)), -size * (1.0f + unit(m_random)), 2.0 * size, 2.0 * size);
        m_style.gridSpacing = QVector2D(size, size) * std::exp(-3.0f + 2.0f * unit(m_random));
        m_style.gridMargins = i % 3 == 0 ? QVector2D(0.3f, 0.7f) * size : QVector2D();
        m_style.frameTickLabels->minimumGap = static_cast<float>(i % 7);
        if (i % 2 == 0)
            LookFrom(random(1.5f * size), random(0.5f * size));
        else
            LookDown(random(size).x(), random(size).y(), 300.0 / size * std::exp(unit(m_random)));
        DrawNumbers();
        drawn += recorder::Draws().size();
        ExpectNoneOverAnother(0.0);
    }
    EXPECT_GT(drawn, 600u * 5u);
}

TEST_F(GridNumbersTest, InPlanTheStepsAreOneTwoFiveTenAndGrowAsOneMovesAway) {
    m_rect = QRectF(-1000, 0, 2001, 10);
    int before = 1;
    std::set<int> met;
    for (double pixelsPerUnit = 8.0; pixelsPerUnit > 0.01; pixelsPerUnit *= 0.97) {
        SCOPED_TRACE(pixelsPerUnit);
        LookDown(0.0, 0.0, pixelsPerUnit);
        std::vector<int> const xs = DrawnXs();
        ASSERT_FALSE(xs.empty());
        int step = 1000;
        for (std::size_t i = 1; i < xs.size(); ++i)
            step = std::min(step, xs[i] - xs[i - 1]);
        for (std::size_t i = 1; i < xs.size(); ++i)
            ASSERT_EQ(xs[i] - xs[i - 1], step);
        if (xs.size() > 1) {
            ASSERT_THAT(step, AnyOf(1, 2, 5, 10, 20, 50, 100));
            ASSERT_GE(step, before);
            before = step;
            met.insert(step);
            // As many as fit: at the next smaller step numbers as wide as the widest would be too near.
            std::map<int, int> const steps{{1, 0}, {2, 1}, {5, 2}, {10, 5}, {20, 10}, {50, 20}, {100, 50}};
            int const smaller = steps.at(step);
            double widest = 0.0;
            for (int const x : xs)
                widest =
                    std::max<double>(widest, zx3D::MeasureText(m_font, std::to_string(10 * x).c_str()).width);
            if (smaller > 0) {
                // Numbers that are not drawn may be a digit longer than those that are.
                double const digit = zx3D::MeasureText(m_font, "0").width;
                ASSERT_LT(10.0 * smaller * pixelsPerUnit, widest + digit + 4.0 + 1.0);
            }
        }
        ASSERT_TRUE(std::ranges::binary_search(xs, 0)) << "0 is the roundest of all";
    }
    EXPECT_GE(met.size(), 6u);
}

TEST_F(GridNumbersTest, TheyStayWhileThePictureMoves) {
    m_rect = QRectF(-1000, 0, 2001, 10);
    // 10 to 13 pixels for a step: every fifth.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> anywhere(-300.0, 300.0);
    for (int i = 0; i < 200; ++i) {
        LookDown(anywhere(random), 0.0, 1.0);
        for (int const x : DrawnXs())
            ASSERT_EQ(x % 5, 0) << i;
    }
}

TEST_F(GridNumbersTest, TheyCountFromZeroWhereverTheGridBegins) {
    for (double const left : {-995.0, -990.0, -430.0, 10.0, 70.0}) {
        m_rect = QRectF(left, 0, 2000, 10);
        LookDown(left + 350.0, 0.0, 1.0);
        std::vector<int> const xs = DrawnXs();
        EXPECT_GT(xs.size(), 10u);
        for (int const x : xs)
            EXPECT_EQ(x % 5, 0) << left;
    }
}

TEST_F(GridNumbersTest, InPerspectiveStepsGrowWithDistanceAndNearNumbersAreAllThere) {
    m_rect = QRectF(-2000, -2000, 4001, 2000);
    // Along the bottom edge, y = 0, from beside it.
    LookFrom(QVector3D(-100, -30, 40), QVector3D(100, 0, 0));
    std::vector<int> const xs = DrawnXs();
    ASSERT_GT(xs.size(), 10u);
    std::set<int> steps;
    int before = 1;
    for (std::size_t i = 1; i < xs.size(); ++i) {
        int const step = xs[i] - xs[i - 1];
        steps.insert(step);
        // Where two steps meet, what is between them may be a little off either.
        EXPECT_GE(2 * step, before) << xs[i];
        before = step;
    }
    EXPECT_EQ(xs[1] - xs[0], 1);
    EXPECT_GE(*steps.rbegin(), 10);
    for (int const x : xs) {
        if (x > 100) {
            EXPECT_EQ(x % 10, 0) << x;
        }
    }
}

TEST_F(GridNumbersTest, TheyAreWhereAllWouldBe) {
    m_rect = QRectF(-1000, 0, 2001, 10);
    LookDown(3.0, 1.0, 1.0);
    DrawNumbers();
    std::vector<std::vector<std::byte>> some;
    for (recorder::Draw const& draw : recorder::Draws())
        some.push_back(draw.vertices);
    m_style.frameTickLabels->minimumGap.reset();
    DrawNumbers();
    std::vector<std::vector<std::byte>> all;
    for (recorder::Draw const& draw : recorder::Draws())
        all.push_back(draw.vertices);
    ASSERT_THAT(some, testing::Not(IsEmpty()));
    for (auto const& vertices : some)
        EXPECT_THAT(all, testing::Contains(vertices));
}

TEST_F(GridNumbersTest, NumbersWithoutATextLeaveTheirRoomToOthers) {
    m_rect = QRectF(-60, -40, 121, 81);
    LookDown(5, -5, 5.0);
    m_style.frameTickLabels->tickLabelFunctions[Y] = [](float) { return QString(); };
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), SizeIs(13));
}

TEST_F(GridNumbersTest, OnlyEnabledAxesHaveThem) {
    m_rect = QRectF(-60, -40, 121, 81);
    LookDown(5, -5, 5.0);
    m_style.frameTickLabels->enabledAxes = {Y};
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), SizeIs(9));
    m_style.frameTickLabels->enabledAxes = {};
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    m_style.frameTickLabels->enabledAxes = {X, Y, Z};
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), SizeIs(21));
}

TEST_F(GridNumbersTest, AMillionTicksAreAskedForFewTexts) {
    int asked = 0;
    auto const text = [&asked](float value) { return ++asked, QString::number(value); };
    m_style.frameTickLabels->tickLabelFunctions = {text, text};
    m_rect = QRectF(-400'000, -400'000, 800'000, 800'000);
    m_style.gridSpacing = {1, 1};
    LookDown(0, -200'000, 0.001);
    DrawNumbers();
    EXPECT_GT(recorder::Draws().size(), 10u);
    EXPECT_LT(asked, 4000);
    ExpectNoneOverAnother(3.0);
    LookFrom(QVector3D(0, -400'100, 100), QVector3D(0, -399'000, 0));
    asked = 0;
    DrawNumbers();
    EXPECT_LT(asked, 4000);
    ExpectNoneOverAnother(3.0);
}

TEST_F(GridNumbersTest, InThePlaneOfTheGridAndInItsMidstNothingIsOverAnother) {
    for (QVector3D const& eye : {QVector3D(0, -1200, 0), QVector3D(-990, -990, 0), QVector3D(0, -1000, 0.1f),
                                 QVector3D(0, 0, 1), QVector3D(-1000, -1000, 0)}) {
        for (QVector3D const& target :
             {QVector3D(0, 0, 0), QVector3D(0, -2000, 0), QVector3D(500, -1000, 0)}) {
            LookFrom(eye, target);
            DrawNumbers();
            ExpectNoneOverAnother(3.0);
        }
    }
}

TEST_F(GridNumbersTest, NoSpacingIsTooStrange) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    LogCapture const log; // the first that is cut short is warned of
    for (float const spacing : {0.0f, nan, infinity, -10.0f, 1e-30f, 1e30f, 0.1f}) {
        for (QRectF const& rect : {QRectF(-1000, -1000, 2000, 2000), QRectF(0, 0, 0, 0), QRectF(0, 0, -5, -5),
                                   QRectF(1e30, 1e30, 1e30, 1e30), QRectF(nan, nan, nan, nan)}) {
            for (float const gap : {-100.0f, nan, infinity}) {
                m_style.gridSpacing = {spacing, spacing};
                m_style.frameTickLabels->minimumGap = gap;
                m_rect = rect;
                LookDown(0, 0, 0.3);
                DrawNumbers();
                LookFrom(QVector3D(10, -1100, 50), QVector3D(0, 0, 0));
                DrawNumbers();
            }
        }
    }
}

TEST_F(GridNumbersTest, InTheMillionsTheyKeepApartToo) {
    m_rect = QRectF(5'400'000, 499'500, 1000, 1000);
    LookDown(5'400'200, -500'100, 1.0);
    DrawNumbers();
    EXPECT_GT(recorder::Draws().size(), 4u);
    ExpectNoneOverAnother(3.0);
}

TEST_F(GridNumbersTest, WithoutAFontThatIsSaid) {
    ExpectWarning("text.no-font");
    m_style.frameTickLabels->font = {};
    LookDown(0, -1000, 1.0);
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(GridNumbersTest, PlainTextsHaveAsManyDecimalsAsTheSpacingNeeds) {
    auto const text = [](float spacing, float value) {
        return CoordinateGridFrameTickLabelStyle::PlainTickLabelFunction(spacing)(value).toStdString();
    };
    EXPECT_EQ(text(50.0f, 100.0f), "100");
    EXPECT_EQ(text(50.0f, -1'250'000.0f), "-1250000");
    EXPECT_EQ(text(0.25f, 0.5f), "0.50");
    EXPECT_EQ(text(0.1f, 0.3f), "0.3");
    EXPECT_EQ(text(0.1f, -1.0f + 9 * 0.1f), "-0.1");
    EXPECT_EQ(text(2.5f, 7.5f), "7.5");
    EXPECT_EQ(text(0.002f, 0.004f), "0.004");
    for (float const zero : {0.0f, -0.0f, 1e-8f, -1e-8f})
        EXPECT_EQ(text(0.1f, zero), "0");
    for (float const spacing : {0.0f, std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(), 1.0f / 3.0f, 1e-20f})
        EXPECT_FALSE(text(spacing, 2.0f).empty());
}

TEST_F(GridNumbersTest, WhatHasFadedHasNoNumbers) {
    m_style.frameTickLabels->minimumGap.reset();
    m_style.frameTickLabels->enabledAxes = {X};
    m_style.frameTickLabels->color = QColor(10, 20, 30, 200);
    m_rect = QRectF(-1000, 0, 2001, 10);
    LookDown(0, -10, 0.3);
    m_style.fade = DistanceFade{100.0f, 295.0f, std::nullopt};
    DrawNumbers();
    std::vector<recorder::Draw> const draws = recorder::Draws();
    // 29 to either side: at 300 nothing is left. From 100 on they get fainter.
    ASSERT_THAT(draws, SizeIs(59));
    auto const alphaAt = [&](int step) {
        return int(draws[static_cast<std::size_t>(step + 29)].VerticesAs<TextVertex>().at(0).color[3]);
    };
    for (int step = -29; step <= 29; ++step) {
        double const t = std::clamp((10.0 * std::abs(step) - 100.0) / 195.0, 0.0, 1.0);
        EXPECT_NEAR(alphaAt(step), 200.0 * (1.0 - t * t * (3.0 - 2.0 * t)), 1.5) << step;
    }
    m_style.frameTickLabels->minimumGap = 4.0f;
    DrawNumbers();
    EXPECT_THAT(recorder::Draws(), SizeIs(3)); // at -200, 0 and 200
}
