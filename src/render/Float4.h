// Four floats, as compute shaders read and write them.
#pragma once

#include <zx3D/Color.h>

#include <bgfx/bgfx.h>
#include <bx/math.h>

#include <initializer_list>

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

/// The layout of a vertex that has one `Float4` for each attribute, in this order.
inline bgfx::VertexLayout LayoutOfFloat4s(std::initializer_list<bgfx::Attrib::Enum> attributes) {
    bgfx::VertexLayout layout;
    layout.begin();
    for (bgfx::Attrib::Enum const attribute : attributes)
        layout.add(attribute, 4, bgfx::AttribType::Float);
    layout.end();
    return layout;
}

} // namespace zarvex::zx3DQt
