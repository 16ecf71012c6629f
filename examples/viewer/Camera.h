// The library's camera, and what it tells as the floats that the viewer draws with.
#pragma once

#include "Box.h"

#include <zx3DQt/OrbitCamera.h>

#include <QVector3D>

namespace viewer {

using zarvex::zx3DQt::OrbitCamera;
using zarvex::zx3DQt::Projection;
using zarvex::zx3DQt::StandardView;
using zarvex::zx3DQt::UpAxis;

inline QVector3D ToVector(auto const& place) {
    return {static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)};
}

inline zarvex::zx3DQt::WorldBox ToWorldBox(Box const& box) {
    return {{box.min.x(), box.min.y(), box.min.z()}, {box.max.x(), box.max.y(), box.max.z()}};
}

// Unit vectors, world space.
inline QVector3D ScreenRight(OrbitCamera const& camera) {
    return ToVector(camera.ComputeAxes().right);
}
inline QVector3D ScreenUp(OrbitCamera const& camera) {
    return ToVector(camera.ComputeAxes().up);
}
inline QVector3D TowardsViewer(OrbitCamera const& camera) {
    return ToVector(camera.ComputeAxes().towardsViewer);
}

} // namespace viewer
