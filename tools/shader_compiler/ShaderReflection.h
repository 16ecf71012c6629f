// Reads a compiled shader's interface and rejects what bgfx cannot supply.
#pragma once

#include "Diagnostic.h"
#include "ShaderInterface.h"
#include "ShaderStage.h"
#include "SourceFiles.h"

#include <cstdint>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// Reflects SPIR-V for Vulkan with its combined samplers. Adds an error, at the variable's line, for each
/// uniform, sampler, buffer or vertex attribute of a kind that bgfx does not know.
ShaderInterface ReflectShader(std::vector<std::uint32_t> const& spirv, ShaderStage stage,
                              SourceFiles const& files, Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
