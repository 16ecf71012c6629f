// Textures and samplers apart, as bgfx binds them on Vulkan.
#pragma once

#include <cstdint>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// The module with every combined sampler split into a texture of the same binding and a sampler
/// kSamplerBindingOffset bindings after it, which are joined again wherever the shader loads the sampler.
std::vector<std::uint32_t> SeparateSamplers(std::vector<std::uint32_t> const& module);

} // namespace zarvex::zx3D::ShaderCompiler
