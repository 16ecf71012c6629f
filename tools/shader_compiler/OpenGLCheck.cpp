// Parses OpenGL text without a target environment, as an OpenGL driver would read it.
#include "OpenGLCheck.h"

#include "GlslangFrontEnd.h"
#include "OpenGLText.h"

namespace zarvex::zx3D::ShaderCompiler {

bool CheckOpenGLText(SourceText const& text, ShaderStage stage, Diagnostics& diagnostics) {
    glslang::TShader shader(ToGlslangStage(stage));
    glslang::TProgram program;
    return ParseAndLink(shader, program, text, OpenGLVersion(stage), EShMsgDefault, diagnostics);
}

} // namespace zarvex::zx3D::ShaderCompiler
