// From GLSL to SPIR-V, by glslang.
#pragma once

#include "Diagnostic.h"
#include "ShaderStage.h"
#include "SourceFiles.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// SPIR-V for Vulkan 1.0 has its loose uniforms in a block and its bindings where bgfx puts them; SPIR-V for
/// OpenGL keeps loose uniforms, and becomes text again.
enum class Target { Vulkan, OpenGL };

/// The name of the block that gathers the loose uniforms for Vulkan.
inline constexpr char const* kUniformBlockName = "zx3D_Uniforms";

/// The GLSL version of a stage's OpenGL text. Graphics shaders run wherever OpenGL 3.3 does; compute shaders
/// are an addition of 4.3.
int OpenGLVersion(ShaderStage stage);

/// Keeps glslang initialised while it lives. One at a time, around every compilation.
class GlslangProcess {
public:
    GlslangProcess();
    ~GlslangProcess();
    GlslangProcess(GlslangProcess const&) = delete;
    GlslangProcess& operator=(GlslangProcess const&) = delete;
};

/// Compiles a file and what it includes. What glslang has to say goes to the diagnostics, at the authored
/// lines. Returns nothing, with errors added, when the shader is wrong.
std::optional<std::vector<std::uint32_t>> CompileToSpirv(std::filesystem::path const& path, ShaderStage stage,
                                                         Target target, SourceFiles& files,
                                                         Diagnostics& diagnostics);

/// Whether OpenGL text is a correct shader of the version that it states, read as a driver would. It is
/// called `name` in messages.
bool CheckOpenGLText(std::string const& text, std::string const& name, ShaderStage stage,
                     Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
