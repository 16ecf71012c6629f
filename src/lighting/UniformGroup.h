// vec4 uniforms that share the first part of their names.
#pragma once

#include <zx3D/Context.h>

#include <bgfx/bgfx.h>

#include <QColor>

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace zarvex::zx3DQt {

using Vec4 = std::array<float, 4>;

/// Red, green, blue, alpha, 0 to 1.
inline Vec4 ToVec4(QColor const& color) {
    return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

template<std::size_t N>
constexpr std::array<bgfx::UniformHandle, N> InvalidUniforms() {
    std::array<bgfx::UniformHandle, N> uniforms{};
    uniforms.fill(BGFX_INVALID_HANDLE);
    return uniforms;
}

/// Creates a uniform for each suffix, named `name` + suffix, and returns the run that they belong to. Handles
/// that are there already are overwritten. Those that cannot be had are invalid, which a warning says.
zx3D::ContextRun CreateUniformGroup(std::string const& name, std::span<char const* const> suffixes,
                                    std::span<bgfx::UniformHandle> uniforms);

/// Destroys those that are valid, unless their run is over, and makes all invalid.
void DestroyUniformGroup(zx3D::ContextRun run, std::span<bgfx::UniformHandle> uniforms);

/// Sets each for the next draw. Those that are invalid or of another run are left out with a warning, which
/// calls the group by its name; before the process's first context, where the application may run bgfx by
/// itself, all calls are made.
void SubmitUniformGroup(std::string const& name, zx3D::ContextRun run,
                        std::span<bgfx::UniformHandle const> uniforms, std::span<Vec4 const> values);

} // namespace zarvex::zx3DQt
