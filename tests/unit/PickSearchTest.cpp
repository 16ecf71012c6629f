// The search through arrays, against rays and rectangles that are computed otherwise.
#include <DrawFixture.h>

#include <zx3DQt/OrbitCamera.h>
#include <zx3DQt/PickSearch.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Point = zx3D::Vertex::Pos3fColorRGBA;

class PickSearchTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_view.SetViewport({0, 0, 200, 100});
        m_view.SetOrthoProjectionFromRect(QRectF(0, 0, 200, 100), 0.0f, 1.0f, 0.0f);
    }

    /// Looks at the world's origin, from a distance, with another origin.
    void LookInPerspective() {
        OrbitCamera camera;
        camera.SetAzimuth(30.0);
        camera.SetElevation(20.0);
        camera.SetDistance(30.0);
        m_view.SetOrigin({1.5, -2.25, 0.5});
        camera.Apply(m_view, WorldBox{{-10, -10, -10}, {10, 10, 10}});
    }

    std::vector<Point> RandomPoints(std::size_t count) {
        std::uniform_real_distribution<float> number(-8.0f, 8.0f);
        std::vector<Point> points(count);
        for (Point& point : points)
            point.position = {number(m_random), number(m_random), number(m_random)};
        return points;
    }

    WorldPosition InWorld(bx::Vec3 const& position) const {
        return m_view.GetOrigin() + WorldVector{position.x, position.y, position.z};
    }

    std::mt19937 m_random{7};
};

double DistanceToRay(WorldRay const& ray, WorldPosition const& position) {
    WorldVector const away = Cross(ray.direction, position - ray.origin);
    return std::sqrt(Dot(away, away));
}

} // namespace

TEST_F(PickSearchTest, APointIsFoundByItsSize) {
    Point const points[] = {{{20, 30, 0.5f}, {}}, {{40, 30, 0.2f}, {}}, {{40, 30, 0.1f}, {}}};
    auto const find = [&](double x, double y, SearchOptions const& options) {
        return FindPoint(m_view, {x, y}, points, options);
    };
    EXPECT_EQ(find(24, 30, {.radius = 0.0, .size = 10})->what.element, 0u);
    EXPECT_DOUBLE_EQ(find(24, 30, {.radius = 0.0, .size = 10})->distance, 0.0);
    EXPECT_FALSE(find(26, 30, {.radius = 0.0, .size = 10}));
    EXPECT_NEAR(find(28, 30, {.radius = 4.0, .size = 10})->distance, 3.0, 1e-5);
    EXPECT_EQ(find(40, 31, {})->what.element, 2u) << "the one in front";
    EXPECT_NEAR(find(40, 31, {})->depth, 0.1, 1e-6);
    EXPECT_EQ(find(26, 30, {.radius = 20.0})->what.element, 0u);
    EXPECT_EQ(find(26, 30, {.radius = 20.0, .order = SearchOrder::Foremost})->what.element, 2u);
    EXPECT_EQ(find(22, 30, {})->position.x, 20.0);
}

TEST_F(PickSearchTest, WhatIsNotInTheDepthsThatAreDrawnIsNotFound) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Point const points[] = {{{20, 30, -0.5f}, {}}, {{20, 30, 1.5f}, {}}, {{20, nan, 0.5f}, {}}};
    EXPECT_FALSE(FindPoint(m_view, {20, 30}, points));
    EXPECT_THAT(FindPointsIn(m_view, {0, 0, 200, 100}, points), IsEmpty());
    std::uint16_t const indices[] = {0, 1, 7};
    EXPECT_FALSE(FindTriangle(m_view, {20, 30}, points, indices)) << "an index beyond the vertices";
    EXPECT_FALSE(FindPoint(m_view, {20, 30}, zx3D::DataSpan<Point const>()));
    // Of lines and triangles, what is in them is.
    zx3D::Line const lines[] = {{{20, 0, -1.0f}, {20, 100, 1.0f}, {}}};
    EXPECT_FALSE(FindLine(m_view, {20, 30}, lines));
    EXPECT_NEAR(FindLine(m_view, {21, 70}, lines)->position.z, 0.4, 1e-6);
    EXPECT_THAT(FindLinesIn(m_view, {10, 10, 50, 20}, lines), IsEmpty());
    EXPECT_THAT(FindLinesIn(m_view, {10, 40, 50, 20}, lines), ElementsAre(0u));
}

TEST_F(PickSearchTest, TheNearestPointIsTheOneThatProjectsNearest) {
    LookInPerspective();
    std::vector<Point> const points = RandomPoints(500);
    for (int i = 0; i < 50; ++i) {
        QPointF const place(4.0 * i + 0.3, 2.0 * i + 0.1);
        double nearest = 1e9;
        std::uint64_t expected = 0;
        for (std::size_t p = 0; p < points.size(); ++p) {
            QPointF const at = *m_view.ProjectToViewport(InWorld(points[p].position));
            double const distance = std::max(std::abs(at.x() - place.x()), std::abs(at.y() - place.y()));
            if (distance < nearest) {
                nearest = distance;
                expected = p;
            }
        }
        std::optional<PickHit> const hit = FindPoint(m_view, place, points, {.radius = 100.0});
        ASSERT_TRUE(hit);
        QPointF const found = *m_view.ProjectToViewport(hit->position);
        double const distance = std::max(std::abs(found.x() - place.x()), std::abs(found.y() - place.y()));
        EXPECT_TRUE(hit->what.element == expected || std::abs(distance - nearest) < 0.51) << i;
        EXPECT_EQ(hit->position, InWorld(points[hit->what.element].position));
    }
}

TEST_F(PickSearchTest, PlacesOnLinesAndTrianglesAreOnTheRay) {
    LookInPerspective();
    std::vector<Point> const vertices = RandomPoints(60);
    std::vector<std::uint16_t> indices;
    std::vector<zx3D::Line> lines;
    for (std::uint16_t i = 0; i < 60; ++i) {
        indices.push_back(i);
        lines.push_back({vertices[i].position, vertices[(i + 7) % 60].position, {}});
    }
    int found = 0;
    for (int i = 0; i < 100; ++i) {
        QPointF const place(2.0 * i + 0.3, 50.0 + 30.0 * std::sin(i));
        WorldRay const ray = *m_view.ComputeRay(place);
        if (std::optional<PickHit> const hit =
                FindTriangle(m_view, place, vertices, indices, {.radius = 0.0})) {
            ++found;
            EXPECT_LT(DistanceToRay(ray, hit->position), 1e-4);
            // In its plane.
            WorldPosition const corner = InWorld(vertices[3 * hit->what.element].position);
            WorldVector const normal = Cross(InWorld(vertices[3 * hit->what.element + 1].position) - corner,
                                             InWorld(vertices[3 * hit->what.element + 2].position) - corner);
            EXPECT_NEAR(Dot(normal, hit->position - corner) / std::sqrt(Dot(normal, normal)), 0.0, 1e-6);
        }
        if (std::optional<PickHit> const hit = FindLine(m_view, place, lines, {.radius = 5.0})) {
            QPointF const at = *m_view.ProjectToViewport(hit->position);
            EXPECT_NEAR(std::max(std::hypot(at.x() - place.x(), at.y() - place.y()) - 0.5, 0.0),
                        hit->distance, 0.01);
        }
    }
    EXPECT_GT(found, 20);
}

TEST_F(PickSearchTest, ARectangleHasWhatReachesIntoIt) {
    Point const points[] = {{{20, 30, 0.5f}, {}}, {{40, 30, 0.5f}, {}}, {{60, 30, 0.5f}, {}}};
    EXPECT_THAT(FindPointsIn(m_view, {24, 20, 30, 20}, points), ElementsAre(1u));
    EXPECT_THAT(FindPointsIn(m_view, {24, 20, 30, 20}, points, {.size = 14}), ElementsAre(0u, 1u, 2u));
    EXPECT_THAT(FindPointsIn(m_view, QRectF(QPointF(54, 40), QPointF(24, 20)), points), ElementsAre(1u))
        << "whose corners are the other way round";
    zx3D::Line const lines[] = {{{0, 0, 0.5f}, {100, 100, 0.5f}, {}}, // through it
                                {{0, 90, 0.5f}, {20, 100, 0.5f}, {}}, // elsewhere
                                {{0, 41, 0.5f}, {41, 0, 0.5f}, {}}};  // past a corner
    EXPECT_THAT(FindLinesIn(m_view, {24, 20, 30, 20}, lines), ElementsAre(0u));
    EXPECT_THAT(FindLinesIn(m_view, {24, 20, 30, 20}, lines, {.size = 8}), ElementsAre(0u, 2u));
    Point const vertices[] = {{{-500, -500, 0.5f}, {}}, {{900, -500, 0.5f}, {}}, {{0, 900, 0.5f}, {}},
                              {{0, 0, 0.5f}, {}},       {{20, 0, 0.5f}, {}},     {{0, 20, 0.5f}, {}}};
    std::uint16_t const indices[] = {0, 1, 2, 3, 4, 5};
    EXPECT_THAT(FindTrianglesIn(m_view, {24, 20, 30, 20}, vertices, indices), ElementsAre(0u))
        << "all around it";
    EXPECT_THAT(FindTrianglesIn(m_view, {2, 2, 3, 3}, vertices, indices), ElementsAre(0u, 1u));
}

TEST_F(PickSearchTest, TransformsMoveWhatIsFound) {
    Point const points[] = {{{20, 30, 0.5f}, {}}};
    m_view.SetOrigin({1000.0, 0.0, 0.0});
    SearchOptions const options{.transform = Translation(50, 0, 0)};
    EXPECT_FALSE(FindPoint(m_view, {20, 30}, points, options));
    EXPECT_EQ(FindPoint(m_view, {70, 30}, points, options)->position, (WorldPosition{1070.0, 30.0, 0.5}));
}
