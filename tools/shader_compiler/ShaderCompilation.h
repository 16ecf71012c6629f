// One authored shader in, bgfx's containers for both backends out.
#pragma once

#include "Diagnostic.h"
#include "ShaderInterface.h"
#include "ShaderStage.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

struct CompilationOptions {
    ShaderStage stage = ShaderStage::Vertex;
    std::filesystem::path source;
    std::vector<std::filesystem::path> includeDirectories;
    /// For a fragment shader: vertex shaders whose outputs its inputs must match.
    std::vector<std::filesystem::path> vertexShaders;
};

struct CompiledShader {
    std::vector<std::uint8_t> openGL;
    std::vector<std::uint8_t> vulkan;
    ShaderInterface interface;
    /// Every file that the result was made from.
    std::vector<std::filesystem::path> files;
};

/// Compiles for OpenGL and Vulkan. Returns nothing, with errors added, when the shader is wrong for either.
std::optional<CompiledShader> CompileShader(CompilationOptions const& options, Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
