// The shaders that the build compiled into this library.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zarvex::zx3D {

/// One shader in the binary form that bgfx::createShader takes, for each backend. The bytes live as long as
/// the library.
struct EmbeddedShader {
    std::string_view name;
    std::span<std::uint8_t const> openGL;
    std::span<std::uint8_t const> vulkan;
};

/// The shader of that name, such as "vs_basic"; null when there is none.
EmbeddedShader const* FindEmbeddedShader(std::string_view name);

} // namespace zarvex::zx3D
