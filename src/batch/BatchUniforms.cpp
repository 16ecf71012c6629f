// Their names, and their life.
#include "BatchUniforms.h"

namespace zarvex::zx3DQt {

namespace {

struct Named {
    char const* name;
    bgfx::UniformType::Enum type;
    std::uint16_t count = 1;
};

/// By `BatchUniform`.
constexpr Named kUniforms[] = {
    {"s_batchTexels", bgfx::UniformType::Sampler},    {"s_colorMap", bgfx::UniformType::Sampler},
    {"u_batchRange", bgfx::UniformType::Vec4},        {"u_pointSize", bgfx::UniformType::Vec4},
    {"u_pointRange", bgfx::UniformType::Vec4},        {"u_lineSize", bgfx::UniformType::Vec4},
    {"u_lineShape", bgfx::UniformType::Vec4},         {"u_lineStipple", bgfx::UniformType::Vec4},
    {"u_lineRun", bgfx::UniformType::Vec4},           {"s_lineMeasures", bgfx::UniformType::Sampler},
    {"s_lineCarries", bgfx::UniformType::Sampler},    {"s_meshTexture", bgfx::UniformType::Sampler},
    {"u_meshVertex", bgfx::UniformType::Vec4, 5},     {"u_meshSurface", bgfx::UniformType::Vec4, 5},
    {"u_meshLights", bgfx::UniformType::Vec4, 3 * 8}, {"u_highlight", bgfx::UniformType::Vec4}};
static_assert(std::size(kUniforms) == static_cast<std::size_t>(BatchUniform::Count));

} // namespace

BatchUniforms& BatchUniforms::Get() {
    // Never destroyed: the context may be shut down at the very end of the process.
    static BatchUniforms& uniforms = *new BatchUniforms;
    return uniforms;
}

bool BatchUniforms::Create() {
    for (std::size_t i = 0; i < m_uniforms.size(); ++i) {
        if (!m_uniforms[i])
            m_uniforms[i] =
                zx3D::Owned(bgfx::createUniform(kUniforms[i].name, kUniforms[i].type, kUniforms[i].count));
        if (!m_uniforms[i])
            return false;
    }
    return true;
}

void BatchUniforms::OnContextStopping() {
    for (zx3D::Owned<bgfx::UniformHandle>& uniform : m_uniforms)
        uniform.Reset();
}

} // namespace zarvex::zx3DQt
