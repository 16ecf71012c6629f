// Triangles that fill outlines: how much they cover, and what is refused.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/Polygons.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using PolygonsTest = DrawFixture;

PolygonOutline Square(float x, float y, float side, bool isReversed = false) {
    PolygonOutline outline{{x, y, 0}, {x + side, y, 0}, {x + side, y + side, 0}, {x, y + side, 0}};
    if (isReversed)
        std::swap(outline[1], outline[3]);
    return outline;
}

PolygonOutline Circle(QVector3D const& center, float radius, int count) {
    PolygonOutline outline;
    for (int i = 0; i < count; ++i) {
        double const angle = 2.0 * std::numbers::pi * i / count;
        outline.push_back(center + radius * QVector3D(static_cast<float>(std::cos(angle)),
                                                      static_cast<float>(std::sin(angle)), 0.0f));
    }
    return outline;
}

/// Without regard to which way triangles turn; all must turn the same way.
double AreaOf(PolygonTriangles const& triangles) {
    double area = 0.0;
    QVector3D sum;
    for (std::size_t i = 0; i < triangles.indices.size(); i += 3) {
        QVector3D const& a = triangles.positions.at(triangles.indices[i]);
        QVector3D const& b = triangles.positions.at(triangles.indices[i + 1]);
        QVector3D const& c = triangles.positions.at(triangles.indices[i + 2]);
        QVector3D const normal = QVector3D::crossProduct(b - a, c - a);
        area += 0.5 * double(normal.length());
        sum += normal;
    }
    EXPECT_NEAR(0.5 * double(sum.length()), area, 1e-4 * area) << "some turn the other way";
    return area;
}

} // namespace

TEST_F(PolygonsTest, OutlinesInOthersAreHoles) {
    std::vector<PolygonOutline> const outlines{Square(0, 0, 10), Square(2, 2, 6), Square(4, 4, 1)};
    EXPECT_NEAR(AreaOf(TriangulatePolygon(outlines)), 100 - 36 + 1, 1e-3);
    EXPECT_NEAR(AreaOf(TriangulatePolygon(outlines, FillRule::NonZero)), 100, 1e-3);
    std::vector<PolygonOutline> const reversed{Square(0, 0, 10), Square(2, 2, 6, true)};
    EXPECT_NEAR(AreaOf(TriangulatePolygon(reversed, FillRule::NonZero)), 100 - 36, 1e-3);
}

TEST_F(PolygonsTest, OutlinesMayCross) {
    std::vector<PolygonOutline> const bow{{{0, 0, 0}, {2, 2, 0}, {2, 0, 0}, {0, 2, 0}}};
    EXPECT_NEAR(AreaOf(TriangulatePolygon(bow)), 2.0, 1e-5);
    EXPECT_THAT(TriangulatePolygon(bow).positions, SizeIs(5)) << "one where they cross";
    std::vector<PolygonOutline> const squares{Square(0, 0, 2), Square(1, 1, 2)};
    EXPECT_NEAR(AreaOf(TriangulatePolygon(squares)), 6.0, 1e-5);
    EXPECT_NEAR(AreaOf(TriangulatePolygon(squares, FillRule::NonZero)), 7.0, 1e-5);
}

TEST_F(PolygonsTest, PlanesMayLieAnyhow) {
    QMatrix4x4 turn;
    turn.rotate(70.0f, {1, 2, 3});
    turn.translate(100, 200, 300);
    std::vector<PolygonOutline> outlines{Circle({0, 0, 0}, 3, 100), Circle({1, 0, 0}, 1, 50)};
    double const area = AreaOf(TriangulatePolygon(outlines));
    for (PolygonOutline& outline : outlines) {
        for (QVector3D& position : outline)
            position = turn.map(position);
    }
    EXPECT_NEAR(AreaOf(TriangulatePolygon(outlines)), area, 0.01);
    EXPECT_NEAR(area, std::numbers::pi * 8.0, 0.05);
}

TEST_F(PolygonsTest, WhatEnclosesNothingHasNoTriangles) {
    EXPECT_THAT(TriangulatePolygon({}).indices, IsEmpty());
    std::vector<PolygonOutline> const outlines{
        {}, {{1, 1, 0}}, {{1, 1, 0}, {2, 2, 0}}, Square(3, 3, 0), {{0, 0, 0}, {1, 0, 0}, {5, 0, 0}}};
    EXPECT_THAT(TriangulatePolygon(outlines).indices, IsEmpty());
    DrawPolygon(*m_renderer, m_view, outlines, {1, 0, 0, 1});
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(PolygonsTest, OutlinesThatAreNotFiniteAreLeftOut) {
    std::vector<PolygonOutline> outlines{Square(0, 0, 10), Square(2, 2, 6)};
    outlines[1][2].setY(std::numeric_limits<float>::quiet_NaN());
    EXPECT_NEAR(AreaOf(TriangulatePolygon(outlines)), 100, 1e-3);
    EXPECT_THAT(TakeWarnings("polygon.not-finite"), ElementsAre(HasSubstr("1 of 2 outlines")));
    constexpr float huge = std::numeric_limits<float>::max();
    std::vector<PolygonOutline> const far{{{-huge, -huge, 0}, {huge, -huge, 0}, {huge, huge, 0}}};
    EXPECT_THAT(TriangulatePolygon(far).indices, SizeIs(3));
}

TEST_F(PolygonsTest, AnyNumberOfTrianglesIsDrawn) {
    std::vector<PolygonOutline> const outlines{Circle({0, 0, 0}, 1, 70'000)};
    PolygonTriangles const triangles = TriangulatePolygon(outlines);
    EXPECT_THAT(triangles.indices, SizeIs(3 * 69'998));
    StartFrame();
    recorder::ClearCalls();
    DrawPolygon(*m_renderer, m_view, triangles, {1, 0, 0, 1}, BGFXRenderer::STATE_TRANSPARENT);
    std::size_t corners = 0;
    for (recorder::Draw const& draw : recorder::Draws()) {
        corners += draw.IndicesAs<std::uint16_t>().size();
        EXPECT_EQ(draw.state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
    }
    EXPECT_EQ(corners, triangles.indices.size());
}
