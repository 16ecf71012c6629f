// Compares what a vertex shader hands on with what a fragment shader takes.
#pragma once

#include "Diagnostic.h"
#include "ShaderInterface.h"
#include "SourceFiles.h"

#include <filesystem>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// Whether the two shaders make a program in bgfx: the same variables, each with the same name, type,
/// interpolation and location. Adds an error at the fragment shader's declaration for each that differs.
bool MatchStages(std::vector<StageVariable> const& vertexOutputs, std::filesystem::path const& vertexShader,
                 std::vector<StageVariable> const& fragmentInputs, SourceFiles const& fragmentFiles,
                 Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
