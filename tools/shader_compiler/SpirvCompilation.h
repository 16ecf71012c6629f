// Compiles Vulkan text to the SPIR-V module that bgfx loads.
#pragma once

#include "Diagnostic.h"
#include "ShaderInterface.h"
#include "ShaderStage.h"
#include "SourceText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

struct SpirvShader {
    std::vector<std::uint32_t> words;
    ShaderInterface interface;
};

/// Compiles for Vulkan 1.0 with loose uniforms gathered in one block, validates the module and reflects its
/// interface. Returns nothing, with errors added, when the source is wrong or asks for what bgfx cannot bind.
std::optional<SpirvShader> CompileToSpirv(SourceText const& vulkanText, ShaderStage stage,
                                          Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
