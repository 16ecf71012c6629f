// What every scene needs that is drawn by hand: programs and uniforms, looked up once.
#pragma once

#include <zx3D/ProgramFactory.h>

#include <bgfx/bgfx.h>

#include <string_view>

namespace zarvex::benchmarks {

/// The same programs as the library's. Throws `std::bad_optional_access` when there is none.
inline bgfx::ProgramHandle Program(std::string_view vertexShader, std::string_view fragmentShader) {
    return zx3D::ProgramFactory::Get().CreateProgram(vertexShader, fragmentShader).value();
}
inline bgfx::ProgramHandle ComputeProgram(std::string_view computeShader) {
    return zx3D::ProgramFactory::Get().CreateProgram(computeShader).value();
}

/// A uniform of four floats.
class Vec4Uniform {
public:
    explicit Vec4Uniform(char const* name) : m_handle(bgfx::createUniform(name, bgfx::UniformType::Vec4)) {}
    ~Vec4Uniform() { bgfx::destroy(m_handle); }

    Vec4Uniform(Vec4Uniform const&) = delete;
    Vec4Uniform& operator=(Vec4Uniform const&) = delete;

    /// For the next submission.
    void Set(float x, float y, float z = 0.0f, float w = 0.0f) const {
        float const value[] = {x, y, z, w};
        bgfx::setUniform(m_handle, value);
    }

private:
    bgfx::UniformHandle m_handle;
};

} // namespace zarvex::benchmarks
