// Turns authored GLSL into the text that becomes SPIR-V for bgfx's Vulkan backend.
#pragma once

#include "SourceText.h"

namespace zarvex::zx3D::ShaderCompiler {

/// Splits every combined sampler into a texture and a sampler of the same binding, as bgfx binds them, and
/// joins the two again wherever the shader uses the name. That has to be in a call of a texture function:
/// samplers cannot be passed to the shader's own functions. Samplers of types that bgfx does not bind are
/// left alone; reflection rejects them. Line breaks stay.
SourceText MakeVulkanText(SourceText const& source);

/// The name of the sampler that belongs to the texture `name` after the split.
std::string SeparateSamplerName(std::string_view name);

} // namespace zarvex::zx3D::ShaderCompiler
