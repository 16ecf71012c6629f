// Creating, destroying and setting uniforms, and what is said where there are none.
#include "UniformGroup.h"

#include "../frame/Logging.h"

#include <QString>

#include <algorithm>
#include <set>

namespace zarvex::zx3DQt {

namespace {

/// Nobody knows yet whether bgfx runs.
bool IsBeforeFirstContext() {
    return zx3D::ContextRun().IsCurrent();
}

/// The groups of which was said that they are missing. By name: materials and lights that are made anew in
/// each frame are one cause.
std::set<std::string>& MissingGroups() {
    static std::set<std::string> groups;
    return groups;
}

void WarnOfMissingGroup(char const* message, std::string const& group, char const* problem) {
    if (MissingGroups().insert(group).second)
        LogWarning(message, [&] {
            return QString("Uniforms of \"%1\" are missing: %2")
                .arg(QString::fromStdString(group), QString(problem));
        });
}

} // namespace

zx3D::ContextRun CreateUniformGroup(std::string const& name, std::span<char const* const> suffixes,
                                    std::span<bgfx::UniformHandle> uniforms) {
    if (!zx3D::Context::IsInitialized() && !IsBeforeFirstContext()) {
        WarnOfMissingGroup("uniform.no-context", name, "the library does not run");
        return {};
    }
    for (std::size_t i = 0; i < uniforms.size(); ++i)
        uniforms[i] = bgfx::createUniform((name + suffixes[i]).c_str(), bgfx::UniformType::Vec4, 1);
    if (std::ranges::all_of(uniforms, [](bgfx::UniformHandle uniform) { return bgfx::isValid(uniform); }))
        MissingGroups().erase(name);
    else
        WarnOfMissingGroup("uniform.not-created", name,
                           "bgfx has no more of them, or the name is no identifier");
    return zx3D::ContextRun::Current();
}

void DestroyUniformGroup(zx3D::ContextRun run, std::span<bgfx::UniformHandle> uniforms) {
    for (bgfx::UniformHandle& uniform : uniforms) {
        if (bgfx::isValid(uniform) && run.IsCurrent())
            bgfx::destroy(uniform);
        uniform = BGFX_INVALID_HANDLE;
    }
}

void SubmitUniformGroup(std::string const& name, zx3D::ContextRun run,
                        std::span<bgfx::UniformHandle const> uniforms, std::span<Vec4 const> values) {
    bool const isRunCurrent = run.IsCurrent();
    bool const isUnchecked = IsBeforeFirstContext();
    for (std::size_t i = 0; i < uniforms.size(); ++i) {
        if (isUnchecked || (isRunCurrent && bgfx::isValid(uniforms[i])))
            bgfx::setUniform(uniforms[i], values[i].data(), 1);
        else
            WarnOfMissingGroup("uniform.missing", name,
                               "CreateUniforms was not called while the library ran");
    }
}

} // namespace zarvex::zx3DQt
