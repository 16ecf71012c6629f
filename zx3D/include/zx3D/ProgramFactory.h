// Shader programs by name.
#pragma once

#include <zx3D/ContextListener.h>
#include <zx3D/EmbeddedShader.h>
#include <zx3D/Message.h>
#include <zx3D/Owned.h>
#include <zx3D/zx3DExport.h>

#include <bgfx/bgfx.h>

#include <map>
#include <optional>
#include <string_view>

namespace zarvex::zx3D {

/// Hands out programs made of the shaders that are built into the library, by name, and of those that are
/// built into the application, in the form that the running renderer takes.
///
/// Lifetime: programs are created on first request, kept for the life of the context and owned by the
/// factory; do not destroy them. Thread: the one that calls bgfx's API, with the context initialised.
/// Errors: an empty result, and a message that names the shader to the context's callback.
class ZX3D_EXPORT ProgramFactory final : private ContextListener {
public:
    ProgramFactory(ProgramFactory const&) = delete;
    ProgramFactory& operator=(ProgramFactory const&) = delete;

    /// The process's one factory.
    static ProgramFactory& Get();

    /// A graphics program. Empty when a shader of that name does not exist, does not exist for the running
    /// renderer, or the two do not fit together; and while bgfx has fewer uniforms left than they name.
    std::optional<bgfx::ProgramHandle> CreateProgram(std::string_view vertexShaderName,
                                                     std::string_view fragmentShaderName);

    /// A compute program. On a renderer without compute shaders (`BGFX_CAPS_COMPUTE`) the result holds the
    /// invalid handle: there is nothing to dispatch, and nothing is wrong with the shader.
    std::optional<bgfx::ProgramHandle> CreateProgram(std::string_view computeShaderName);

    /// A graphics program of shaders that `zx3dqt_add_shaders` embedded in the application. The same two
    /// shaders give the same program. They must live until the context is shut down.
    std::optional<bgfx::ProgramHandle> CreateProgram(EmbeddedShader const& vertexShader,
                                                     EmbeddedShader const& fragmentShader);

    /// A compute program of such a shader; the invalid handle on a renderer without compute shaders, as
    /// above.
    std::optional<bgfx::ProgramHandle> CreateProgram(EmbeddedShader const& computeShader);

private:
    ProgramFactory() = default;
    ~ProgramFactory() = default;

    void OnContextStopping() override {
        m_programs.clear();
        m_noUniforms.Clear();
    }

    /// A vertex and a fragment shader, or a compute shader and none; in the order of their names.
    struct Shaders {
        EmbeddedShader const* first;
        EmbeddedShader const* second;

        bool operator<(Shaders const& other) const;
    };

    std::optional<bgfx::ProgramHandle> FindOrCreate(Shaders shaders);

    std::map<Shaders, Owned<bgfx::ProgramHandle>> m_programs;
    OncePerCause m_noUniforms;
};

} // namespace zarvex::zx3D
