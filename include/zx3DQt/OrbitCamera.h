// A camera that circles what it looks at.
#pragma once

#include <zx3DQt/CameraTypes.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <QJsonObject>
#include <QPointF>
#include <QRectF>

#include <optional>

namespace zarvex::zx3DQt {

class BGFXViewContext;

/// Looks at a target from a distance and a direction: for parts, meshes and scenes that are turned about. A
/// plain value in double precision, without a widget, a GPU or a signal:
///
///     OrbitCamera camera;
///     camera.LookFrom(StandardView::Isometric);
///     camera.Fit(box, view.ComputeViewportAspectRatio());
///     camera.Apply(view, box); // in every frame
///
/// Direction: an azimuth and an elevation, so that up stays up, and a roll. World space is right handed.
/// Looking straight down, the azimuth turns the picture: nothing jumps there.
///
/// Viewport positions and viewports are pixels, y down: physical or device-independent ones, but both the
/// same. Angles are degrees. Where an argument is not finite, a factor not above 0 or a viewport without
/// area, nothing changes.
class ZX3DQT_EXPORT OrbitCamera {
public:
    // ---- What the camera is asked to do.

    /// Turns the scene around the target, or around `pivot`, which stays where it is in the picture: its near
    /// side to the right and up, degrees. The elevation ends at 90 and -90.
    /// @{
    void Orbit(double right, double up);
    void Orbit(double right, double up, WorldPosition const& pivot);
    /// @}

    /// Moves so that what is at the target's depth under viewport position `from` comes to `to`.
    void Pan(QPointF const& from, QPointF const& to, QRectF const& viewport);

    /// Makes what is at the target's depth `factor` times as large. Everything behind `position` stays there,
    /// at every depth.
    void Zoom(double factor, QPointF const& position, QRectF const& viewport);

    /// Moves camera and target along the line of sight, world units; in a parallel projection nothing is seen
    /// of it.
    void Dolly(double forward);

    /// Turns the picture clockwise about a viewport position, degrees.
    void Roll(double clockwise, QPointF const& position, QRectF const& viewport);

    /// Makes the box's centre the target, and goes as near as all eight corners allow, leaving free the share
    /// `margin` of the picture (0 to 0.45) at each edge that they touch. A box without extent keeps the
    /// distance.
    void Fit(WorldBox const& box, double aspectRatio, double margin = 0.1);

    /// Looks at the same target from another side, without roll.
    void LookFrom(StandardView view);

    // ---- Where it stands.

    /// The position that it circles, in the middle of the picture.
    /// @{
    WorldPosition const& GetTarget() const { return m_target; }
    void SetTarget(WorldPosition const& target);
    /// @}

    /// From the camera to its target, world units, 1e-18 to 1e18. In a parallel projection it decides how
    /// large things are, as at the target in perspective.
    /// @{
    double GetDistance() const { return m_distance; }
    void SetDistance(double distance);
    /// @}

    /// Where the camera stands, seen from the target: 0 is the front, 90 the right side; -180 to 180.
    /// @{
    double GetAzimuth() const { return m_azimuth; }
    void SetAzimuth(double degrees);
    /// @}

    /// How far above the target's level: 90 is straight above, -90 straight below.
    /// @{
    double GetElevation() const { return m_elevation; }
    void SetElevation(double degrees);
    /// @}

    /// How far the picture is turned clockwise; -180 to 180.
    /// @{
    double GetRoll() const { return m_roll; }
    void SetRoll(double degrees);
    /// @}

    /// The angle from the picture's bottom to its top, 0.001 to 170; 32 unless told otherwise.
    /// @{
    double GetFieldOfView() const { return m_fieldOfView; }
    void SetFieldOfView(double degrees);
    /// @}

    /// Perspective or parallel. Another one keeps the size of what is at the target.
    /// @{
    Projection GetProjection() const { return m_projection; }
    void SetProjection(Projection projection) { m_projection = projection; }
    /// @}

    /// The axis of the world that points up, z unless told otherwise.
    /// @{
    UpAxis GetUpAxis() const { return m_upAxis; }
    void SetUpAxis(UpAxis up) { m_upAxis = up; }
    /// @}

    // ---- What it sees.

    /// The camera's place in the world.
    WorldPosition ComputePosition() const;

    /// The picture's directions.
    ViewAxes ComputeAxes() const;

    /// Half of the picture's height at the target's depth, world units.
    double ComputeHalfHeight() const;

    /// The world position at the target's depth that appears at a viewport position; the target for a
    /// viewport without area.
    WorldPosition ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const;

    /// Sets the view's matrices, for the viewport that it has; bgfx must run. The nearest and the farthest
    /// corner of `scene` decide on the near and the far plane, so that depths in between are told apart as
    /// well as can be; in perspective the near plane is at least a ten-thousandth of the far plane away, or
    /// nearer where the target is. Without a box: from a hundredth of the distance to a hundred times as far.
    ///
    /// The formulas are those of `bx::mtxProj` and `bx::mtxOrtho`, right handed.
    void Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene = std::nullopt,
               ViewOrigin origin = ViewOrigin::Keep) const;

    /// Between two cameras: `from` at t = 0, `to` at 1. Distances go by equal factors, angles the shorter way
    /// round; what has the same place in both pictures, looked at from the same side, has it all the way.
    /// Projection and up axis are those of `to`, but at 0.
    static OrbitCamera Interpolate(OrbitCamera const& from, OrbitCamera const& to, double t);

    /// As JSON, and back: the same camera, to the last bit. Empty where a member is missing or out of range.
    /// @{
    QJsonObject ToJson() const;
    static std::optional<OrbitCamera> FromJson(QJsonObject const& json);
    /// @}

    friend bool operator==(OrbitCamera const&, OrbitCamera const&) = default; ///< in everything

private:
    WorldPosition m_target;
    double m_distance = 5.0;
    double m_azimuth = 0.0;
    double m_elevation = 0.0;
    double m_roll = 0.0;
    double m_fieldOfView = 32.0;
    Projection m_projection = Projection::Perspective;
    UpAxis m_upAxis = UpAxis::Z;
};

} // namespace zarvex::zx3DQt
