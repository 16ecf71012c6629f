// What the two backends share in driving glslang: stages, limits, and messages turned into diagnostics.
#pragma once

#include "Diagnostic.h"
#include "ShaderStage.h"
#include "SourceText.h"

#include <glslang/Public/ShaderLang.h>

namespace zarvex::zx3D::ShaderCompiler {

/// Keeps glslang initialised while it lives. One at a time, around every compilation.
class GlslangProcess {
public:
    GlslangProcess() { glslang::InitializeProcess(); }
    ~GlslangProcess() { glslang::FinalizeProcess(); }
    GlslangProcess(GlslangProcess const&) = delete;
    GlslangProcess& operator=(GlslangProcess const&) = delete;
};

EShLanguage ToGlslangStage(ShaderStage stage);

/// Parses the text and links it as a program of one stage. Whatever glslang has to say goes to the
/// diagnostics, at the authored lines; the result is whether there was no error.
bool ParseAndLink(glslang::TShader& shader, glslang::TProgram& program, SourceText const& source, int version,
                  EShMessages messages, Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
