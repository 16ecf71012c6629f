// Capabilities, memory and numbers of samples.
#include "PossibleOptions.h"

#include <algorithm>
#include <bit>

namespace zarvex::zx3D {

namespace {

constexpr std::uint32_t kMostSamples = 16;

/// Drivers need not give more to one texture.
constexpr std::uint64_t kLargestTexture = 1u << 30;

bool IsDepth(bgfx::TextureFormat::Enum format) {
    return format >= bgfx::TextureFormat::D16 && format <= bgfx::TextureFormat::D0S8;
}

bool Has(bgfx::TextureFormat::Enum format, std::uint32_t caps) {
    return (bgfx::getCaps()->formats[format] & caps) == caps;
}

bool IsMultisampled(bgfx::TextureFormat::Enum format) {
    return format == bgfx::TextureFormat::Count || Has(format, BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER_MSAA);
}

std::uint64_t BytesOf(bgfx::TextureFormat::Enum format, SurfaceTextures const& textures) {
    if (format == bgfx::TextureFormat::Count)
        return 0;
    bgfx::TextureInfo info;
    bgfx::calcTextureSize(info, 1, 1, 1, false, false, 1, format);
    return std::uint64_t{textures.width} * textures.height * info.storageSize;
}

} // namespace

bgfx::TextureFormat::Enum PossibleDepthFormat(bgfx::TextureFormat::Enum asked) {
    using Format = bgfx::TextureFormat;
    if (asked == Format::Count || asked == Format::D16)
        return asked;
    auto const isPossible = [](Format::Enum format) {
        return IsDepth(format) && Has(format, BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER);
    };
    for (Format::Enum const format : {asked, Format::D32F, Format::D24S8, Format::D24}) {
        if (isPossible(format))
            return format;
    }
    return Format::D16;
}

PossibleSamples PossibleSampleCount(std::uint32_t asked, SurfaceTextures const& textures) {
    std::uint32_t const inRange = std::clamp(asked, 1u, kMostSamples);
    PossibleSamples possible{std::bit_floor(inRange), "there are 1, 2, 4, 8 or 16"};
    if (possible.count == 1)
        return possible;
    if (!IsMultisampled(textures.colorFormat) || !IsMultisampled(textures.depthFormat))
        return {1, "the GPU has no more in these formats"};
    std::uint64_t const bytes =
        std::max(BytesOf(textures.colorFormat, textures), BytesOf(textures.depthFormat, textures));
    while (possible.count > 1 && bytes * possible.count > kLargestTexture)
        possible = {possible.count / 2, "a texture of more would not fit into 1 GiB"};
    return possible;
}

std::uint64_t SampleFlags(std::uint32_t sampleCount) {
    return std::uint64_t(std::bit_width(sampleCount)) << BGFX_TEXTURE_RT_MSAA_SHIFT;
}

} // namespace zarvex::zx3D
