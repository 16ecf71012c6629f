// Dimension lines: where their lines, arrow heads and texts are.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/Dimensions.h>

#include <zx3D/Text.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// A corner of a glyph or a shape.
struct Corner {
    float x, y, depth;
    std::int16_t shape[4];
    std::uint8_t color[4];
};

/// A line or an arrow head: where it begins and ends, without the half pixel that fades.
struct Shape {
    QPointF begin, end;
    double breadth; ///< at its begin
};

/// Pixels of a target of 400 by 300.
constexpr double kWidth = 400.0, kHeight = 300.0;

class DimensionsTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_style.font = zx3D::LoadDefaultFont(16).value();
        StartFrame();
        m_view.SetViewport({0, 0, static_cast<int>(kWidth), static_cast<int>(kHeight)});
        recorder::ClearCalls();
    }
    void TearDown() override {
        zx3D::DestroyFont(m_style.font);
        DrawFixture::TearDown();
    }

    /// What the identity shows at a pixel, and as far from another one.
    static WorldPosition At(double x, double y) {
        return {2.0 * x / kWidth - 1.0, 1.0 - 2.0 * y / kHeight, 0.5};
    }
    static WorldVector Along(double x, double y) { return {2.0 * x / kWidth, -2.0 * y / kHeight, 0.0}; }

    std::vector<Corner> CornersOf(Dimension const& dimension) {
        recorder::ClearCalls();
        DrawDimension(*m_renderer, m_view, dimension, m_style);
        return TheDraw().VerticesAs<Corner>();
    }

    static Shape ToShape(Corner const* corners) {
        auto const point = [&](int i) { return QPointF(corners[i].x, corners[i].y); };
        QPointF const begin = 0.5 * (point(0) + point(3)), end = 0.5 * (point(1) + point(2));
        QPointF const direction = (end - begin) / std::hypot(end.x() - begin.x(), end.y() - begin.y());
        QPointF const across = point(3) - point(0);
        return {begin + 0.5 * direction, end - 0.5 * direction, std::hypot(across.x(), across.y()) - 1.0};
    }

    static void ExpectPoint(QPointF const& actual, QPointF const& expected) {
        EXPECT_NEAR(actual.x(), expected.x(), 1e-3);
        EXPECT_NEAR(actual.y(), expected.y(), 1e-3);
    }

    DimensionStyle m_style;
};

} // namespace

TEST_F(DimensionsTest, AreTwoExtensionLinesALineAndTwoArrowHeads) {
    m_style.lineWidth = 2.0f;
    auto const corners = CornersOf({At(50, 200), At(250, 200), Along(0, -60), {}});
    ASSERT_THAT(corners, SizeIs(5 * 4));
    Shape const left = ToShape(&corners[0]), right = ToShape(&corners[4]), line = ToShape(&corners[8]);
    ExpectPoint(left.begin, {50, 196}); // a gap of 4
    ExpectPoint(left.end, {50, 134});   // and 6 beyond the line
    ExpectPoint(right.begin, {250, 196});
    ExpectPoint(right.end, {250, 134});
    ExpectPoint(line.begin, {62, 140}); // from the base of one head to that of the other
    ExpectPoint(line.end, {238, 140});
    EXPECT_NEAR(line.breadth, 2.0, 1e-3);
    Shape const head = ToShape(&corners[12]), otherHead = ToShape(&corners[16]);
    ExpectPoint(head.begin, {62, 140});
    ExpectPoint(head.end, {50, 140});
    ExpectPoint(otherHead.begin, {238, 140});
    ExpectPoint(otherHead.end, {250, 140});
    EXPECT_EQ(m_renderer->GetFrameStatistics().calls, 1u);
}

TEST_F(DimensionsTest, ArrowHeadsWithoutRoomStandOutside) {
    auto const corners = CornersOf({At(50, 200), At(70, 200), {}, {}});
    ASSERT_THAT(corners, SizeIs(3 * 4)) << "without an offset there are no extension lines";
    Shape const line = ToShape(&corners[0]), head = ToShape(&corners[4]), other = ToShape(&corners[8]);
    ExpectPoint(line.begin, {26, 200});
    ExpectPoint(line.end, {94, 200});
    ExpectPoint(head.begin, {38, 200});
    ExpectPoint(head.end, {50, 200});
    ExpectPoint(other.begin, {82, 200});
    ExpectPoint(other.end, {70, 200});
}

TEST_F(DimensionsTest, TextsStandUprightAboveTheMiddleOfTheLine) {
    zx3D::TextSize const size = zx3D::MeasureText(m_style.font, "H");
    double const distance = size.height / 2.0 + double(m_style.textGap) + 0.5;
    for (int degrees = 0; degrees < 360; degrees += 15) {
        double const radians = degrees * std::numbers::pi / 180.0;
        QPointF const along(std::cos(radians), std::sin(radians));
        QPointF const middle(200.25, 150.5);
        auto const at = [&](double pixels) {
            return At(middle.x() + pixels * along.x(), middle.y() + pixels * along.y());
        };
        auto const corners = CornersOf({at(-80), at(80), {}, "H"});
        ASSERT_THAT(corners, SizeIs(4 * 4));
        Corner const* const glyph = &corners[12];
        QPointF const direction(glyph[1].x - glyph[0].x, glyph[1].y - glyph[0].y);
        double const length = std::hypot(direction.x(), direction.y());
        QPointF const text = direction / length;
        // Along the line, from the left to the right or upwards.
        EXPECT_NEAR(text.x() * along.y() - text.y() * along.x(), 0.0, 1e-4) << degrees;
        EXPECT_TRUE(text.x() > 1e-4 || text.y() < 0.0) << degrees;
        // The glyph's middle is near that of its block; a pixel of rounding where it is sharp.
        QPointF const center(0.5 * (glyph[0].x + glyph[2].x), 0.5 * (glyph[0].y + glyph[2].y));
        QPointF const away = center - middle;
        EXPECT_NEAR(QPointF::dotProduct(away, text), 0.0, 1.5) << degrees;
        EXPECT_NEAR(away.x() * text.y() - away.y() * text.x(), distance, 3.5) << degrees;
    }
}

TEST_F(DimensionsTest, ManyAreOneDraw) {
    std::vector<Dimension> dimensions;
    for (int i = 0; i < 50; ++i)
        dimensions.push_back({At(50, 5.0 * i), At(250, 5.0 * i), Along(0, -10), "H"});
    DrawDimensions(*m_renderer, m_view, dimensions, m_style);
    EXPECT_THAT(TheDraw().VerticesAs<Corner>(), SizeIs(50 * 6 * 4));
}

TEST_F(DimensionsTest, DistancesFarFromTheWorldsOriginAreExact) {
    WorldPosition const origin{500'000.0, 5'400'000.0, 0.0};
    m_view.SetOrigin(origin);
    auto const move = [&](WorldPosition const& place) { return origin + (place - WorldPosition()); };
    auto const corners = CornersOf({move(At(50, 200)), move(At(250, 200)), {}, {}});
    ASSERT_THAT(corners, SizeIs(3 * 4));
    ExpectPoint(ToShape(&corners[4]).end, {50, 200});
    ExpectPoint(ToShape(&corners[8]).end, {250, 200});
}

TEST_F(DimensionsTest, WhatHasNoLengthOrIsBehindTheCameraIsNotDrawn) {
    auto const draw = [&](Dimension const& dimension) {
        DrawDimension(*m_renderer, m_view, dimension, m_style);
    };
    draw({At(50, 200), At(50, 200), Along(0, -60), "0"});
    m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}); // w is z
    draw({{0.0, 0.0, 0.5}, {0.0, 0.0, 0.8}, {}, "along the view"});
    draw({{0.1, 0.0, 0.5}, {0.5, 0.0, -0.5}, {}, "an end behind the camera"});
    draw({{0.1, 0.0, 0.5}, {0.5, 0.0, 0.5}, {0.0, 0.0, -1.0}, "the line behind the camera"});
    DrawDimensions(*m_renderer, m_view, {}, m_style);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(DimensionsTest, WhatIsNotFiniteIsRefusedAndCounted) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<Dimension> dimensions(3, Dimension{At(50, 200), At(250, 200), {}, "H"});
    dimensions[0].to.y = nan;
    dimensions[2].offset.z = std::numeric_limits<double>::infinity();
    m_style.arrowLength = m_style.lineWidth = m_style.textGap = m_style.depthOffset = m_style.extensionGap =
        std::numeric_limits<float>::quiet_NaN();
    DrawDimensions(*m_renderer, m_view, dimensions, m_style);
    EXPECT_THAT(TakeWarnings("dimension.not-finite"), ElementsAre(HasSubstr("2 of 3 dimensions")));
    EXPECT_THAT(TheDraw().VerticesAs<Corner>(), SizeIs(2 * 4)) << "a line and a text";
}
