// Four floats, as compute shaders read and write them.
#pragma once

#include <zx3D/Color.h>

#include <bx/math.h>

namespace zarvex::zx3DQt {

struct Float4 {
    float x, y, z, w;
};

/// A position, for the product with a 4 × 4 matrix.
inline Float4 ToFloat4(bx::Vec3 const& position) {
    return {position.x, position.y, position.z, 1.0f};
}

/// Red, green, blue, alpha.
inline Float4 ToFloat4(zx3D::Color const& color) {
    return {color.red, color.green, color.blue, color.alpha};
}

} // namespace zarvex::zx3DQt
