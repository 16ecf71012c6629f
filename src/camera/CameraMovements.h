// What input means to each kind of camera.
#pragma once

#include <zx3DQt/Camera.h>
#include <zx3DQt/CameraBindings.h>

#include <QPointF>
#include <QRectF>

namespace zarvex::zx3DQt {

/// Where a camera is moved, and how far.
struct CameraInput {
    QRectF viewport; ///< device-independent pixels, as all positions
    CameraBindings const& bindings;
};

/// A piece of a drag that began at `start`.
struct CameraDrag {
    QPointF start;
    QPointF from;
    QPointF to;
};
void MoveCamera(Camera& camera, CameraMovement movement, CameraDrag const& drag, CameraInput const& input);

/// So many notches of a wheel.
void ZoomCamera(Camera& camera, double steps, QPointF const& position, CameraInput const& input);

/// Clockwise, degrees.
void RollCamera(Camera& camera, double clockwise, QPointF const& position, CameraInput const& input);

/// Does what moves the camera a little; false for what shows something else.
bool StepCamera(Camera& camera, CameraCommand command, CameraInput const& input);

void LookFrom(Camera& camera, StandardView view);

} // namespace zarvex::zx3DQt
