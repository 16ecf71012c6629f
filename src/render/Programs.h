// The renderer's programs and uniforms.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zarvex::zx3DQt {

/// In the order in which they are created.
enum class Program : std::uint8_t {
    Basic,
    Lighting,
    DashedLine,
    StippledLine,
    PointSpriteCompute,
    PointSprite,
    RectangleSpriteCompute,
    RectangleSprite,
    FullscreenTexture,
    Count
};

/// In the order in which they are created. All are vec4s but the last, a sampler.
enum class Uniform : std::uint8_t {
    LineStipple,
    LineStyle,
    PointSprite,
    RectangleSprite,
    Viewport,
    ViewPosition,
    DepthOffsetBias,
    FullscreenTexture,
    Count
};

/// An enumerator's place in a table.
template<typename Enum>
constexpr std::size_t IndexOf(Enum enumerator) {
    return static_cast<std::size_t>(enumerator);
}

} // namespace zarvex::zx3DQt
