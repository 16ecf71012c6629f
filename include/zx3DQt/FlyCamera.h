// A camera that is moved through the scene.
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

/// Stands somewhere and looks around: for plants, buildings and terrain that are walked and flown through. A
/// plain value in double precision, always in perspective.
///
/// What one looks at is about a focus distance away: a step is a twentieth of it. Directions, positions,
/// units and refused arguments are those of `OrbitCamera`.
class ZX3DQT_EXPORT FlyCamera {
public:
    // ---- What the camera is asked to do.

    /// Turns its head, degrees. The pitch ends at 90 and -90.
    void Turn(double right, double up);

    /// Goes along the picture's directions, world units.
    void Move(double right, double up, double forward);

    /// Goes towards what is under a viewport position, which stays there, world units.
    void MoveTowards(QPointF const& position, QRectF const& viewport, double length);

    /// Moves sideways so that what is a focus distance deep under viewport position `from` comes to `to`.
    void Pan(QPointF const& from, QPointF const& to, QRectF const& viewport);

    /// Turns the picture clockwise about its middle, degrees.
    void Roll(double clockwise);

    /// Goes, looking in the same direction, to the nearest place from which all eight corners are seen: they
    /// touch two opposite edges of the picture, but for the share `margin` of it (0 to 0.45). The box's
    /// centre is a focus distance away then. From a box without extent it keeps that distance.
    void Fit(WorldBox const& box, double aspectRatio, double margin = 0.1);

    /// Looks in the direction of a standard view, from where it is, without roll.
    void LookFrom(StandardView view);

    // ---- Where it stands.

    /// The camera's place in the world.
    /// @{
    WorldPosition const& GetPosition() const { return m_position; }
    void SetPosition(WorldPosition const& position);
    /// @}

    /// How far away what one looks at is, world units, 1e-18 to 1e18. It decides on the length of a step.
    /// @{
    double GetFocusDistance() const { return m_focusDistance; }
    void SetFocusDistance(double distance);
    double GetStepLength() const { return m_focusDistance / 20.0; }
    /// @}

    /// Where it looks, turned to the right: 0 along the front's view, 90 towards where x is greatest; -180 to
    /// 180.
    /// @{
    double GetHeading() const { return m_heading; }
    void SetHeading(double degrees);
    /// @}

    /// How far upwards it looks: 90 is straight up, -90 straight down.
    /// @{
    double GetPitch() const { return m_pitch; }
    void SetPitch(double degrees);
    /// @}

    /// How far the picture is turned clockwise; -180 to 180.
    /// @{
    double GetRoll() const { return m_roll; }
    void SetRoll(double degrees);
    /// @}

    /// The angle from the picture's bottom to its top, 0.001 to 170; 50 unless told otherwise.
    /// @{
    double GetFieldOfView() const { return m_fieldOfView; }
    void SetFieldOfView(double degrees);
    /// @}

    /// The axis of the world that points up, z unless told otherwise.
    /// @{
    UpAxis GetUpAxis() const { return m_upAxis; }
    void SetUpAxis(UpAxis up) { m_upAxis = up; }
    /// @}

    // ---- What it sees.

    /// The picture's directions.
    ViewAxes ComputeAxes() const;

    /// The world position a focus distance deep that appears at a viewport position; the one in the middle
    /// for a viewport without area.
    WorldPosition ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const;

    /// Sets the view's matrices as `OrbitCamera::Apply` does; its focus is the camera itself.
    void Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene = std::nullopt,
               ViewOrigin origin = ViewOrigin::Keep) const;

    /// Between two cameras: `from` at t = 0, `to` at 1, angles the shorter way round. The up axis is that of
    /// `to`, but at 0.
    static FlyCamera Interpolate(FlyCamera const& from, FlyCamera const& to, double t);

    /// As JSON, and back: the same camera, to the last bit. Empty where a member is missing or out of range.
    /// @{
    QJsonObject ToJson() const;
    static std::optional<FlyCamera> FromJson(QJsonObject const& json);
    /// @}

    friend bool operator==(FlyCamera const&, FlyCamera const&) = default; ///< in everything

private:
    WorldPosition m_position;
    double m_focusDistance = 5.0;
    double m_heading = 0.0;
    double m_pitch = 0.0;
    double m_roll = 0.0;
    double m_fieldOfView = 50.0;
    UpAxis m_upAxis = UpAxis::Z;
};

} // namespace zarvex::zx3DQt
