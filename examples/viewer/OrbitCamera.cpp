// Directions from two angles; distances from what must be seen.
#include "OrbitCamera.h"

#include <bx/math.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace viewer {

namespace {

constexpr float kFieldOfView = 32.0f; ///< degrees, of the view's height
constexpr float kMargin = 0.82f;      ///< share of the view that what is fitted into it takes
constexpr float kSmallestDistance = 1e-18f;
constexpr float kLargestDistance = 1e18f;
/// Of the near plane to the far plane: what a depth of 24 bits tells apart.
constexpr float kSmallestNear = 1e-4f;

float Radians(float degrees) {
    return qDegreesToRadians(degrees);
}

float HalfHeightPerDistance() {
    return std::tan(Radians(0.5f * kFieldOfView));
}

/// The world's directions, as they appear on a map that has `north` at its top.
struct Compass {
    QVector3D east;
    QVector3D north;
    QVector3D up;
};

Compass CompassOf(UpAxis up) {
    if (up == UpAxis::Y)
        return {{1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, -1.0f}, {0.0f, 1.0f, 0.0f}};
    return {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};
}

/// Azimuth and elevation.
std::pair<float, float> AnglesOf(StandardView view) {
    switch (view) {
    case StandardView::Front:
        return {0.0f, 0.0f};
    case StandardView::Back:
        return {180.0f, 0.0f};
    case StandardView::Left:
        return {-90.0f, 0.0f};
    case StandardView::Right:
        return {90.0f, 0.0f};
    case StandardView::Top:
        return {0.0f, 90.0f};
    case StandardView::Bottom:
        return {0.0f, -90.0f};
    case StandardView::Iso:
        break;
    }
    return {45.0f, qRadiansToDegrees(std::atan(std::sqrt(0.5f)))}; // all three axes equally short
}

} // namespace

void OrbitCamera::Orbit(float right, float down) {
    m_azimuth = std::fmod(m_azimuth - right, 360.0f);
    m_elevation = std::clamp(m_elevation + down, -90.0f, 90.0f);
}

void OrbitCamera::Pan(QPointF moved) {
    QPointF const world = moved * HalfHeight();
    m_target -= static_cast<float>(world.x()) * ScreenRight() + static_cast<float>(world.y()) * ScreenUp();
}

void OrbitCamera::Zoom(float factor, QPointF place) {
    float const before = m_distance;
    m_distance = std::clamp(m_distance / factor, kSmallestDistance, kLargestDistance);
    float const shrunk = m_distance / before;
    Pan(-place * (1.0 / shrunk - 1.0));
}

void OrbitCamera::Fit(Box const& box, float aspectRatio) {
    if (box.IsEmpty())
        return;
    m_target = box.Center();
    float const perDistance = kMargin * HalfHeightPerDistance();
    float distance = 0.0f;
    for (QVector3D const& corner : box.Corners()) {
        QVector3D const offset = corner - m_target;
        float const x = std::abs(QVector3D::dotProduct(offset, ScreenRight())) / aspectRatio;
        float const y = std::abs(QVector3D::dotProduct(offset, ScreenUp()));
        float const nearer = QVector3D::dotProduct(offset, TowardsViewer());
        float const depth = m_projection == Projection::Perspective ? nearer : 0.0f;
        distance = std::max(distance, std::max(x, y) / perDistance + depth);
    }
    // A single point has no size: any distance shows all of it.
    m_distance = distance > 0.0f ? std::clamp(distance, kSmallestDistance, kLargestDistance) : 1.0f;
}

void OrbitCamera::LookFrom(StandardView view) {
    std::tie(m_azimuth, m_elevation) = AnglesOf(view);
}

QVector3D OrbitCamera::UpDirection() const {
    return CompassOf(m_up).up;
}

QVector3D OrbitCamera::ScreenRight() const {
    auto const [east, north, up] = CompassOf(m_up);
    return std::cos(Radians(m_azimuth)) * east + std::sin(Radians(m_azimuth)) * north;
}

QVector3D OrbitCamera::ScreenUp() const {
    return QVector3D::crossProduct(TowardsViewer(), ScreenRight());
}

QVector3D OrbitCamera::TowardsViewer() const {
    auto const [east, north, up] = CompassOf(m_up);
    QVector3D const level = std::sin(Radians(m_azimuth)) * east - std::cos(Radians(m_azimuth)) * north;
    return std::cos(Radians(m_elevation)) * level + std::sin(Radians(m_elevation)) * up;
}

float OrbitCamera::HalfHeight() const {
    return m_distance * HalfHeightPerDistance();
}

QMatrix4x4 OrbitCamera::ViewMatrix() const {
    QVector3D const x = ScreenRight();
    QVector3D const y = ScreenUp();
    QVector3D const z = TowardsViewer();
    QMatrix4x4 const rotation(x.x(), x.y(), x.z(), 0.0f, // rows
                              y.x(), y.y(), y.z(), 0.0f, //
                              z.x(), z.y(), z.z(), 0.0f, //
                              0.0f, 0.0f, 0.0f, 1.0f);
    QMatrix4x4 matrix = rotation;
    matrix.translate(-Position());
    return matrix;
}

QMatrix4x4 OrbitCamera::ProjectionMatrix(float aspectRatio, QVector3D const& center, float radius,
                                         bool homogeneousDepth) const {
    float const depth = QVector3D::dotProduct(Position() - center, TowardsViewer());
    // A little more than the sphere: what lies on its surface is not cut off.
    float const reach = 1.01f * radius + 1e-3f * m_distance;
    QMatrix4x4 matrix;
    if (m_projection == Projection::Perspective) {
        float const far = std::max(depth + reach, m_distance);
        float const near = std::max(depth - reach, kSmallestNear * far);
        bx::mtxProj(matrix.data(), kFieldOfView, aspectRatio, near, far, homogeneousDepth,
                    bx::Handedness::Right);
    } else {
        float const halfHeight = HalfHeight();
        float const halfWidth = aspectRatio * halfHeight;
        bx::mtxOrtho(matrix.data(), -halfWidth, halfWidth, -halfHeight, halfHeight, depth - reach,
                     depth + reach, 0.0f, homogeneousDepth, bx::Handedness::Right);
    }
    return matrix;
}

} // namespace viewer
