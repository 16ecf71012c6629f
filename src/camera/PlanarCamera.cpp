// A rectangle of the plane, and how it moves.
#include <zx3DQt/PlanarCamera.h>

#include "CameraJson.h"
#include "ViewGeometry.h"

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

constexpr char kType[] = "planar";

/// Of the rectangle's sides, around what has no extent in one direction.
constexpr double kThinnest = 1e-3;

double ClampLength(double length) {
    return std::clamp(length, kLeastLength, kGreatestLength);
}

/// Half of what is seen along the picture's edges, world units.
struct HalfSize {
    double width;
    double height;
};

/// The rectangle, or more in one of its directions.
HalfSize ComputeHalfSize(PlanarCamera const& camera, double aspectRatio) {
    HalfSize const half{0.5 * camera.GetWidth(), 0.5 * camera.GetHeight()};
    if (!camera.KeepsAspectRatio())
        return half;
    return {std::max(half.width, half.height * aspectRatio), std::max(half.height, half.width / aspectRatio)};
}

} // namespace

void PlanarCamera::Pan(QPointF const& from, QPointF const& to, QRectF const& viewport) {
    if (ToUnits(from, viewport) && ToUnits(to, viewport))
        m_center = m_center + (ComputeWorldPosition(from, viewport) - ComputeWorldPosition(to, viewport));
}

void PlanarCamera::Zoom(double factor, QPointF const& position, QRectF const& viewport) {
    Zoom(factor, factor, position, viewport);
}

void PlanarCamera::Zoom(double factorX, double factorY, QPointF const& position, QRectF const& viewport) {
    if (!IsFactor(factorX) || !IsFactor(factorY) || !ToUnits(position, viewport))
        return;
    WorldPosition const kept = ComputeWorldPosition(position, viewport);
    SetSize(m_width / factorX, m_height / factorY);
    m_center = m_center + (kept - ComputeWorldPosition(position, viewport));
}

void PlanarCamera::Roll(double clockwise, QPointF const& position, QRectF const& viewport) {
    if (!AreFinite(clockwise) || !ToUnits(position, viewport))
        return;
    WorldPosition const kept = ComputeWorldPosition(position, viewport);
    SetRoll(m_roll + clockwise);
    m_center = m_center + (kept - ComputeWorldPosition(position, viewport));
}

void PlanarCamera::Fit(WorldBox const& box, double margin) {
    if (!IsBox(box))
        return;
    WorldPosition const center = CenterOf(box);
    m_center = {center.x, center.y, m_center.z};
    ViewAxes const axes = ComputeAxes();
    double width = 0.0;
    double height = 0.0;
    for (WorldPosition const& corner : CornersOf(box)) {
        WorldVector const place = ToAxes(axes, corner - m_center);
        width = std::max(width, 2.0 * std::abs(place.x) / FittedShare(margin));
        height = std::max(height, 2.0 * std::abs(place.y) / FittedShare(margin));
    }
    if (m_keepsAspectRatio && std::max(width, height) > 0.0) // the larger one decides
        SetSize(std::max(width, kThinnest * height), std::max(height, kThinnest * width));
    else
        SetSize(width > 0.0 ? width : m_width, height > 0.0 ? height : m_height);
}

void PlanarCamera::SetCenter(WorldPosition const& center) {
    if (IsFinite(center))
        m_center = center;
}

void PlanarCamera::SetSize(double width, double height) {
    if (!AreFinite(width, height))
        return;
    m_width = ClampLength(width);
    m_height = ClampLength(height);
}

void PlanarCamera::SetRoll(double degrees) {
    if (AreFinite(degrees))
        m_roll = WrapDegrees(degrees);
}

ViewAxes PlanarCamera::ComputeAxes() const {
    bool const isUp = m_yDirection == YDirection::Up;
    double const sign = isUp ? 1.0 : -1.0;
    return Rolled({{1.0, 0.0, 0.0}, {0.0, sign, 0.0}, {0.0, 0.0, sign}}, m_roll);
}

WorldPosition PlanarCamera::ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const {
    auto const units = ToUnits(position, viewport);
    if (!units)
        return m_center;
    auto const [halfWidth, halfHeight] = ComputeHalfSize(*this, viewport.width() / viewport.height());
    return m_center + FromAxes(ComputeAxes(), {halfWidth * units->x(), halfHeight * units->y(), 0.0});
}

void PlanarCamera::Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene,
                         ViewOrigin origin) const {
    if (origin == ViewOrigin::Focus)
        view.SetOrigin(m_center);
    auto const [halfWidth, halfHeight] = ComputeHalfSize(*this, view.ComputeViewportAspectRatio());
    WorldBox const slab{{m_center.x, m_center.y, -1.0}, {m_center.x, m_center.y, 1.0}};
    SetMatrices(view,
                {ComputeAxes(), m_center, Projection::Parallel, halfWidth, halfHeight, 2.0 * halfHeight},
                scene.value_or(slab));
}

PlanarCamera PlanarCamera::Interpolate(PlanarCamera const& from, PlanarCamera const& to, double t) {
    if (!(t > 0.0))
        return from;
    if (t >= 1.0)
        return to;
    PlanarCamera camera = to;
    Progress const progress = ProgressOf(from.m_height, to.m_height, t);
    camera.SetSize(ProgressOf(from.m_width, to.m_width, t).size, progress.size);
    camera.m_center = from.m_center + progress.position * (to.m_center - from.m_center);
    camera.SetRoll(from.m_roll + t * WrapDegrees(to.m_roll - from.m_roll));
    return camera;
}

QJsonObject PlanarCamera::ToJson() const {
    return {{"type", kType},
            {"center", zx3DQt::ToJson(m_center)},
            {"width", m_width},
            {"height", m_height},
            {"roll", m_roll},
            {"keepsAspectRatio", m_keepsAspectRatio},
            {"yDirection", NameOf(m_yDirection, kYDirectionNames)}};
}

std::optional<PlanarCamera> PlanarCamera::FromJson(QJsonObject const& json) {
    CameraJsonReader reader(json, kType);
    PlanarCamera camera;
    camera.m_center = reader.Position("center");
    camera.m_width = reader.Number("width", kLeastLength, kGreatestLength);
    camera.m_height = reader.Number("height", kLeastLength, kGreatestLength);
    camera.m_roll = reader.Angle("roll", 180.0);
    camera.m_keepsAspectRatio = reader.Flag("keepsAspectRatio");
    camera.m_yDirection = static_cast<YDirection>(reader.Choice("yDirection", kYDirectionNames));
    return reader.IsValid() ? std::optional(camera) : std::nullopt;
}

} // namespace zarvex::zx3DQt
