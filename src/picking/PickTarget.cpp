// Textures of floats.
#include "PickTarget.h"

#include <zx3D/Context.h>

#include <algorithm>
#include <cstdint>

namespace zarvex::zx3DQt {

namespace {

/// Whole numbers up to 2^24 exactly, and coordinates as they are.
constexpr bgfx::TextureFormat::Enum kFormat = bgfx::TextureFormat::RGBA32F;
constexpr std::size_t kFloats = 4;

constexpr std::uint64_t kSampling = BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP;

zx3D::Owned<bgfx::TextureHandle> CreateTexture(QSize size, bgfx::TextureFormat::Enum format,
                                               std::uint64_t flags) {
    return zx3D::Owned(bgfx::createTexture2D(static_cast<std::uint16_t>(size.width()),
                                             static_cast<std::uint16_t>(size.height()), false, 1, format,
                                             flags));
}

/// The most exact one that the GPU draws with.
bgfx::TextureFormat::Enum ChooseDepthFormat() {
    for (auto const format : {bgfx::TextureFormat::D32F, bgfx::TextureFormat::D24S8}) {
        if (bgfx::isTextureValid(0, false, 1, format, BGFX_TEXTURE_RT_WRITE_ONLY))
            return format;
    }
    return bgfx::TextureFormat::D16;
}

} // namespace

bool PickTarget::IsSupported() {
    constexpr std::uint64_t needed = BGFX_CAPS_TEXTURE_BLIT | BGFX_CAPS_TEXTURE_READ_BACK;
    if (!zx3D::Context::IsInitialized() || bgfx::getRendererType() == bgfx::RendererType::Noop)
        return false;
    bgfx::Caps const& caps = *bgfx::getCaps();
    return (caps.supported & needed) == needed && caps.limits.maxFBAttachments >= 2 &&
           (caps.formats[kFormat] & BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER) != 0;
}

PickTarget::PickTarget(QSize size) : m_size(size) {
    for (Texture& texture : m_textures) {
        texture.drawn = CreateTexture(size, kFormat, BGFX_TEXTURE_RT | kSampling);
        texture.read = CreateTexture(size, kFormat, BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK);
    }
    m_depth = CreateTexture(size, ChooseDepthFormat(), BGFX_TEXTURE_RT_WRITE_ONLY);
    m_number = zx3D::Owned(bgfx::createUniform("u_pickDraw", bgfx::UniformType::Vec4, 1));
    bool const hasTextures = std::all_of(m_textures.begin(), m_textures.end(), [](Texture const& texture) {
        return texture.drawn && texture.read;
    });
    if (!hasTextures || !m_depth || !m_number)
        return;
    bgfx::TextureHandle const attachments[] = {m_textures[0].drawn.Get(), m_textures[1].drawn.Get(),
                                               m_depth.Get()};
    m_frameBuffer = zx3D::Owned(bgfx::createFrameBuffer(3, attachments));
}

std::uint32_t PickTarget::Read(bgfx::ViewId copyView, std::array<PickPixels, 2>& pixels) const {
    std::uint32_t readyFrame = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i].resize(kFloats * static_cast<std::size_t>(m_size.width()) *
                         static_cast<std::size_t>(m_size.height()));
        bgfx::blit(copyView, m_textures[i].read.Get(), 0, 0, m_textures[i].drawn.Get());
        readyFrame = bgfx::readTexture(m_textures[i].read.Get(), pixels[i].data());
    }
    // bgfx waits for the frame after the next; but the render thread writes at the end of this one.
    return readyFrame - 2;
}

void PickTarget::OrderRows(std::array<PickPixels, 2>& pixels) const {
    if (!bgfx::getCaps()->originBottomLeft)
        return;
    auto const rowLength = static_cast<std::ptrdiff_t>(kFloats) * m_size.width();
    for (PickPixels& image : pixels) {
        for (std::ptrdiff_t top = 0, bottom = m_size.height() - 1; top < bottom; ++top, --bottom)
            std::swap_ranges(image.begin() + top * rowLength, image.begin() + (top + 1) * rowLength,
                             image.begin() + bottom * rowLength);
    }
}

} // namespace zarvex::zx3DQt
