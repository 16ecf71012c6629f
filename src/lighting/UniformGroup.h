// vec4 uniforms that share the first part of their names.
#pragma once

#include <bgfx/bgfx.h>

#include <QColor>

#include <array>
#include <cstddef>
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

/// Creates a uniform for each suffix, named `name` + suffix. Handles that are there already are overwritten.
template<std::size_t N>
void CreateUniformGroup(std::string const& name, std::array<char const*, N> const& suffixes,
                        std::array<bgfx::UniformHandle, N>& uniforms) {
    for (std::size_t i = 0; i < N; ++i)
        uniforms[i] = bgfx::createUniform((name + suffixes[i]).c_str(), bgfx::UniformType::Vec4, 1);
}

/// Destroys those that are valid and makes them invalid.
template<std::size_t N>
void DestroyUniformGroup(std::array<bgfx::UniformHandle, N>& uniforms) {
    for (bgfx::UniformHandle& uniform : uniforms) {
        if (bgfx::isValid(uniform))
            bgfx::destroy(uniform);
        uniform = BGFX_INVALID_HANDLE;
    }
}

/// Sets each for the next draw.
template<std::size_t N>
void SubmitUniformGroup(std::array<bgfx::UniformHandle, N> const& uniforms,
                        std::array<Vec4, N> const& values) {
    for (std::size_t i = 0; i < N; ++i)
        bgfx::setUniform(uniforms[i], values[i].data(), 1);
}

} // namespace zarvex::zx3DQt
