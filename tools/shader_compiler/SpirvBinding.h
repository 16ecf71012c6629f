// Where bgfx's Vulkan backend binds things: descriptor set 0, and the numbers below.
#pragma once

#include "ShaderStage.h"

#include <cstdint>

namespace zarvex::zx3D::ShaderCompiler {

/// Textures, buffers and images of bgfx stage n are at binding n + 2, after the two uniform blocks.
inline constexpr std::uint16_t kResourceBindingShift = 2;
/// The sampler of a texture is this many bindings after it.
inline constexpr std::uint16_t kSamplerBindingOffset = 16;
/// bgfx has this many texture, buffer and image stages.
inline constexpr int kStageCount = 16;

/// The binding of a stage's uniform block; the two graphics stages of a program share one descriptor set.
inline constexpr std::uint32_t UniformBlockBinding(ShaderStage stage) {
    return stage == ShaderStage::Fragment ? 1 : 0;
}

} // namespace zarvex::zx3D::ShaderCompiler
