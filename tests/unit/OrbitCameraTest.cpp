// The orbit camera: what each operation keeps, as values.
#include <zx3DQt/OrbitCamera.h>

#include <CameraReference.h>
#include <Fixtures.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>
#include <string>
#include <tuple>

using namespace camera_reference;

namespace {

constexpr double kHundredth = 0.01; // of a pixel

constexpr StandardView kAllViews[] = {StandardView::Isometric, StandardView::Front, StandardView::Back,
                                      StandardView::Left,      StandardView::Right, StandardView::Top,
                                      StandardView::Bottom};

Pinhole PinholeOf(OrbitCamera const& camera) {
    bool const isPerspective = camera.GetProjection() == Projection::Perspective;
    double const halfHeight = camera.ComputeHalfHeight();
    return {camera.ComputeAxes(), camera.ComputePosition(),
            isPerspective ? halfHeight / camera.GetDistance() : halfHeight, isPerspective};
}

/// Where the matrices that the view is given show a position.
QPointF ProjectByView(OrbitCamera const& camera, WorldPosition const& position) {
    BGFXViewContext view = MakeView();
    camera.Apply(view, BoxAt(camera.GetTarget()), ViewOrigin::Focus);
    return view.ProjectToViewport(position).value_or(QPointF(1e9, 1e9));
}

} // namespace

class OrbitCameraTest : public ContextFixture,
                        public testing::WithParamInterface<std::tuple<UpAxis, Projection, WorldPosition>> {
protected:
    OrbitCameraTest() {
        m_camera.SetUpAxis(std::get<0>(GetParam()));
        m_camera.SetProjection(std::get<1>(GetParam()));
        m_camera.SetTarget(std::get<2>(GetParam()));
        m_camera.SetAzimuth(33.0);
        m_camera.SetElevation(21.0);
    }

    WorldPosition const& Place() const { return std::get<2>(GetParam()); }

    OrbitCamera m_camera;
};

TEST_P(OrbitCameraTest, StandardViewsLookAlongTheirAxesExactly) {
    bool const zIsUp = std::get<0>(GetParam()) == UpAxis::Z;
    WorldVector const up = zIsUp ? WorldVector{0, 0, 1} : WorldVector{0, 1, 0};
    WorldVector const front = zIsUp ? WorldVector{0, -1, 0} : WorldVector{0, 0, 1};
    WorldVector const right{1, 0, 0};
    struct Row {
        StandardView view;
        WorldVector towardsViewer, right, up;
    };
    Row const rows[] = {{StandardView::Front, front, right, up},  {StandardView::Back, -front, -right, up},
                        {StandardView::Right, right, -front, up}, {StandardView::Left, -right, front, up},
                        {StandardView::Top, up, right, -front},   {StandardView::Bottom, -up, right, front}};
    m_camera.SetRoll(12.0);
    for (Row const& row : rows) {
        m_camera.LookFrom(row.view);
        EXPECT_EQ(m_camera.ComputeAxes().towardsViewer, row.towardsViewer);
        EXPECT_EQ(m_camera.ComputeAxes().right, row.right);
        EXPECT_EQ(m_camera.ComputeAxes().up, row.up);
    }
    m_camera.LookFrom(StandardView::Isometric);
    ExpectNear(m_camera.ComputeAxes().towardsViewer, std::sqrt(1.0 / 3.0) * (front + right + up), 1e-12);
}

TEST_P(OrbitCameraTest, WhatIsUnderThePointerStaysThereThroughTenThousandSteps) {
    Random random;
    for (int step = 0; step < 10'000; ++step) {
        QPointF const pointer = random.PlaceIn(kViewport);
        // In perspective at any depth in front of the camera, in parallel anywhere.
        WorldPosition const atTarget = m_camera.ComputeWorldPosition(pointer, kViewport);
        WorldPosition const eye = m_camera.ComputePosition();
        WorldPosition const deeper = atTarget + 0.5 * (atTarget - eye);
        ASSERT_LT(Distance(PinholeOf(m_camera).Project(atTarget), pointer), kHundredth) << step;
        QPointF destination = pointer;
        // The picture's height stays between 0.02 and 20,000 units.
        double const height = 2.0 * m_camera.ComputeHalfHeight();
        switch (step % 4) {
        case 0:
        case 1: {
            double const factor = std::exp(random.Between(-1.0, 1.0));
            bool const isInRange = height / factor > 0.02 && height / factor < 2e4;
            m_camera.Zoom(isInRange ? factor : 1.0 / factor, pointer, kViewport);
            if (std::get<1>(GetParam()) == Projection::Perspective) {
                ASSERT_LT(Distance(PinholeOf(m_camera).Project(deeper), pointer), kHundredth) << step;
            }
            break;
        }
        case 2:
            destination = random.PlaceIn(kViewport);
            m_camera.Pan(pointer, destination, kViewport);
            break;
        default:
            m_camera.Roll(random.Between(-30.0, 30.0), pointer, kViewport);
        }
        ASSERT_LT(Distance(PinholeOf(m_camera).Project(atTarget), destination), kHundredth) << step;
        if (step % 16 == 0) { // as floats on the GPU have it
            ASSERT_LT(Distance(ProjectByView(m_camera, atTarget), destination), kHundredth) << step;
        }
        m_camera.SetTarget(m_camera.GetTarget() + 1e-3 * (Place() - m_camera.GetTarget())); // never far away
    }
}

TEST_P(OrbitCameraTest, OrbitingAroundAPivotKeepsItInItsPlace) {
    Random random;
    WorldPosition const pivot = m_camera.ComputeWorldPosition({300.0, 200.0}, kViewport);
    QPointF const place = PinholeOf(m_camera).Project(pivot);
    m_camera.SetRoll(17.0);
    QPointF const rolled = PinholeOf(m_camera).Project(pivot);
    EXPECT_GT(Distance(place, rolled), 10.0);
    for (int step = 0; step < 1000; ++step) {
        m_camera.Orbit(random.Between(-20.0, 20.0), random.Between(-20.0, 20.0), pivot);
        ASSERT_LT(Distance(PinholeOf(m_camera).Project(pivot), rolled), kHundredth) << step;
    }
    WorldPosition const target = m_camera.GetTarget();
    m_camera.Orbit(10.0, 5.0);
    ExpectNear(m_camera.GetTarget() - target, {}, 1e-9);
}

TEST_P(OrbitCameraTest, OrbitingMovesTheNearSideAlongWithThePointer) {
    WorldPosition const nearSide = m_camera.GetTarget() + 0.5 * m_camera.ComputeAxes().towardsViewer;
    for (double const roll : {0.0, 90.0, -140.0}) {
        SCOPED_TRACE(roll);
        m_camera.SetRoll(roll);
        OrbitCamera camera = m_camera;
        camera.SetElevation(0.0);
        WorldPosition const near = camera.GetTarget() + 0.5 * camera.ComputeAxes().towardsViewer;
        camera.Orbit(3.0, 0.0);
        QPointF const right = PinholeOf(camera).Project(near) - kViewport.center();
        EXPECT_GT(right.x(), 3.0 * std::abs(right.y()));
        camera = m_camera;
        camera.SetElevation(0.0);
        camera.Orbit(0.0, 3.0);
        QPointF const up = PinholeOf(camera).Project(near) - kViewport.center();
        EXPECT_LT(up.y(), -3.0 * std::abs(up.x()));
    }
    EXPECT_NEAR(LengthOf(nearSide - m_camera.GetTarget()), 0.5, 1e-8);
}

TEST_P(OrbitCameraTest, NothingJumpsAtThePoles) {
    constexpr double stepDegrees = 0.25;
    constexpr double stepLength = stepDegrees * 3.14159265358979 / 180.0;
    ViewAxes before = m_camera.ComputeAxes();
    auto const expectSmallStep = [&] {
        ViewAxes const axes = m_camera.ComputeAxes();
        ExpectRightHanded(axes);
        EXPECT_LT(LengthOf(axes.right - before.right), 1.01 * stepLength);
        EXPECT_LT(LengthOf(axes.up - before.up), 1.01 * stepLength);
        EXPECT_LT(LengthOf(axes.towardsViewer - before.towardsViewer), 1.01 * stepLength);
        before = axes;
    };
    for (double const up : {-1.0, 1.0}) { // over the top, and below
        for (int i = 0; i < 800; ++i) {
            m_camera.Orbit(0.0, up * stepDegrees);
            expectSmallStep();
        }
        EXPECT_EQ(m_camera.GetElevation(), -90.0 * up);
        for (int i = 0; i < 1600; ++i) { // once around, while looking along the up axis
            m_camera.Orbit(stepDegrees, 0.0);
            expectSmallStep();
        }
    }
}

TEST_P(OrbitCameraTest, FitEnclosesEveryCornerAndTouchesTheEdge) {
    WorldBox const box = BoxAt(Place());
    double const aspectRatio = kViewport.width() / kViewport.height();
    for (StandardView const view : kAllViews) {
        for (double const margin : {0.0, 0.1}) {
            m_camera.LookFrom(view);
            m_camera.Roll(view == StandardView::Isometric ? 20.0 : 0.0, kViewport.center(), kViewport);
            m_camera.Fit(box, aspectRatio, margin);
            double reach = 0.0;
            for (WorldPosition const& corner : CornersOf(box))
                reach = std::max(reach, ReachOf(PinholeOf(m_camera).Project(corner)));
            EXPECT_NEAR(reach, 1.0 - 2.0 * margin, 1e-6) << static_cast<int>(view);
            ExpectNear(m_camera.GetTarget() - (box.minimum + 0.5 * (box.maximum - box.minimum)), {}, 1e-9);
        }
    }
}

TEST_P(OrbitCameraTest, FitAndDepthsAreRightForTinyAndHugeBoxes) {
    for (double const scale : {1e-9, 1e-3, 1e6, 1e12}) {
        WorldBox const box{{-4.0 * scale, scale, -0.5 * scale}, {2.0 * scale, 2.0 * scale, 3.5 * scale}};
        BGFXViewContext view = MakeView();
        m_camera.Fit(box, view.ComputeViewportAspectRatio());
        m_camera.Apply(view, box, ViewOrigin::Focus);
        EXPECT_NEAR(m_camera.GetDistance() / scale, 13.0, 8.0);
        for (WorldPosition const& corner : CornersOf(box))
            EXPECT_TRUE(view.IsInView(corner)) << scale;
    }
}

TEST_P(OrbitCameraTest, FitOfAPointKeepsTheDistanceAndOfNoBoxAll) {
    m_camera.Fit({{5, 6, 7}, {5, 6, 7}}, 1.5);
    EXPECT_EQ(m_camera.GetTarget(), (WorldPosition{5, 6, 7}));
    EXPECT_EQ(m_camera.GetDistance(), 5.0);
    OrbitCamera const before = m_camera;
    double const nan = std::numeric_limits<double>::quiet_NaN();
    m_camera.Fit({{1, 0, 0}, {0, 1, 1}}, 1.5);
    m_camera.Fit({{nan, 0, 0}, {1, 1, 1}}, 1.5);
    m_camera.Fit({{0, 0, 0}, {1, 1, 1}}, 0.0);
    EXPECT_EQ(m_camera, before);
}

TEST_P(OrbitCameraTest, DepthsEncloseTheBoxAndLittleMore) {
    WorldBox const box = BoxAt(Place());
    for (bool const isHomogeneous : {false, true}) {
        Configure([=](recorder::Settings& settings) { settings.homogeneousDepth = isHomogeneous; });
        for (StandardView const side : kAllViews) {
            BGFXViewContext view = MakeView();
            m_camera.LookFrom(side);
            m_camera.Fit(box, view.ComputeViewportAspectRatio());
            m_camera.Apply(view, box, ViewOrigin::Focus);
            double nearest = 1.0;
            double farthest = 0.0;
            for (WorldPosition const& corner : CornersOf(box)) {
                EXPECT_TRUE(view.IsInView(corner));
                nearest = std::min(nearest, DepthOf(view, corner));
                farthest = std::max(farthest, DepthOf(view, corner));
            }
            EXPECT_GT(nearest, 0.0);
            EXPECT_LT(nearest, 0.05);
            EXPECT_GT(farthest, 0.95);
            EXPECT_LT(farthest, 1.0);
        }
    }
}

TEST_P(OrbitCameraTest, InsideTheBoxWhatIsLookedAtIsSeen) {
    WorldBox const box = BoxAt(Place());
    for (double const factor : {10.0, 1e3, 1e6}) {
        m_camera.Fit(box, 1.5);
        m_camera.Zoom(factor, kViewport.center(), kViewport);
        BGFXViewContext view = MakeView();
        m_camera.Apply(view, box, ViewOrigin::Focus);
        EXPECT_TRUE(view.IsInView(m_camera.GetTarget())) << factor;
    }
}

TEST_P(OrbitCameraTest, TheOriginIsTheViewsUnlessItMoves) {
    BGFXViewContext view = MakeView();
    view.SetOrigin({1, 2, 3});
    m_camera.Apply(view);
    EXPECT_EQ(view.GetOrigin(), (WorldPosition{1, 2, 3}));
    m_camera.Apply(view, std::nullopt, ViewOrigin::Focus);
    EXPECT_EQ(view.GetOrigin(), m_camera.GetTarget());
    EXPECT_TRUE(view.IsInView(m_camera.GetTarget()));
    EXPECT_LT(Distance(*view.ProjectToViewport(m_camera.GetTarget()), kViewport.center()), kHundredth);
}

TEST_P(OrbitCameraTest, TransitionsBeginAndEndExactlyAndKeepWhatStays) {
    OrbitCamera goal = m_camera;
    goal.Zoom(50.0, {200.0, 500.0}, kViewport);
    WorldPosition const kept = m_camera.ComputeWorldPosition({200.0, 500.0}, kViewport);
    for (int i = 0; i <= 100; ++i) {
        OrbitCamera const camera = OrbitCamera::Interpolate(m_camera, goal, 0.01 * i);
        ASSERT_LT(Distance(PinholeOf(camera).Project(kept), {200.0, 500.0}), kHundredth);
    }
    goal.SetAzimuth(-170.0);
    goal.SetFieldOfView(60.0);
    EXPECT_EQ(OrbitCamera::Interpolate(m_camera, goal, 0.0), m_camera);
    EXPECT_EQ(OrbitCamera::Interpolate(m_camera, goal, 1.0), goal);
    m_camera.SetAzimuth(170.0); // the shorter way is by the back
    EXPECT_NEAR(std::abs(OrbitCamera::Interpolate(m_camera, goal, 0.5).GetAzimuth()), 180.0, 1e-9);
}

TEST_P(OrbitCameraTest, JsonBringsBackTheSameCamera) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        m_camera.SetTarget(Place() + WorldVector{random.Between(-1, 1), random.Between(-1e6, 1e6), 0.1});
        m_camera.SetDistance(std::exp(random.Between(-40.0, 40.0)));
        m_camera.SetAzimuth(random.Between(-360.0, 360.0));
        m_camera.SetElevation(random.Between(-90.0, 90.0));
        m_camera.SetRoll(random.Between(-180.0, 180.0));
        m_camera.SetFieldOfView(random.Between(1.0, 120.0));
        QByteArray const text = QJsonDocument(m_camera.ToJson()).toJson();
        EXPECT_EQ(OrbitCamera::FromJson(QJsonDocument::fromJson(text).object()), m_camera);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, OrbitCameraTest,
                         testing::Combine(testing::Values(UpAxis::Z, UpAxis::Y),
                                          testing::Values(Projection::Perspective, Projection::Parallel),
                                          testing::Values(WorldPosition{}, kFarAway)),
                         [](auto const& row) {
                             return std::string(std::get<0>(row.param) == UpAxis::Z ? "ZIsUp" : "YIsUp") +
                                    (std::get<1>(row.param) == Projection::Perspective ? "Perspective"
                                                                                       : "Parallel") +
                                    (std::get<2>(row.param) == WorldPosition{} ? "Here" : "FarAway");
                         });

TEST(OrbitCameraValueTest, AnotherProjectionKeepsTheSizeAtTheTarget) {
    OrbitCamera camera;
    WorldPosition const place = camera.ComputeWorldPosition({200.0, 100.0}, kViewport);
    for (Projection const projection : {Projection::Parallel, Projection::Perspective}) {
        camera.SetProjection(projection);
        EXPECT_LT(Distance(PinholeOf(camera).Project(place), {200.0, 100.0}), 1e-9);
    }
}

TEST(OrbitCameraValueTest, WhatIsNoNumberOrNoViewportChangesNothing) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    OrbitCamera camera;
    for (double const bad : {nan, infinity, -infinity}) {
        camera.Orbit(bad, 0.0);
        camera.Orbit(1.0, 1.0, {bad, 0.0, 0.0});
        camera.Pan({bad, 0.0}, {1.0, 1.0}, kViewport);
        camera.Zoom(bad, {1.0, 1.0}, kViewport);
        camera.Zoom(2.0, {bad, 1.0}, kViewport);
        camera.Dolly(bad);
        camera.Roll(bad, {1.0, 1.0}, kViewport);
        camera.SetTarget({0.0, bad, 0.0});
        camera.SetDistance(bad);
        camera.SetAzimuth(bad);
        camera.SetElevation(bad);
        camera.SetRoll(bad);
        camera.SetFieldOfView(bad);
    }
    camera.Zoom(0.0, {1.0, 1.0}, kViewport);
    camera.Zoom(-1.0, {1.0, 1.0}, kViewport);
    camera.Zoom(2.0, {1.0, 1.0}, QRectF(0.0, 0.0, 0.0, 100.0));
    EXPECT_EQ(camera, OrbitCamera());
    EXPECT_EQ(camera.ComputeWorldPosition({1.0, 1.0}, QRectF()), camera.GetTarget());
}

TEST(OrbitCameraValueTest, WhatIsOutOfRangeEndsAtItsLimits) {
    OrbitCamera camera;
    camera.SetDistance(0.0);
    EXPECT_EQ(camera.GetDistance(), 1e-18);
    camera.SetDistance(1e300);
    EXPECT_EQ(camera.GetDistance(), 1e18);
    camera.SetFieldOfView(500.0);
    EXPECT_EQ(camera.GetFieldOfView(), 170.0);
    camera.SetAzimuth(1000.0);
    EXPECT_EQ(camera.GetAzimuth(), -80.0);
    camera.SetElevation(1000.0);
    EXPECT_EQ(camera.GetElevation(), 90.0);
}

TEST(OrbitCameraValueTest, DollyGoesAlongTheLineOfSight) {
    OrbitCamera camera;
    camera.LookFrom(StandardView::Front);
    camera.Dolly(2.0);
    EXPECT_EQ(camera.GetTarget(), (WorldPosition{0.0, 2.0, 0.0}));
    EXPECT_EQ(camera.GetDistance(), 5.0);
}

TEST(OrbitCameraValueTest, JsonThatLacksOrExceedsSomethingIsNoCamera) {
    QJsonObject const good = OrbitCamera().ToJson();
    ASSERT_TRUE(OrbitCamera::FromJson(good));
    for (QString const& key : good.keys()) {
        QJsonObject json = good;
        json.remove(key);
        EXPECT_FALSE(OrbitCamera::FromJson(json)) << key.toStdString();
        json[key] = "something else";
        EXPECT_FALSE(OrbitCamera::FromJson(json)) << key.toStdString();
    }
    QJsonObject json = good;
    json["distance"] = -1.0;
    EXPECT_FALSE(OrbitCamera::FromJson(json));
    json = good;
    json["target"] = QJsonArray{1.0, 2.0};
    EXPECT_FALSE(OrbitCamera::FromJson(json));
    EXPECT_FALSE(OrbitCamera::FromJson({}));
}
