// A camera for drawings, maps, images and plots.
#pragma once

#include <zx3DQt/CameraTypes.h>
#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <QJsonObject>
#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>

namespace zarvex::zx3DQt {

class BGFXViewContext;

/// Where y grows to in the picture.
enum class YDirection : std::uint8_t {
    Up,   ///< as in drawings and maps; z grows towards the viewer
    Down, ///< as in images; z grows away from the viewer, as in `BGFXViewContext::ComputeOrthoProjection`
};

/// Shows a rectangle of the world's x-y plane in parallel projection. A plain value in double precision.
///
/// All of the rectangle is seen, in the middle of the viewport. Unless told otherwise x and y have the same
/// scale: one of the rectangle's directions fills the viewport, in the other one more of the world is seen.
/// For a plot, whose axes have units of their own, both fill it.
///
/// Positions, units and refused arguments are those of `OrbitCamera`.
class ZX3DQT_EXPORT PlanarCamera {
public:
    // ---- What the camera is asked to do.

    /// Moves so that what is under viewport position `from` comes to `to`.
    void Pan(QPointF const& from, QPointF const& to, QRectF const& viewport);

    /// Makes everything `factor` times as large; what is under `position` stays there. With two factors,
    /// along the picture's lower and its left edge, for which the aspect ratio must not be kept.
    /// @{
    void Zoom(double factor, QPointF const& position, QRectF const& viewport);
    void Zoom(double factorX, double factorY, QPointF const& position, QRectF const& viewport);
    /// @}

    /// Turns the picture clockwise about a viewport position, degrees.
    void Roll(double clockwise, QPointF const& position, QRectF const& viewport);

    /// Makes the rectangle the smallest around the box, leaving free the share `margin` of the picture (0 to
    /// 0.45) at each edge. A direction in which the box has no extent decides nothing.
    void Fit(WorldBox const& box, double margin = 0.1);

    // ---- What it shows.

    /// The world position in the middle of the picture; its z is that of the camera's view origin, and
    /// nothing else.
    /// @{
    WorldPosition const& GetCenter() const { return m_center; }
    void SetCenter(WorldPosition const& center);
    /// @}

    /// Width and height of the rectangle that is seen at least, along the picture's edges, world units, 1e-18
    /// to 1e18.
    /// @{
    double GetWidth() const { return m_width; }
    double GetHeight() const { return m_height; }
    void SetSize(double width, double height);
    /// @}

    /// Whether x and y have the same scale.
    /// @{
    bool KeepsAspectRatio() const { return m_keepsAspectRatio; }
    void SetKeepsAspectRatio(bool keeps) { m_keepsAspectRatio = keeps; }
    /// @}

    /// How far the picture is turned clockwise; -180 to 180.
    /// @{
    double GetRoll() const { return m_roll; }
    void SetRoll(double degrees);
    /// @}

    /// Where y grows to: up unless told otherwise.
    /// @{
    YDirection GetYDirection() const { return m_yDirection; }
    void SetYDirection(YDirection direction) { m_yDirection = direction; }
    /// @}

    /// The picture's directions.
    ViewAxes ComputeAxes() const;

    /// The world position that appears at a viewport position, with the centre's z; the centre for a viewport
    /// without area.
    WorldPosition ComputeWorldPosition(QPointF const& position, QRectF const& viewport) const;

    /// Sets the view's matrices, for the viewport that it has; bgfx must run. Depths are those of `scene`, or
    /// without a box z from -1 to 1.
    void Apply(BGFXViewContext& view, std::optional<WorldBox> const& scene = std::nullopt,
               ViewOrigin origin = ViewOrigin::Keep) const;

    /// Between two cameras: `from` at t = 0, `to` at 1. Sizes go by equal factors; what has the same place in
    /// both pictures has it all the way, where their shapes are alike. What is no number is that of `to`, but
    /// at 0.
    static PlanarCamera Interpolate(PlanarCamera const& from, PlanarCamera const& to, double t);

    /// As JSON, and back: the same camera, to the last bit. Empty where a member is missing or out of range.
    /// @{
    QJsonObject ToJson() const;
    static std::optional<PlanarCamera> FromJson(QJsonObject const& json);
    /// @}

    friend bool operator==(PlanarCamera const&, PlanarCamera const&) = default; ///< in everything

private:
    WorldPosition m_center;
    double m_width = 2.0;
    double m_height = 2.0;
    double m_roll = 0.0;
    bool m_keepsAspectRatio = true;
    YDirection m_yDirection = YDirection::Up;
};

} // namespace zarvex::zx3DQt
