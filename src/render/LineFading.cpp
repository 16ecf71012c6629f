// Two programs, two uniforms.
#include "LineFading.h"

#include "../frame/Logging.h"

#include <zx3D/ProgramFactory.h>

#include <QString>

namespace zarvex::zx3DQt {

bool LineFading::Start() {
    if (m_isReady)
        return true;
    Create();
    if (m_isReady)
        m_missing.Clear();
    else
        m_missing.Raise([] {
            LogWarning("lines.not-fading", [] {
                return QString("Lines are drawn without fading: bgfx has no uniforms left for it");
            });
        });
    return m_isReady;
}

void LineFading::Create() {
    m_place = zx3D::Owned(bgfx::createUniform("u_fadePlace", bgfx::UniformType::Mat4));
    m_range = zx3D::Owned(bgfx::createUniform("u_fadeRange", bgfx::UniformType::Vec4));
    if (!m_place || !m_range)
        return;
    constexpr bgfx::ProgramHandle none = BGFX_INVALID_HANDLE;
    zx3D::ProgramFactory& factory = zx3D::ProgramFactory::Get();
    m_thinProgram = factory.CreateProgram("vs_line_fading", "fs_line_fading").value_or(none);
    m_wideProgram =
        factory.CreateProgram("vs_rectangle_sprite_fading", "fs_rectangle_sprite_fading").value_or(none);
    m_isReady = bgfx::isValid(m_thinProgram) && bgfx::isValid(m_wideProgram);
}

void LineFading::SetUniforms(FadeUniforms const& uniforms) const {
    bgfx::setUniform(m_place.Get(), uniforms.place.constData());
    float const range[] = {uniforms.range.begin, uniforms.range.perUnit, 0.0f, 0.0f};
    bgfx::setUniform(m_range.Get(), range);
}

} // namespace zarvex::zx3DQt
