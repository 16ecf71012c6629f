// The textures, in the best formats that the GPU has.
#include "MultisampledTarget.h"

#include <cstdint>
#include <tuple>

namespace viewer {

namespace {

constexpr std::uint64_t kColorFlags = BGFX_SAMPLER_U_CLAMP | BGFX_SAMPLER_V_CLAMP | BGFX_SAMPLER_POINT;

/// Beyond, pictures get one sample: four would take more memory than graphics cards like to give at once.
constexpr std::int64_t kMostSmoothedPixels = 36'000'000;

bgfx::TextureFormat::Enum DepthFormat() {
    for (auto const format :
         {bgfx::TextureFormat::D32F, bgfx::TextureFormat::D24, bgfx::TextureFormat::D24S8}) {
        constexpr std::uint32_t needed =
            BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER | BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER_MSAA;
        if ((bgfx::getCaps()->formats[format] & needed) == needed)
            return format;
    }
    return bgfx::TextureFormat::D16;
}

bgfx::TextureHandle CreateTexture(QSize size, bgfx::TextureFormat::Enum format, std::uint64_t flags) {
    return bgfx::createTexture2D(static_cast<std::uint16_t>(size.width()),
                                 static_cast<std::uint16_t>(size.height()), false, 1, format, flags);
}

} // namespace

bool MultisampledTarget::Resize(QSize size, bool smoothsEdges) {
    smoothsEdges = smoothsEdges && std::int64_t{size.width()} * size.height() <= kMostSmoothedPixels;
    if (m_frameBuffer && size == m_size && smoothsEdges == m_smoothsEdges)
        return true;
    m_frameBuffer.Reset(); // first: both would not always fit into the GPU's memory
    std::uint64_t const samples = smoothsEdges ? BGFX_TEXTURE_RT_MSAA_X4 : BGFX_TEXTURE_RT;
    zarvex::zx3D::Owned colors(CreateTexture(size, bgfx::TextureFormat::BGRA8, samples | kColorFlags));
    zarvex::zx3D::Owned depth(CreateTexture(size, DepthFormat(), samples | BGFX_TEXTURE_RT_WRITE_ONLY));
    if (!colors || !depth)
        return false;
    bgfx::TextureHandle const textures[] = {colors.Get(), depth.Get()};
    constexpr bool ownsTextures = true;
    m_frameBuffer = zarvex::zx3D::Owned(bgfx::createFrameBuffer(2, textures, ownsTextures));
    if (!m_frameBuffer)
        return false;
    std::ignore = colors.Release();
    std::ignore = depth.Release();
    m_size = size;
    m_smoothsEdges = smoothsEdges;
    return true;
}

} // namespace viewer
