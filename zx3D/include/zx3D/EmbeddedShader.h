// A shader that the build compiled into a program or library.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zarvex::zx3D {

/// One shader in the binary form that `bgfx::createShader` takes, for each backend. The CMake function
/// `zx3dqt_add_shaders` makes one of each of an application's shaders, and a header that declares them; the
/// `ProgramFactory` makes programs of them.
///
/// Lifetime: constants, initialised before any code runs, with bytes that live as long as the library or
/// program that they are in.
struct EmbeddedShader {
    std::string_view name;                ///< the stem of the source file
    std::span<std::uint8_t const> openGL; ///< for OpenGL
    std::span<std::uint8_t const> vulkan; ///< for Vulkan
};

} // namespace zarvex::zx3D
