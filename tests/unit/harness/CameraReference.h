// What the tests of cameras share: viewports, random numbers that are the same each time, and where a view
// shows a position, computed in double precision from its definition.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/CameraTypes.h>

#include <gtest/gtest.h>

#include <QPointF>
#include <QRectF>

#include <array>
#include <cmath>
#include <random>

namespace camera_reference {

using namespace zarvex::zx3DQt;

/// Neither square nor at (0, 0).
inline QRectF const kViewport(40.0, 30.0, 1000.0, 640.0);

/// Far from the world's origin, where a float is off by half a unit.
constexpr WorldPosition kFarAway{500'000.0, 5'400'000.0, 100.0};

/// A numbers' source with a seed.
class Random {
public:
    double Between(double least, double greatest) {
        return std::uniform_real_distribution(least, greatest)(m_engine);
    }
    QPointF PlaceIn(QRectF const& viewport) {
        return {Between(viewport.left(), viewport.right()), Between(viewport.top(), viewport.bottom())};
    }

private:
    std::mt19937_64 m_engine{20'261'122};
};

/// A view on the viewport.
inline BGFXViewContext MakeView() {
    BGFXViewContext view(1);
    view.SetViewport(kViewport.toRect());
    return view;
}

/// Where a camera at `eye` shows a position: `halfHeight` is half of the picture's height, world units; in
/// perspective at a depth of 1.
struct Pinhole {
    ViewAxes axes;
    WorldPosition eye;
    double halfHeight;
    bool isPerspective;

    QPointF Project(WorldPosition const& position) const {
        WorldVector const way = position - eye;
        double const depth = isPerspective ? -Dot(way, axes.towardsViewer) : 1.0;
        double const pixels = 0.5 * kViewport.height() / (halfHeight * depth);
        return kViewport.center() + pixels * QPointF(Dot(way, axes.right), -Dot(way, axes.up));
    }
};

inline double Distance(QPointF const& a, QPointF const& b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

inline double LengthOf(WorldVector const& vector) {
    return std::sqrt(Dot(vector, vector));
}

inline std::array<WorldPosition, 8> CornersOf(WorldBox const& box) {
    std::array<WorldPosition, 8> corners;
    for (unsigned i = 0; i < 8; ++i)
        corners[i] = {(i & 1 ? box.maximum : box.minimum).x, (i & 2 ? box.maximum : box.minimum).y,
                      (i & 4 ? box.maximum : box.minimum).z};
    return corners;
}

/// A box that is longer than it is wide.
inline WorldBox BoxAt(WorldPosition const& place) {
    return {place + WorldVector{-4.0, 1.0, -0.5}, place + WorldVector{2.0, 2.0, 3.5}};
}

/// How far from the middle to the edge of the picture a place is; 1 is on the edge.
inline double ReachOf(QPointF const& place) {
    QPointF const way = place - kViewport.center();
    return std::max(std::abs(way.x()) / (0.5 * kViewport.width()),
                    std::abs(way.y()) / (0.5 * kViewport.height()));
}

inline void ExpectNear(WorldVector const& actual, WorldVector const& expected, double tolerance) {
    EXPECT_LE(LengthOf(actual - expected), tolerance)
        << actual.x << ", " << actual.y << ", " << actual.z << " instead of " << expected.x << ", "
        << expected.y << ", " << expected.z;
}

inline void ExpectRightHanded(ViewAxes const& axes) {
    EXPECT_NEAR(LengthOf(axes.right), 1.0, 1e-12);
    EXPECT_NEAR(LengthOf(axes.up), 1.0, 1e-12);
    ExpectNear(Cross(axes.right, axes.up), axes.towardsViewer, 1e-12);
}

/// The depth of a position in the matrices that a view was given: 0 on the near plane, 1 on the far plane.
inline double DepthOf(BGFXViewContext const& view, WorldPosition const& position) {
    WorldVector const place = position - view.GetOrigin();
    QVector4D const clip = view.GetProjectionMatrix() * view.GetViewMatrix() *
                           QVector4D(float(place.x), float(place.y), float(place.z), 1.0f);
    double const depth = double{clip.z()} / double{clip.w()};
    return bgfx::getCaps()->homogeneousDepth ? 0.5 * (depth + 1.0) : depth;
}

} // namespace camera_reference
