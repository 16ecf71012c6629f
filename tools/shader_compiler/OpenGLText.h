// From SPIR-V to the text that an OpenGL driver compiles.
#pragma once

#include "ShaderStage.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// GLSL of OpenGLVersion(stage), made of SPIR-V for OpenGL: loose uniforms without locations, and in 3.30
/// without bindings and locations between stages. Its first line is the version and nothing else. Throws
/// std::exception when the shader cannot be said in that version.
std::string MakeOpenGLText(std::vector<std::uint32_t> spirv, ShaderStage stage);

} // namespace zarvex::zx3D::ShaderCompiler
