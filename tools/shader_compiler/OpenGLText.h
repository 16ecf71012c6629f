// Turns authored GLSL into the text that an OpenGL driver compiles.
#pragma once

#include "ShaderStage.h"
#include "SourceText.h"

namespace zarvex::zx3D::ShaderCompiler {

/// The GLSL version of a stage's OpenGL text. Graphics shaders run wherever OpenGL 3.3 does; compute shaders
/// are an addition of 4.3.
int OpenGLVersion(ShaderStage stage);

/// Puts the version line in front and takes away what that version does not know: locations of variables
/// between the stages, and bindings. Locations of vertex attributes and of fragment outputs stay. Comments
/// go, line breaks stay.
SourceText MakeOpenGLText(SourceText const& source, ShaderStage stage);

} // namespace zarvex::zx3D::ShaderCompiler
