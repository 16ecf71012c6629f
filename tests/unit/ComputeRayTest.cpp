// Rays from the picture into the world against where the same view shows what lies on them.
#include <zx3DQt/OrbitCamera.h>

#include <CameraReference.h>
#include <Fixtures.h>

#include <string>
#include <tuple>

using namespace camera_reference;

class ComputeRayTest : public ContextFixture,
                       public testing::WithParamInterface<std::tuple<Projection, bool, WorldPosition>> {
protected:
    void SetUp() override {
        ContextFixture::SetUp();
        auto const [projection, isHomogeneous, place] = GetParam();
        Configure([isHomogeneous = isHomogeneous](recorder::Settings& settings) {
            settings.homogeneousDepth = isHomogeneous;
        });
        m_camera.SetProjection(projection);
        m_camera.SetTarget(place);
        m_camera.SetAzimuth(33.0);
        m_camera.SetElevation(21.0);
        m_camera.Apply(m_view, BoxAt(place), ViewOrigin::Focus);
    }

    OrbitCamera m_camera;
    BGFXViewContext m_view = MakeView();
};

TEST_P(ComputeRayTest, WhatLiesOnTheRayAppearsAtItsPlace) {
    Random random;
    ViewAxes const axes = m_camera.ComputeAxes();
    bool const isPerspective = m_camera.GetProjection() == Projection::Perspective;
    for (int i = 0; i < 1000; ++i) {
        QPointF const place = random.PlaceIn(kViewport);
        WorldRay const ray = m_view.ComputeRay(place).value();
        EXPECT_NEAR(LengthOf(ray.direction), 1.0, 1e-12);
        EXPECT_NEAR(DepthOf(m_view, ray.origin), 0.0, 2e-6) << "it does not begin on the near plane";
        WorldPosition const atTarget = m_camera.ComputeWorldPosition(place, kViewport);
        WorldVector const expected =
            isPerspective ? atTarget - m_camera.ComputePosition() : -axes.towardsViewer;
        ExpectNear(ray.direction, 1.0 / LengthOf(expected) * expected, 1e-6);
        for (double const way : {0.001, 1.0, 5.0, 100.0}) {
            QPointF const shown = m_view.ProjectToViewport(ray.origin + way * ray.direction).value();
            EXPECT_LT(Distance(shown, place), 0.01) << way;
        }
        EXPECT_TRUE(m_view.IsInView(ray.origin + 0.05 * ray.direction));
        EXPECT_FALSE(m_view.IsInView(ray.origin + -0.05 * ray.direction));
        EXPECT_FALSE(m_view.IsInView(ray.origin + 100.0 * ray.direction));
    }
}

TEST_P(ComputeRayTest, WhatIsBesideTheViewportIsNotInView) {
    EXPECT_TRUE(m_view.IsInView(m_camera.GetTarget()));
    QRectF const viewport = kViewport;
    for (QPointF const& direction : {QPointF(-1, 0), QPointF(1, 0), QPointF(0, -1), QPointF(0, 1)}) {
        QPointF const edge = viewport.center() + QPointF(0.5 * viewport.width() * direction.x(),
                                                         0.5 * viewport.height() * direction.y());
        EXPECT_TRUE(m_view.IsInView(m_camera.ComputeWorldPosition(edge - direction, viewport)));
        EXPECT_FALSE(m_view.IsInView(m_camera.ComputeWorldPosition(edge + direction, viewport)));
    }
}

INSTANTIATE_TEST_SUITE_P(Views, ComputeRayTest,
                         testing::Combine(testing::Values(Projection::Perspective, Projection::Parallel),
                                          testing::Bool(), testing::Values(WorldPosition{}, kFarAway)),
                         [](auto const& row) {
                             return std::string(std::get<0>(row.param) == Projection::Perspective
                                                    ? "Perspective"
                                                    : "Parallel") +
                                    (std::get<1>(row.param) ? "HomogeneousDepth" : "DepthFromZero") +
                                    (std::get<2>(row.param) == WorldPosition{} ? "Here" : "FarAway");
                         });

class ComputeRayOfAnyViewTest : public ContextFixture {};

TEST_F(ComputeRayOfAnyViewTest, TakesViewsThatNoCameraHasMade) {
    BGFXViewContext view = MakeView();
    view.SetOrthoProjectionFromRect(QRectF(-2.0, -1.0, 4.0, 2.0), -1.0f, 1.0f, 0.0f);
    WorldRay ray = view.ComputeRay(kViewport.topLeft()).value();
    ExpectNear(ray.origin - WorldPosition{-2.0, -1.0, -1.0}, {}, 1e-6);
    ExpectNear(ray.direction, {0.0, 0.0, 1.0}, 1e-6); // left handed
    // An infinitely far plane.
    bx::mtxProjInf(view.GetProjectionMatrix().data(), 1.0f, -1.0f, -1.0f, 1.0f, 1.0f,
                   bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
    ray = view.ComputeRay(kViewport.center()).value();
    ExpectNear(ray.direction, {0.0, 0.0, -1.0}, 1e-6);
}

TEST_F(ComputeRayOfAnyViewTest, IsEmptyWhereThereIsNone) {
    BGFXViewContext view;
    EXPECT_FALSE(view.ComputeRay({1.0, 1.0})) << "without a viewport";
    view = MakeView();
    EXPECT_TRUE(view.ComputeRay({1.0, 1.0}));
    view.GetProjectionMatrix().fill(0.0f);
    EXPECT_FALSE(view.ComputeRay({1.0, 1.0})) << "without an inverse";
}
