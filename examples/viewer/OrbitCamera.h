// The viewer's camera: it circles a target. Pure: no widget, no GPU.
#pragma once

#include "Box.h"

#include <QMatrix4x4>
#include <QPointF>
#include <QVector3D>

namespace viewer {

enum class UpAxis { Y, Z };
enum class Projection { Perspective, Parallel };
enum class StandardView { Iso, Front, Back, Left, Right, Top, Bottom };

/// Looks at a target from a distance and a direction, upright. World space is right handed; view space has x
/// to the right, y up, and the camera looks along -z.
///
/// Places on the screen are given in shares of the view: (0, 0) is the centre, x and y grow to the right and
/// up, and the view's height is 2; its width is 2 times `aspectRatio`.
class OrbitCamera {
public:
    // ---- What the camera is asked to do.

    /// Turns around the target, degrees: the scene to the right, and its near side down.
    void Orbit(float right, float down);

    /// Moves so that what is at the target's depth goes by `moved` on the screen.
    void Pan(QPointF moved);

    /// Makes what is at the target's depth `factor` times as large; what is at `place` stays there.
    void Zoom(float factor, QPointF place = {});

    /// Sees all of the box from where it looks now, as large as possible but for a margin.
    void Fit(Box const& box, float aspectRatio);

    /// Looks from another side at the same target.
    void LookFrom(StandardView view);

    void SetUpAxis(UpAxis up) { m_up = up; }
    void SetProjection(Projection projection) { m_projection = projection; }

    // ---- What it sees.

    UpAxis GetUpAxis() const { return m_up; }
    Projection GetProjection() const { return m_projection; }
    QVector3D GetTarget() const { return m_target; }
    float GetDistance() const { return m_distance; }

    QVector3D UpDirection() const; ///< of the world
    // Unit vectors, world space.
    QVector3D ScreenRight() const;
    QVector3D ScreenUp() const;
    QVector3D TowardsViewer() const;

    QVector3D Position() const { return m_target + m_distance * TowardsViewer(); }

    /// Half of the view's height at the target's depth, world units.
    float HalfHeight() const;

    QMatrix4x4 ViewMatrix() const;

    /// Encloses the sphere as tightly as it can, so that depths are told apart well. `homogeneousDepth`: clip
    /// depths are -1 to 1 instead of 0 to 1 (`bgfx::Caps`).
    QMatrix4x4 ProjectionMatrix(float aspectRatio, QVector3D const& center, float radius,
                                bool homogeneousDepth) const;

private:
    UpAxis m_up = UpAxis::Z;
    Projection m_projection = Projection::Perspective;
    float m_azimuth = 0.0f;   ///< degrees; 0 is the front, 90 the right side
    float m_elevation = 0.0f; ///< degrees; 90 is straight above
    QVector3D m_target;
    float m_distance = 5.0f;
};

} // namespace viewer
