// Movements around a target.
#include <zx3DQt/OrbitCamera.h>

#include "CameraJson.h"
#include "ViewGeometry.h"

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

constexpr char kType[] = "orbit";

/// No corner is nearer to the camera's plane, as a share of the distance.
constexpr double kNearestCorner = 1e-3;

} // namespace

void OrbitCamera::Orbit(double right, double up) {
    Orbit(right, up, m_target);
}

void OrbitCamera::Orbit(double right, double up, WorldPosition const& pivot) {
    if (!AreFinite(right, up) || !IsFinite(pivot))
        return;
    WorldVector const inPicture = ToAxes(ComputeAxes(), m_target - pivot);
    PictureMove const move = Unrolled({right, up}, m_roll);
    SetAzimuth(m_azimuth - move.right);
    SetElevation(m_elevation - move.up);
    m_target = pivot + FromAxes(ComputeAxes(), inPicture);
}

void OrbitCamera::Pan(QPointF const& from, QPointF const& to, QRectF const& viewport) {
    if (ToUnits(from, viewport) && ToUnits(to, viewport))
        m_target = m_target + (ComputeWorldPosition(from, viewport) - ComputeWorldPosition(to, viewport));
}

void OrbitCamera::Zoom(double factor, QPointF const& position, QRectF const& viewport) {
    if (!IsFactor(factor) || !ToUnits(position, viewport))
        return;
    WorldPosition const kept = ComputeWorldPosition(position, viewport);
    SetDistance(m_distance / factor);
    m_target = m_target + (kept - ComputeWorldPosition(position, viewport));
}

void OrbitCamera::Dolly(double forward) {
    if (AreFinite(forward))
        m_target = m_target + -forward * ComputeAxes().towardsViewer;
}

void OrbitCamera::Roll(double clockwise, QPointF const& position, QRectF const& viewport) {
    if (!AreFinite(clockwise) || !ToUnits(position, viewport))
        return;
    WorldPosition const kept = ComputeWorldPosition(position, viewport);
    SetRoll(m_roll + clockwise);
    m_target = m_target + (kept - ComputeWorldPosition(position, viewport));
}

void OrbitCamera::Fit(WorldBox const& box, double aspectRatio, double margin) {
    if (!IsBox(box) || !IsFactor(aspectRatio))
        return;
    m_target = CenterOf(box);
    ViewAxes const axes = ComputeAxes();
    double const tangent = FittedShare(margin) * TangentOfHalf(m_fieldOfView);
    double distance = 0.0;
    for (WorldPosition const& corner : CornersOf(box)) {
        WorldVector const place = ToAxes(axes, corner - m_target);
        double const height = std::max(std::abs(place.x) / aspectRatio, std::abs(place.y));
        double const nearer = m_projection == Projection::Perspective ? place.z : 0.0;
        distance = std::max({distance, height / tangent + nearer, (1.0 + kNearestCorner) * nearer});
    }
    if (distance > 0.0)
        SetDistance(distance);
}

void OrbitCamera::LookFrom(StandardView view) {
    auto const [azimuth, elevation] = DirectionOf(view);
    m_azimuth = azimuth;
    m_elevation = elevation;
    m_roll = 0.0;
}

void OrbitCamera::SetTarget(WorldPosition const& target) {
    if (IsFinite(target))
        m_target = target;
}

void OrbitCamera::SetDistance(double distance) {
    if (AreFinite(distance))
        m_distance = std::clamp(distance, kLeastLength, kGreatestLength);
}

void OrbitCamera::SetAzimuth(double degrees) {
    if (AreFinite(degrees))
        m_azimuth = WrapDegrees(degrees);
}

void OrbitCamera::SetElevation(double degrees) {
    if (AreFinite(degrees))
        m_elevation = std::clamp(degrees, -90.0, 90.0);
}

void OrbitCamera::SetRoll(double degrees) {
    if (AreFinite(degrees))
        m_roll = WrapDegrees(degrees);
}

void OrbitCamera::SetFieldOfView(double degrees) {
    if (AreFinite(degrees))
        m_fieldOfView = std::clamp(degrees, kLeastFieldOfView, kGreatestFieldOfView);
}

WorldPosition OrbitCamera::ComputePosition() const {
    return m_target + m_distance * ComputeAxes().towardsViewer;
}

ViewAxes OrbitCamera::ComputeAxes() const {
    return AxesOf(m_upAxis, {m_azimuth, m_elevation}, m_roll);
}

double OrbitCamera::ComputeHalfHeight() const {
    return m_distance * TangentOfHalf(m_fieldOfView);
}

WorldPosition OrbitCamera::ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const {
    auto const units = ToUnits(position, viewport);
    if (!units)
        return m_target;
    double const halfHeight = ComputeHalfHeight();
    double const halfWidth = halfHeight * viewport.width() / viewport.height();
    return m_target + FromAxes(ComputeAxes(), {halfWidth * units->x(), halfHeight * units->y(), 0.0});
}

void OrbitCamera::Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene,
                        ViewOrigin origin) const {
    if (origin == ViewOrigin::Focus)
        view.SetOrigin(m_target);
    bool const isPerspective = m_projection == Projection::Perspective;
    double const halfHeight = isPerspective ? TangentOfHalf(m_fieldOfView) : ComputeHalfHeight();
    SetMatrices(view,
                {ComputeAxes(), ComputePosition(), m_projection,
                 halfHeight * view.ComputeViewportAspectRatio(), halfHeight, m_distance},
                scene);
}

OrbitCamera OrbitCamera::Interpolate(OrbitCamera const& from, OrbitCamera const& to, double t) {
    if (!(t > 0.0))
        return from;
    if (t >= 1.0)
        return to;
    OrbitCamera camera = to;
    Progress const progress = ProgressOf(from.ComputeHalfHeight(), to.ComputeHalfHeight(), t);
    camera.m_target = from.m_target + progress.position * (to.m_target - from.m_target);
    camera.m_fieldOfView = std::lerp(from.m_fieldOfView, to.m_fieldOfView, t);
    camera.SetDistance(progress.size / TangentOfHalf(camera.m_fieldOfView));
    camera.SetAzimuth(from.m_azimuth + t * WrapDegrees(to.m_azimuth - from.m_azimuth));
    camera.SetElevation(std::lerp(from.m_elevation, to.m_elevation, t));
    camera.SetRoll(from.m_roll + t * WrapDegrees(to.m_roll - from.m_roll));
    return camera;
}

QJsonObject OrbitCamera::ToJson() const {
    return {{"type", kType},
            {"target", zx3DQt::ToJson(m_target)},
            {"distance", m_distance},
            {"azimuth", m_azimuth},
            {"elevation", m_elevation},
            {"roll", m_roll},
            {"fieldOfView", m_fieldOfView},
            {"projection", NameOf(m_projection, kProjectionNames)},
            {"upAxis", NameOf(m_upAxis, kUpAxisNames)}};
}

std::optional<OrbitCamera> OrbitCamera::FromJson(QJsonObject const& json) {
    CameraJsonReader reader(json, kType);
    OrbitCamera camera;
    camera.m_target = reader.Position("target");
    camera.m_distance = reader.Number("distance", kLeastLength, kGreatestLength);
    camera.m_azimuth = reader.Angle("azimuth", 180.0);
    camera.m_elevation = reader.Angle("elevation", 90.0);
    camera.m_roll = reader.Angle("roll", 180.0);
    camera.m_fieldOfView = reader.Number("fieldOfView", kLeastFieldOfView, kGreatestFieldOfView);
    camera.m_projection = static_cast<Projection>(reader.Choice("projection", kProjectionNames));
    camera.m_upAxis = static_cast<UpAxis>(reader.Choice("upAxis", kUpAxisNames));
    return reader.IsValid() ? std::optional(camera) : std::nullopt;
}

} // namespace zarvex::zx3DQt
