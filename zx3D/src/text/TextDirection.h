// From angles to directions in the picture.
#pragma once

#include <zx3D/Annotations.h>

#include <cmath>
#include <numbers>

namespace zarvex::zx3D {

/// Whether a text of that angle, in degrees, is not turned.
inline bool IsUpright(float degrees) {
    return !std::isfinite(degrees) || std::fmod(degrees, 360.0f) == 0.0f;
}

/// Where a text of a finite angle runs to, anticlockwise as it is seen, degrees. Exact for quarter turns.
inline PictureDirection DirectionOfAngle(float degrees) {
    double const angle = std::fmod(double(degrees), 360.0);
    double const quarters = std::round(angle / 90.0);
    double const rest = (angle - 90.0 * quarters) * (std::numbers::pi / 180.0);
    auto const along = static_cast<float>(std::cos(rest));
    auto const up = static_cast<float>(std::sin(rest));
    switch (static_cast<int>(quarters) & 3) {
    case 1:
        return {-up, -along};
    case 2:
        return {-along, up};
    case 3:
        return {up, along};
    default:
        return {along, -up};
    }
}

} // namespace zarvex::zx3D
