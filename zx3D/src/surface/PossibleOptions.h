// What the GPU has of the options that a frame buffer is asked to have.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3D {

/// The textures of a frame buffer.
struct SurfaceTextures {
    std::uint16_t width;
    std::uint16_t height;
    bgfx::TextureFormat::Enum colorFormat;
    bgfx::TextureFormat::Enum depthFormat;
};

struct PossibleSamples {
    std::uint32_t count;
    char const* reason; ///< why there are not as many as asked for
};

/// The depth format that is asked for, or where the GPU cannot draw with it another.
/// `bgfx::TextureFormat::Count` stays.
bgfx::TextureFormat::Enum PossibleDepthFormat(bgfx::TextureFormat::Enum asked);

/// As many samples as are asked for, or the most below.
PossibleSamples PossibleSampleCount(std::uint32_t asked, SurfaceTextures const& textures);

/// What makes a texture one that is drawn into with so many samples, 1, 2, 4, 8 or 16.
std::uint64_t SampleFlags(std::uint32_t sampleCount);

} // namespace zarvex::zx3D
