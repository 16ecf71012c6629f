// From pixels, notches and keys to a camera's own operations.
#include "CameraMovements.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zarvex::zx3DQt {

namespace {

// ---- Dragging.

void Turn(OrbitCamera& camera, CameraDrag const& drag, CameraInput const& input) {
    QPointF const degrees = input.bindings.degreesPerPixel * (drag.to - drag.from);
    camera.Orbit(degrees.x(), -degrees.y());
}

void Turn(PlanarCamera& camera, CameraDrag const& drag, CameraInput const& input) {
    camera.Pan(drag.from, drag.to, input.viewport);
}

/// The scene follows the pointer, in the middle of the picture.
void Turn(FlyCamera& camera, CameraDrag const& drag, CameraInput const& input) {
    QPointF const degrees = camera.GetFieldOfView() / input.viewport.height() * (drag.to - drag.from);
    camera.Turn(-degrees.x(), degrees.y());
}

/// About the middle of the viewport, degrees clockwise.
double AngleOf(QPointF const& position, QRectF const& viewport) {
    QPointF const way = position - viewport.center();
    return std::atan2(way.y(), way.x()) * 180.0 / std::numbers::pi;
}

// ---- Zooming and rolling.

template<typename Kind>
void ZoomOne(Kind& camera, double steps, QPointF const& position, CameraInput const& input) {
    camera.Zoom(std::pow(input.bindings.zoomPerStep, steps), position, input.viewport);
}

void ZoomOne(FlyCamera& camera, double steps, QPointF const& position, CameraInput const& input) {
    camera.MoveTowards(position, input.viewport, steps * camera.GetStepLength());
}

template<typename Kind>
void RollOne(Kind& camera, double clockwise, QPointF const& position, CameraInput const& input) {
    camera.Roll(clockwise, position, input.viewport);
}

void RollOne(FlyCamera& camera, double clockwise, QPointF const&, CameraInput const&) {
    camera.Roll(clockwise);
}

// ---- Keys.

/// To the right and up, of length 1.
using Way = QPointF;

template<typename Kind>
void PanByKey(Kind& camera, Way const& way, CameraInput const& input) {
    QPointF const middle = input.viewport.center();
    QPointF const moved = input.bindings.panPerKey * input.viewport.height() * QPointF(way.x(), -way.y());
    camera.Pan(middle, middle + moved, input.viewport);
}

void PanByKey(FlyCamera& camera, Way const& way, CameraInput const&) {
    camera.Move(way.x() * camera.GetStepLength(), way.y() * camera.GetStepLength(), 0.0);
}

void TurnByKey(OrbitCamera& camera, Way const& way, CameraInput const& input) {
    camera.Orbit(input.bindings.degreesPerKey * way.x(), input.bindings.degreesPerKey * way.y());
}

void TurnByKey(PlanarCamera& camera, Way const& way, CameraInput const& input) {
    PanByKey(camera, way, input);
}

void TurnByKey(FlyCamera& camera, Way const& way, CameraInput const& input) {
    camera.Turn(input.bindings.degreesPerKey * way.x(), input.bindings.degreesPerKey * way.y());
}

void LookOneFrom(auto& camera, StandardView view) {
    camera.LookFrom(view);
}

void LookOneFrom(PlanarCamera&, StandardView) {} // it has but one

} // namespace

void MoveCamera(Camera& camera, CameraMovement movement, CameraDrag const& drag, CameraInput const& input) {
    switch (movement) {
    case CameraMovement::None:
        break;
    case CameraMovement::Orbit:
        std::visit([&](auto& one) { Turn(one, drag, input); }, camera);
        break;
    case CameraMovement::Pan:
        std::visit([&](auto& one) { one.Pan(drag.from, drag.to, input.viewport); }, camera);
        break;
    case CameraMovement::Zoom:
        ZoomCamera(camera, (drag.from.y() - drag.to.y()) / input.bindings.pixelsPerStep, drag.start, input);
        break;
    case CameraMovement::Roll:
        RollCamera(
            camera,
            std::remainder(AngleOf(drag.to, input.viewport) - AngleOf(drag.from, input.viewport), 360.0),
            input.viewport.center(), input);
        break;
    }
}

void ZoomCamera(Camera& camera, double steps, QPointF const& position, CameraInput const& input) {
    std::visit([&](auto& one) { ZoomOne(one, steps, position, input); }, camera);
}

void RollCamera(Camera& camera, double clockwise, QPointF const& position, CameraInput const& input) {
    std::visit([&](auto& one) { RollOne(one, clockwise, position, input); }, camera);
}

bool StepCamera(Camera& camera, CameraCommand command, CameraInput const& input) {
    QPointF const middle = input.viewport.center();
    auto const turn = [&](Way way) { std::visit([&](auto& one) { TurnByKey(one, way, input); }, camera); };
    auto const pan = [&](Way way) { std::visit([&](auto& one) { PanByKey(one, way, input); }, camera); };
    switch (command) {
    case CameraCommand::OrbitLeft:
        turn({-1.0, 0.0});
        return true;
    case CameraCommand::OrbitRight:
        turn({1.0, 0.0});
        return true;
    case CameraCommand::OrbitUp:
        turn({0.0, 1.0});
        return true;
    case CameraCommand::OrbitDown:
        turn({0.0, -1.0});
        return true;
    case CameraCommand::PanLeft:
        pan({-1.0, 0.0});
        return true;
    case CameraCommand::PanRight:
        pan({1.0, 0.0});
        return true;
    case CameraCommand::PanUp:
        pan({0.0, 1.0});
        return true;
    case CameraCommand::PanDown:
        pan({0.0, -1.0});
        return true;
    case CameraCommand::ZoomIn:
        ZoomCamera(camera, 1.0, middle, input);
        return true;
    case CameraCommand::ZoomOut:
        ZoomCamera(camera, -1.0, middle, input);
        return true;
    case CameraCommand::RollLeft:
        RollCamera(camera, -input.bindings.degreesPerKey, middle, input);
        return true;
    case CameraCommand::RollRight:
        RollCamera(camera, input.bindings.degreesPerKey, middle, input);
        return true;
    default:
        return false;
    }
}

void LookFrom(Camera& camera, StandardView view) {
    std::visit([&](auto& one) { LookOneFrom(one, view); }, camera);
}

} // namespace zarvex::zx3DQt
