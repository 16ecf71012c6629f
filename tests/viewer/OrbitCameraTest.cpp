// What the camera sees after it was moved.
#include <OrbitCamera.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace viewer {

namespace {

constexpr float kAspectRatio = 1.6f;

/// Where a place appears, in the camera's units: the view's height is 2.
QPointF Project(OrbitCamera const& camera, QVector3D const& place,
                Box const& box = {{-1, -1, -1}, {1, 1, 1}}) {
    QMatrix4x4 const projection = camera.ProjectionMatrix(kAspectRatio, box.Center(), box.Radius(), true);
    QVector3D const ndc = (projection * camera.ViewMatrix()).map(place);
    return {kAspectRatio * ndc.x(), ndc.y()};
}

float Depth(OrbitCamera const& camera, QVector3D const& place, Box const& box, bool homogeneous) {
    QMatrix4x4 const projection =
        camera.ProjectionMatrix(kAspectRatio, box.Center(), box.Radius(), homogeneous);
    return (projection * camera.ViewMatrix()).map(place).z();
}

void ExpectNear(QVector3D const& actual, QVector3D const& expected, float tolerance = 1e-4f) {
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    EXPECT_NEAR(actual.z(), expected.z(), tolerance);
}

void ExpectNear(QPointF const& actual, QPointF const& expected, double tolerance = 1e-4) {
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
}

Box const kLongBox{{-4.0f, 1.0f, -0.5f}, {2.0f, 2.0f, 3.5f}};

constexpr StandardView kAllViews[] = {StandardView::Iso,   StandardView::Front, StandardView::Back,
                                      StandardView::Left,  StandardView::Right, StandardView::Top,
                                      StandardView::Bottom};

} // namespace

class OrbitCameraTest : public ::testing::TestWithParam<std::pair<UpAxis, Projection>> {
protected:
    OrbitCameraTest() {
        m_camera.SetUpAxis(GetParam().first);
        m_camera.SetProjection(GetParam().second);
    }

    OrbitCamera m_camera;
};

TEST_P(OrbitCameraTest, StandardViewsLookAlongTheirAxes) {
    bool const zIsUp = GetParam().first == UpAxis::Z;
    QVector3D const up = zIsUp ? QVector3D(0, 0, 1) : QVector3D(0, 1, 0);
    QVector3D const front = zIsUp ? QVector3D(0, -1, 0) : QVector3D(0, 0, 1);
    QVector3D const right(1, 0, 0);
    std::pair<StandardView, QVector3D> const expected[] = {
        {StandardView::Front, front},
        {StandardView::Back, -front},
        {StandardView::Right, right},
        {StandardView::Left, -right},
        {StandardView::Top, up},
        {StandardView::Bottom, -up},
        {StandardView::Iso, (front + right + up).normalized()}};
    for (auto const& [view, towardsViewer] : expected) {
        m_camera.LookFrom(view);
        ExpectNear(m_camera.TowardsViewer(), towardsViewer);
    }
    m_camera.LookFrom(StandardView::Top);
    ExpectNear(m_camera.ScreenUp(), -front);
    m_camera.LookFrom(StandardView::Front);
    ExpectNear(m_camera.ScreenUp(), up);
    ExpectNear(m_camera.ScreenRight(), right);
}

TEST_P(OrbitCameraTest, DirectionsAreUnitVectorsAtRightAngles) {
    for (int i = 0; i < 50; ++i) {
        m_camera.Orbit(37.0f, i % 7 * 11.0f - 33.0f);
        EXPECT_NEAR(m_camera.ScreenRight().length(), 1.0f, 1e-5f);
        EXPECT_NEAR(m_camera.ScreenUp().length(), 1.0f, 1e-5f);
        EXPECT_NEAR(QVector3D::dotProduct(m_camera.ScreenUp(), m_camera.ScreenRight()), 0.0f, 1e-5f);
        ExpectNear(QVector3D::crossProduct(m_camera.ScreenRight(), m_camera.ScreenUp()),
                   m_camera.TowardsViewer());
    }
}

TEST_P(OrbitCameraTest, FitShowsAllOfTheBoxAndFillsMostOfTheView) {
    for (StandardView const view : kAllViews) {
        m_camera.LookFrom(view);
        m_camera.Fit(kLongBox, kAspectRatio);
        double farthest = 0.0;
        for (QVector3D const& corner : kLongBox.Corners()) {
            QPointF const place = Project(m_camera, corner, kLongBox);
            farthest = std::max({farthest, std::abs(place.x()) / kAspectRatio, std::abs(place.y())});
        }
        EXPECT_LT(farthest, 0.9) << static_cast<int>(view);
        EXPECT_GT(farthest, 0.75) << static_cast<int>(view);
        ExpectNear(Project(m_camera, kLongBox.Center(), kLongBox), QPointF(0.0, 0.0));
    }
}

TEST_P(OrbitCameraTest, FitOfAPointOrOfNothingLeavesACameraThatCanBeMoved) {
    OrbitCamera const before = m_camera;
    m_camera.Fit(Box(), kAspectRatio);
    ExpectNear(m_camera.Position(), before.Position());
    Box point;
    point.Extend({5.0f, 6.0f, 7.0f});
    m_camera.Fit(point, kAspectRatio);
    ExpectNear(m_camera.GetTarget(), {5.0f, 6.0f, 7.0f});
    EXPECT_GT(m_camera.GetDistance(), 0.0f);
}

TEST_P(OrbitCameraTest, FitWorksForTinyHugeAndDistantBoxes) {
    for (float const scale : {1e-9f, 1e-3f, 1e6f, 1e12f}) {
        Box const box{scale * kLongBox.min, scale * kLongBox.max};
        m_camera.LookFrom(StandardView::Iso);
        m_camera.Fit(box, kAspectRatio);
        QPointF const center = Project(m_camera, box.Center(), box);
        ExpectNear(center, QPointF(0.0, 0.0), 1e-3);
        EXPECT_NEAR(m_camera.GetDistance() / scale, 13.0f, 8.0f);
    }
}

TEST_P(OrbitCameraTest, ZoomKeepsThePlaceUnderThePointer) {
    m_camera.LookFrom(StandardView::Iso);
    m_camera.Fit(kLongBox, kAspectRatio);
    QVector3D const place = m_camera.GetTarget() + 0.7f * m_camera.ScreenRight() - 0.4f * m_camera.ScreenUp();
    QPointF const before = Project(m_camera, place);
    for (float const factor : {1.5f, 3.0f, 0.1f}) {
        float const distance = m_camera.GetDistance();
        m_camera.Zoom(factor, before);
        EXPECT_NEAR(m_camera.GetDistance(), distance / factor, 1e-4f * distance);
        ExpectNear(Project(m_camera, place), before, 1e-3);
    }
}

TEST_P(OrbitCameraTest, PanMovesWhatIsAtTheTargetsDepthAlongWithThePointer) {
    m_camera.LookFrom(StandardView::Iso);
    m_camera.Fit(kLongBox, kAspectRatio);
    QVector3D const place = m_camera.GetTarget() + 0.3f * m_camera.ScreenUp();
    QPointF const before = Project(m_camera, place);
    m_camera.Pan({0.25, -0.5});
    ExpectNear(Project(m_camera, place), before + QPointF(0.25, -0.5), 1e-3);
}

TEST_P(OrbitCameraTest, OrbitingRightBringsTheLeftSideIntoView) {
    m_camera.LookFrom(StandardView::Front);
    QVector3D const left = -m_camera.ScreenRight();
    m_camera.Orbit(30.0f, 0.0f);
    EXPECT_NEAR(QVector3D::dotProduct(m_camera.TowardsViewer(), left), std::sin(qDegreesToRadians(30.0f)),
                1e-5f);
    m_camera.Orbit(0.0f, 500.0f); // ends above, upright
    ExpectNear(m_camera.TowardsViewer(), m_camera.UpDirection());
}

TEST_P(OrbitCameraTest, DepthsOfTheSphereLieInTheRangeOfTheRenderer) {
    m_camera.LookFrom(StandardView::Iso);
    m_camera.Fit(kLongBox, kAspectRatio);
    for (bool const homogeneous : {true, false}) {
        QVector3D const sight = kLongBox.Radius() * m_camera.TowardsViewer();
        float const nearest = Depth(m_camera, kLongBox.Center() + sight, kLongBox, homogeneous);
        float const farthest = Depth(m_camera, kLongBox.Center() - sight, kLongBox, homogeneous);
        float const low = homogeneous ? -1.0f : 0.0f;
        EXPECT_GE(nearest, low);
        EXPECT_LT(nearest, farthest);
        EXPECT_LE(farthest, 1.0f);
        EXPECT_NEAR(nearest, low, 0.1f);
        EXPECT_NEAR(farthest, 1.0f, 0.1f);
    }
}

TEST_P(OrbitCameraTest, InsideTheBoxTheNearPlaneStaysInFront) {
    m_camera.Fit(kLongBox, kAspectRatio);
    m_camera.Zoom(1000.0f);
    float const depth = Depth(m_camera, m_camera.GetTarget(), kLongBox, true);
    EXPECT_GT(depth, -1.0f);
    EXPECT_LT(depth, 1.0f);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OrbitCameraTest,
                         ::testing::Values(std::pair(UpAxis::Z, Projection::Perspective),
                                           std::pair(UpAxis::Z, Projection::Parallel),
                                           std::pair(UpAxis::Y, Projection::Perspective),
                                           std::pair(UpAxis::Y, Projection::Parallel)),
                         [](auto const& row) {
                             return std::string(row.param.first == UpAxis::Z ? "ZIsUp" : "YIsUp") +
                                    (row.param.second == Projection::Perspective ? "Perspective"
                                                                                 : "Parallel");
                         });

TEST(OrbitCameraProjectionTest, ChangingItKeepsTheSizeAtTheTarget) {
    OrbitCamera camera;
    camera.Fit(kLongBox, kAspectRatio);
    QVector3D const place = camera.GetTarget() + 0.5f * camera.ScreenUp();
    QPointF const before = Project(camera, place);
    camera.SetProjection(Projection::Parallel);
    ExpectNear(Project(camera, place), before);
}

} // namespace viewer
