// The camera for drawings and plots: what each operation keeps, as values.
#include <zx3DQt/PlanarCamera.h>

#include <CameraReference.h>
#include <Fixtures.h>

#include <QJsonDocument>

#include <limits>
#include <string>
#include <tuple>

using namespace camera_reference;

namespace {

constexpr double kHundredth = 0.01; // of a pixel

/// Where the camera shows a position, from what it says about its rectangle.
QPointF Project(PlanarCamera const& camera, WorldPosition const& position) {
    double width = camera.GetWidth();
    double height = camera.GetHeight();
    if (camera.KeepsAspectRatio()) {
        double const aspectRatio = kViewport.width() / kViewport.height();
        (width / height < aspectRatio ? width : height) =
            width / height < aspectRatio ? height * aspectRatio : width / aspectRatio;
    }
    WorldVector const way = position - camera.GetCenter();
    ViewAxes const axes = camera.ComputeAxes();
    return kViewport.center() + QPointF(Dot(way, axes.right) * kViewport.width() / width,
                                        -Dot(way, axes.up) * kViewport.height() / height);
}

} // namespace

class PlanarCameraTest : public ContextFixture,
                         public testing::WithParamInterface<std::tuple<bool, YDirection, WorldPosition>> {
protected:
    PlanarCameraTest() {
        m_camera.SetKeepsAspectRatio(std::get<0>(GetParam()));
        m_camera.SetYDirection(std::get<1>(GetParam()));
        m_camera.SetCenter({Place().x, Place().y, 0.0});
        m_camera.SetSize(30.0, 12.0);
    }

    WorldPosition const& Place() const { return std::get<2>(GetParam()); }

    PlanarCamera m_camera;
};

TEST_P(PlanarCameraTest, AxesAreThoseOfDrawingsOrOfImages) {
    double const sign = std::get<1>(GetParam()) == YDirection::Up ? 1.0 : -1.0;
    EXPECT_EQ(m_camera.ComputeAxes().right, (WorldVector{1.0, 0.0, 0.0}));
    EXPECT_EQ(m_camera.ComputeAxes().up, (WorldVector{0.0, sign, 0.0}));
    m_camera.SetRoll(90.0); // clockwise: what pointed to the right points down
    EXPECT_GT(Project(m_camera, m_camera.GetCenter() + WorldVector{1.0, 0.0, 0.0}).y(),
              kViewport.center().y() + 1.0);
    ExpectRightHanded(m_camera.ComputeAxes());
}

TEST_P(PlanarCameraTest, WhatIsUnderThePointerStaysThereThroughTenThousandSteps) {
    Random random;
    for (int step = 0; step < 10'000; ++step) {
        QPointF const pointer = random.PlaceIn(kViewport);
        WorldPosition const grabbed = m_camera.ComputeWorldPosition(pointer, kViewport);
        ASSERT_LT(Distance(Project(m_camera, grabbed), pointer), kHundredth) << step;
        QPointF destination = pointer;
        double const factor = std::exp(random.Between(-1.0, 1.0));
        bool const isInRange = m_camera.GetHeight() / factor > 0.02 && m_camera.GetHeight() / factor < 2e4;
        switch (step % 4) {
        case 0:
            m_camera.Zoom(isInRange ? factor : 1.0 / factor, pointer, kViewport);
            break;
        case 1:
            m_camera.Zoom(step % 8 == 1 ? 1.25 : 0.8, 1.0, pointer, kViewport);
            break;
        case 2:
            destination = random.PlaceIn(kViewport);
            m_camera.Pan(pointer, destination, kViewport);
            break;
        default:
            m_camera.Roll(random.Between(-30.0, 30.0), pointer, kViewport);
        }
        ASSERT_LT(Distance(Project(m_camera, grabbed), destination), kHundredth) << step;
        if (step % 16 < 4) { // as floats on the GPU have it
            BGFXViewContext view = MakeView();
            m_camera.Apply(view, std::nullopt, ViewOrigin::Focus);
            ASSERT_LT(Distance(*view.ProjectToViewport(grabbed), destination), kHundredth) << step;
            ASSERT_TRUE(view.IsInView(m_camera.GetCenter()));
        }
    }
}

TEST_P(PlanarCameraTest, FitEnclosesEveryCornerAndTouchesTheEdge) {
    WorldBox const box = BoxAt(Place());
    for (double const roll : {0.0, 25.0, 90.0}) {
        for (double const margin : {0.0, 0.2}) {
            m_camera.SetRoll(roll);
            m_camera.Fit(box, margin);
            double reachX = 0.0;
            double reachY = 0.0;
            for (WorldPosition const& corner : CornersOf(box)) {
                QPointF const way = Project(m_camera, corner) - kViewport.center();
                reachX = std::max(reachX, std::abs(way.x()) / (0.5 * kViewport.width()));
                reachY = std::max(reachY, std::abs(way.y()) / (0.5 * kViewport.height()));
            }
            EXPECT_NEAR(std::max(reachX, reachY), 1.0 - 2.0 * margin, 1e-6);
            if (!m_camera.KeepsAspectRatio()) {
                EXPECT_NEAR(std::min(reachX, reachY), 1.0 - 2.0 * margin, 1e-6);
            }
        }
    }
}

TEST_P(PlanarCameraTest, FitOfWhatHasNoExtentLeavesACameraThatShowsIt) {
    PlanarCamera const before = m_camera;
    m_camera.Fit({{5, 6, 0}, {5, 6, 0}});
    EXPECT_EQ(m_camera.GetCenter(), (WorldPosition{5, 6, 0}));
    EXPECT_EQ(m_camera.GetHeight(), before.GetHeight());
    m_camera.Fit({{5, 6, 0}, {9, 6, 0}}, 0.0);
    EXPECT_NEAR(Project(m_camera, {5, 6, 0}).x(), kViewport.left(), 1e-9);
    EXPECT_EQ(m_camera.KeepsAspectRatio() ? before.GetHeight() : m_camera.GetHeight(), before.GetHeight());
    PlanarCamera const fitted = m_camera;
    m_camera.Fit({{1, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(m_camera, fitted);
}

TEST_P(PlanarCameraTest, DepthsEncloseTheBoxOrTheGivenSlab) {
    WorldBox const box = BoxAt(Place());
    BGFXViewContext view = MakeView();
    m_camera.Fit(box);
    m_camera.Apply(view, box, ViewOrigin::Focus);
    for (WorldPosition const& corner : CornersOf(box))
        EXPECT_TRUE(view.IsInView(corner));
    // In the drawing's order: with y up, the greater z is nearer.
    double const upper = DepthOf(view, {Place().x, Place().y, box.maximum.z});
    double const lower = DepthOf(view, {Place().x, Place().y, box.minimum.z});
    EXPECT_EQ(upper < lower, m_camera.GetYDirection() == YDirection::Up);
    EXPECT_NEAR(std::abs(upper - lower), 1.0, 0.05);
    m_camera.Apply(view, std::nullopt, ViewOrigin::Focus);
    WorldPosition const middle = m_camera.GetCenter();
    EXPECT_TRUE(view.IsInView({middle.x, middle.y, 1.0}));
    EXPECT_TRUE(view.IsInView({middle.x, middle.y, -1.0}));
    EXPECT_FALSE(view.IsInView({middle.x, middle.y, 1.5}));
}

TEST_P(PlanarCameraTest, TransitionsBeginAndEndExactlyAndKeepWhatStays) {
    PlanarCamera goal = m_camera;
    goal.Zoom(50.0, {200.0, 500.0}, kViewport);
    WorldPosition const kept = m_camera.ComputeWorldPosition({200.0, 500.0}, kViewport);
    for (int i = 0; i <= 100; ++i) {
        PlanarCamera const camera = PlanarCamera::Interpolate(m_camera, goal, 0.01 * i);
        ASSERT_LT(Distance(Project(camera, kept), {200.0, 500.0}), kHundredth);
    }
    EXPECT_EQ(PlanarCamera::Interpolate(m_camera, goal, 0.0), m_camera);
    EXPECT_EQ(PlanarCamera::Interpolate(m_camera, goal, 1.0), goal);
}

TEST_P(PlanarCameraTest, JsonBringsBackTheSameCamera) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        m_camera.SetCenter(Place() + WorldVector{random.Between(-1, 1), random.Between(-1e6, 1e6), 0.1});
        m_camera.SetSize(std::exp(random.Between(-40.0, 40.0)), random.Between(1.0, 2.0));
        m_camera.SetRoll(random.Between(-180.0, 180.0));
        QByteArray const text = QJsonDocument(m_camera.ToJson()).toJson();
        EXPECT_EQ(PlanarCamera::FromJson(QJsonDocument::fromJson(text).object()), m_camera);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlanarCameraTest,
                         testing::Combine(testing::Bool(), testing::Values(YDirection::Up, YDirection::Down),
                                          testing::Values(WorldPosition{}, kFarAway)),
                         [](auto const& row) {
                             return std::string(std::get<0>(row.param) ? "KeepsAspect" : "Fills") +
                                    (std::get<1>(row.param) == YDirection::Up ? "YUp" : "YDown") +
                                    (std::get<2>(row.param) == WorldPosition{} ? "Here" : "FarAway");
                         });

TEST(PlanarCameraValueTest, WhatIsNoNumberOrNoViewportChangesNothing) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    PlanarCamera camera;
    camera.Pan({nan, 0.0}, {1.0, 1.0}, kViewport);
    camera.Zoom(nan, {1.0, 1.0}, kViewport);
    camera.Zoom(2.0, 0.0, {1.0, 1.0}, kViewport);
    camera.Zoom(2.0, {1.0, 1.0}, QRectF());
    camera.Roll(nan, {1.0, 1.0}, kViewport);
    camera.SetCenter({nan, 0.0, 0.0});
    camera.SetSize(1.0, nan);
    camera.SetRoll(nan);
    EXPECT_EQ(camera, PlanarCamera());
    camera.SetSize(0.0, 1e300);
    EXPECT_EQ(camera.GetWidth(), 1e-18);
    EXPECT_EQ(camera.GetHeight(), 1e18);
}

TEST(PlanarCameraValueTest, JsonThatLacksSomethingIsNoCamera) {
    QJsonObject const good = PlanarCamera().ToJson();
    ASSERT_TRUE(PlanarCamera::FromJson(good));
    for (QString const& key : good.keys()) {
        QJsonObject json = good;
        json.remove(key);
        EXPECT_FALSE(PlanarCamera::FromJson(json)) << key.toStdString();
    }
}
