// Checks OpenGL text before a driver ever sees it.
#pragma once

#include "Diagnostic.h"
#include "ShaderStage.h"
#include "SourceText.h"

namespace zarvex::zx3D::ShaderCompiler {

/// Whether the text is a correct shader of the GLSL version that it states; says why when it is not.
bool CheckOpenGLText(SourceText const& text, ShaderStage stage, Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
