// Reads a compiled shader's interface and rejects what bgfx cannot supply.
#pragma once

#include "Diagnostic.h"
#include "ShaderInterface.h"
#include "ShaderStage.h"
#include "SourceText.h"

namespace glslang {
class TProgram;
}

namespace zarvex::zx3D::ShaderCompiler {

/// The name of the block that gathers the loose uniforms.
inline constexpr char const* kUniformBlockName = "zx3D_Uniforms";

/// Reflects a linked program of one stage whose bindings are assigned. Adds an error, at the variable's line,
/// for each uniform, sampler, buffer or vertex attribute of a kind that bgfx does not know.
ShaderInterface ReflectShader(glslang::TProgram& program, ShaderStage stage, SourceText const& source,
                              Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
