// The camera that flies: what each operation keeps, as values.
#include <zx3DQt/Camera.h>

#include <CameraReference.h>
#include <Fixtures.h>

#include <QJsonDocument>

#include <limits>
#include <string>

using namespace camera_reference;

namespace {

constexpr double kHundredth = 0.01; // of a pixel

Pinhole PinholeOf(FlyCamera const& camera) {
    double const half = 0.5 * camera.GetFieldOfView() * 3.14159265358979323846 / 180.0;
    return {camera.ComputeAxes(), camera.GetPosition(), std::tan(half), true};
}

} // namespace

class FlyCameraTest : public ContextFixture, public testing::WithParamInterface<WorldPosition> {
protected:
    FlyCameraTest() {
        m_camera.SetPosition(GetParam());
        m_camera.SetHeading(33.0);
        m_camera.SetPitch(-21.0);
    }

    FlyCamera m_camera;
};

TEST_P(FlyCameraTest, LooksWhereItIsToldTo) {
    m_camera.SetHeading(0.0);
    m_camera.SetPitch(0.0);
    ExpectNear(m_camera.ComputeAxes().towardsViewer, {0.0, -1.0, 0.0}, 1e-12);
    m_camera.Turn(90.0, 0.0); // to the right
    ExpectNear(m_camera.ComputeAxes().towardsViewer, {-1.0, 0.0, 0.0}, 1e-12);
    m_camera.Turn(0.0, 100.0); // up, and no farther
    ExpectNear(m_camera.ComputeAxes().towardsViewer, {0.0, 0.0, -1.0}, 1e-12);
    EXPECT_EQ(m_camera.GetPosition(), GetParam());
    m_camera.LookFrom(StandardView::Right);
    EXPECT_EQ(m_camera.ComputeAxes().towardsViewer, (WorldVector{1.0, 0.0, 0.0}));
    m_camera.LookFrom(StandardView::Top);
    EXPECT_EQ(m_camera.ComputeAxes().towardsViewer, (WorldVector{0.0, 0.0, 1.0}));
}

TEST_P(FlyCameraTest, GoesAlongThePicturesDirections) {
    ViewAxes const axes = m_camera.ComputeAxes();
    m_camera.Move(1.0, 2.0, 3.0);
    ExpectNear(m_camera.GetPosition() - GetParam(), axes.right + 2.0 * axes.up + -3.0 * axes.towardsViewer,
               1e-8);
}

TEST_P(FlyCameraTest, WhatIsUnderThePointerStaysThereThroughTenThousandSteps) {
    Random random;
    for (int step = 0; step < 10'000; ++step) {
        QPointF const pointer = random.PlaceIn(kViewport);
        QPointF destination = pointer;
        WorldPosition const place = m_camera.ComputeWorldPosition(pointer, kViewport);
        ASSERT_LT(Distance(PinholeOf(m_camera).Project(place), pointer), kHundredth) << step;
        if (step % 2 == 0) {
            m_camera.MoveTowards(pointer, kViewport, random.Between(-1.0, 0.9) * m_camera.GetFocusDistance());
        } else {
            destination = random.PlaceIn(kViewport);
            m_camera.Pan(pointer, destination, kViewport);
        }
        ASSERT_LT(Distance(PinholeOf(m_camera).Project(place), destination), kHundredth) << step;
        if (step % 16 < 2) { // as floats on the GPU have it
            BGFXViewContext view = MakeView();
            m_camera.Apply(view, std::nullopt, ViewOrigin::Focus);
            ASSERT_LT(Distance(*view.ProjectToViewport(place), destination), kHundredth) << step;
        }
        m_camera.Turn(random.Between(-5.0, 5.0), random.Between(-5.0, 5.0));
    }
}

TEST_P(FlyCameraTest, NothingJumpsAtThePoles) {
    constexpr double stepDegrees = 0.25;
    constexpr double stepLength = stepDegrees * 3.14159265358979 / 180.0;
    ViewAxes before = m_camera.ComputeAxes();
    for (int i = 0; i < 2000; ++i) {
        m_camera.Turn(i % 2 == 0 ? 0.0 : stepDegrees, i % 2 == 0 ? stepDegrees : 0.0);
        ViewAxes const axes = m_camera.ComputeAxes();
        ExpectRightHanded(axes);
        EXPECT_LT(LengthOf(axes.right - before.right), 1.01 * stepLength);
        EXPECT_LT(LengthOf(axes.up - before.up), 1.01 * stepLength);
        before = axes;
    }
    EXPECT_EQ(m_camera.GetPitch(), 90.0);
}

TEST_P(FlyCameraTest, FitEnclosesEveryCornerAndTouchesTwoOppositeEdges) {
    WorldBox const box = BoxAt(GetParam());
    double const aspectRatio = kViewport.width() / kViewport.height();
    Random random;
    for (int i = 0; i < 50; ++i) {
        m_camera.SetHeading(random.Between(-180.0, 180.0));
        m_camera.SetPitch(random.Between(-90.0, 90.0));
        m_camera.SetRoll(random.Between(-180.0, 180.0));
        m_camera.Fit(box, aspectRatio, 0.1);
        double left = 1.0, right = -1.0, top = 1.0, bottom = -1.0; // NDC, y down
        for (WorldPosition const& corner : CornersOf(box)) {
            QPointF const way = PinholeOf(m_camera).Project(corner) - kViewport.center();
            left = std::min(left, way.x() / (0.5 * kViewport.width()));
            right = std::max(right, way.x() / (0.5 * kViewport.width()));
            top = std::min(top, way.y() / (0.5 * kViewport.height()));
            bottom = std::max(bottom, way.y() / (0.5 * kViewport.height()));
        }
        EXPECT_GT(std::min(left, top), -0.8 - 1e-6);
        EXPECT_LT(std::max(right, bottom), 0.8 + 1e-6);
        EXPECT_TRUE((std::abs(left + 0.8) < 1e-6 && std::abs(right - 0.8) < 1e-6) ||
                    (std::abs(top + 0.8) < 1e-6 && std::abs(bottom - 0.8) < 1e-6))
            << left << " " << right << " " << top << " " << bottom;
        BGFXViewContext view = MakeView();
        m_camera.Apply(view, box, ViewOrigin::Focus);
        EXPECT_EQ(view.GetOrigin(), m_camera.GetPosition());
        for (WorldPosition const& corner : CornersOf(box))
            EXPECT_TRUE(view.IsInView(corner));
    }
    m_camera.SetFocusDistance(7.0);
    m_camera.Fit({{1, 2, 3}, {1, 2, 3}}, aspectRatio);
    EXPECT_NEAR(LengthOf(m_camera.GetPosition() - WorldPosition{1, 2, 3}), 7.0, 1e-9);
}

TEST_P(FlyCameraTest, JsonBringsBackTheSameCamera) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        m_camera.SetPosition(GetParam() + WorldVector{random.Between(-1, 1), random.Between(-1e6, 1e6), 0.1});
        m_camera.SetFocusDistance(std::exp(random.Between(-40.0, 40.0)));
        m_camera.SetHeading(random.Between(-180.0, 180.0));
        m_camera.SetPitch(random.Between(-90.0, 90.0));
        m_camera.SetRoll(random.Between(-180.0, 180.0));
        QByteArray const text = QJsonDocument(m_camera.ToJson()).toJson();
        EXPECT_EQ(FlyCamera::FromJson(QJsonDocument::fromJson(text).object()), m_camera);
    }
}

INSTANTIATE_TEST_SUITE_P(Places, FlyCameraTest, testing::Values(WorldPosition{}, kFarAway),
                         [](auto const& row) {
                             return std::string(row.param == WorldPosition{} ? "Here" : "FarAway");
                         });

TEST(FlyCameraValueTest, WhatIsNoNumberOrNoViewportChangesNothing) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    FlyCamera camera;
    camera.Turn(nan, 0.0);
    camera.Move(0.0, nan, 0.0);
    camera.MoveTowards({1.0, 1.0}, kViewport, nan);
    camera.MoveTowards({1.0, 1.0}, QRectF(), 1.0);
    camera.Pan({nan, 0.0}, {1.0, 1.0}, kViewport);
    camera.Roll(nan);
    camera.SetPosition({nan, 0.0, 0.0});
    camera.SetFocusDistance(nan);
    camera.SetFieldOfView(nan);
    camera.Fit({{1, 0, 0}, {0, 0, 0}}, 1.0);
    EXPECT_EQ(camera, FlyCamera());
}

TEST(FlyCameraValueTest, JsonThatLacksSomethingIsNoCamera) {
    QJsonObject const good = FlyCamera().ToJson();
    ASSERT_TRUE(FlyCamera::FromJson(good));
    for (QString const& key : good.keys()) {
        QJsonObject json = good;
        json.remove(key);
        EXPECT_FALSE(FlyCamera::FromJson(json)) << key.toStdString();
    }
}

// ---- A camera of any kind.

TEST(AnyCameraTest, IsReadAsTheKindThatItWas) {
    for (Camera const& camera : {Camera(OrbitCamera()), Camera(PlanarCamera()), Camera(FlyCamera())})
        EXPECT_EQ(CameraFromJson(ToJson(camera)), camera);
    EXPECT_FALSE(CameraFromJson({{"type", "pinhole"}}));
}

TEST(AnyCameraTest, TransitionsAreThoseOfTheKindAndBetweenKindsThereAreNone) {
    FlyCamera goal;
    goal.Move(10.0, 0.0, 0.0);
    Camera const middle = Interpolate(FlyCamera(), goal, 0.5);
    EXPECT_EQ(std::get<FlyCamera>(middle).GetPosition(), (WorldPosition{5.0, 0.0, 0.0}));
    EXPECT_EQ(Interpolate(OrbitCamera(), goal, 0.0), Camera(OrbitCamera()));
    EXPECT_EQ(Interpolate(OrbitCamera(), goal, 0.5), Camera(goal));
}
