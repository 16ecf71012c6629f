// Movements through the scene.
#include <zx3DQt/FlyCamera.h>

#include "CameraJson.h"
#include "ViewGeometry.h"

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

constexpr char kType[] = "fly";

/// No corner is nearer to the camera's plane, as a share of the distance from the box's centre.
constexpr double kNearestCorner = 1e-3;

} // namespace

void FlyCamera::Turn(double right, double up) {
    if (!AreFinite(right, up))
        return;
    PictureMove const move = Unrolled({right, up}, m_roll);
    SetHeading(m_heading + move.right);
    SetPitch(m_pitch + move.up);
}

void FlyCamera::Move(double right, double up, double forward) {
    if (AreFinite(right, up, forward))
        m_position = m_position + FromAxes(ComputeAxes(), {right, up, -forward});
}

void FlyCamera::MoveTowards(QPointF const& position, QRectF const& viewport, double length) {
    if (!AreFinite(length) || !ToUnits(position, viewport))
        return;
    WorldVector const way = ComputeWorldPosition(position, viewport) - m_position;
    m_position = m_position + length / std::sqrt(Dot(way, way)) * way;
}

void FlyCamera::Pan(QPointF const& from, QPointF const& to, QRectF const& viewport) {
    if (ToUnits(from, viewport) && ToUnits(to, viewport))
        m_position = m_position + (ComputeWorldPosition(from, viewport) - ComputeWorldPosition(to, viewport));
}

void FlyCamera::Roll(double clockwise) {
    SetRoll(m_roll + clockwise);
}

void FlyCamera::Fit(WorldBox const& box, double aspectRatio, double margin) {
    if (!IsBox(box) || !IsFactor(aspectRatio))
        return;
    ViewAxes const axes = ComputeAxes();
    WorldPosition const center = CenterOf(box);
    double const tangentY = FittedShare(margin) * TangentOfHalf(m_fieldOfView);
    double const tangentX = aspectRatio * tangentY;
    // Along the picture's axes, from the centre: a corner at x is seen by a camera at (eye, distance) where
    // |x - eye| <= tangent * (distance - z). Each edge of the picture is one such line.
    double right = 0.0, left = 0.0, upper = 0.0, lower = 0.0, nearest = 0.0;
    for (WorldPosition const& corner : CornersOf(box)) {
        WorldVector const place = ToAxes(axes, corner - center);
        right = std::max(right, place.x + tangentX * place.z);
        left = std::max(left, -place.x + tangentX * place.z);
        upper = std::max(upper, place.y + tangentY * place.z);
        lower = std::max(lower, -place.y + tangentY * place.z);
        nearest = std::max(nearest, place.z);
    }
    double const distance = std::max({0.5 * (right + left) / tangentX, 0.5 * (upper + lower) / tangentY,
                                      (1.0 + kNearestCorner) * nearest});
    if (distance > 0.0)
        SetFocusDistance(distance);
    m_position = center + FromAxes(axes, {0.5 * (right - left), 0.5 * (upper - lower), m_focusDistance});
}

void FlyCamera::LookFrom(StandardView view) {
    auto const [azimuth, elevation] = DirectionOf(view);
    SetHeading(-azimuth);
    SetPitch(-elevation);
    m_roll = 0.0;
}

void FlyCamera::SetPosition(WorldPosition const& position) {
    if (IsFinite(position))
        m_position = position;
}

void FlyCamera::SetFocusDistance(double distance) {
    if (AreFinite(distance))
        m_focusDistance = std::clamp(distance, kLeastLength, kGreatestLength);
}

void FlyCamera::SetHeading(double degrees) {
    if (AreFinite(degrees))
        m_heading = WrapDegrees(degrees);
}

void FlyCamera::SetPitch(double degrees) {
    if (AreFinite(degrees))
        m_pitch = std::clamp(degrees, -90.0, 90.0);
}

void FlyCamera::SetRoll(double degrees) {
    if (AreFinite(degrees))
        m_roll = WrapDegrees(degrees);
}

void FlyCamera::SetFieldOfView(double degrees) {
    if (AreFinite(degrees))
        m_fieldOfView = std::clamp(degrees, kLeastFieldOfView, kGreatestFieldOfView);
}

ViewAxes FlyCamera::ComputeAxes() const {
    return AxesOf(m_upAxis, {-m_heading, -m_pitch}, m_roll);
}

WorldPosition FlyCamera::ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const {
    QPointF const units = ToUnits(position, viewport).value_or(QPointF());
    double const halfHeight = m_focusDistance * TangentOfHalf(m_fieldOfView);
    double const halfWidth =
        viewport.height() > 0.0 ? halfHeight * viewport.width() / viewport.height() : 0.0;
    return m_position +
           FromAxes(ComputeAxes(), {halfWidth * units.x(), halfHeight * units.y(), -m_focusDistance});
}

void FlyCamera::Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene, ViewOrigin origin) const {
    if (origin == ViewOrigin::Focus)
        view.SetOrigin(m_position);
    double const halfHeight = TangentOfHalf(m_fieldOfView);
    SetMatrices(view,
                {ComputeAxes(), m_position, Projection::Perspective,
                 halfHeight * view.ComputeViewportAspectRatio(), halfHeight, m_focusDistance},
                scene);
}

FlyCamera FlyCamera::Interpolate(FlyCamera const& from, FlyCamera const& to, double t) {
    if (!(t > 0.0))
        return from;
    if (t >= 1.0)
        return to;
    FlyCamera camera = to;
    Progress const progress = ProgressOf(from.m_focusDistance, to.m_focusDistance, t);
    camera.m_position = from.m_position + progress.position * (to.m_position - from.m_position);
    camera.SetFocusDistance(progress.size);
    camera.SetHeading(from.m_heading + t * WrapDegrees(to.m_heading - from.m_heading));
    camera.SetPitch(std::lerp(from.m_pitch, to.m_pitch, t));
    camera.SetRoll(from.m_roll + t * WrapDegrees(to.m_roll - from.m_roll));
    camera.m_fieldOfView = std::lerp(from.m_fieldOfView, to.m_fieldOfView, t);
    return camera;
}

QJsonObject FlyCamera::ToJson() const {
    return {{"type", kType},
            {"position", zx3DQt::ToJson(m_position)},
            {"focusDistance", m_focusDistance},
            {"heading", m_heading},
            {"pitch", m_pitch},
            {"roll", m_roll},
            {"fieldOfView", m_fieldOfView},
            {"upAxis", NameOf(m_upAxis, kUpAxisNames)}};
}

std::optional<FlyCamera> FlyCamera::FromJson(QJsonObject const& json) {
    CameraJsonReader reader(json, kType);
    FlyCamera camera;
    camera.m_position = reader.Position("position");
    camera.m_focusDistance = reader.Number("focusDistance", kLeastLength, kGreatestLength);
    camera.m_heading = reader.Angle("heading", 180.0);
    camera.m_pitch = reader.Angle("pitch", 90.0);
    camera.m_roll = reader.Angle("roll", 180.0);
    camera.m_fieldOfView = reader.Number("fieldOfView", kLeastFieldOfView, kGreatestFieldOfView);
    camera.m_upAxis = static_cast<UpAxis>(reader.Choice("upAxis", kUpAxisNames));
    return reader.IsValid() ? std::optional(camera) : std::nullopt;
}

} // namespace zarvex::zx3DQt
