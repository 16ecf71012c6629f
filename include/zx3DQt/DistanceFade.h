// Fading with distance.
#pragma once

#include <QVector3D>

#include <optional>

namespace zarvex::zx3DQt {

/// How lines disappear with distance, in world units: up to `begin` they have their own colour, from `end` on
/// there is nothing, and in between they fade softly (by the cubic 3t² − 2t³). Where `end` is not beyond
/// `begin`, they end there.
struct DistanceFade {
    float begin = 0.0f; ///< at 0 or beyond
    float end = 0.0f;   ///< infinity: nothing fades
    /// What distances are measured from, a world position. Empty: the camera. In perspective that is the eye.
    /// In a parallel projection, whose eye is nowhere, it is the line of sight through the middle of the
    /// viewport: distances from it are those in the picture.
    std::optional<QVector3D> center;
};

} // namespace zarvex::zx3DQt
