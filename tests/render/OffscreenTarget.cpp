// Reading a frame buffer back: a blit into a texture that the processor may read, after all drawing.
#include "OffscreenTarget.h"

#include <bgfx/bgfx.h>

namespace zarvex::testing {

OffscreenTarget::OffscreenTarget(QSize size, zx3D::FrameBufferOptions const& options)
    : m_frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, options) {
    m_frameBuffer.RequestResize(static_cast<std::uint16_t>(size.width()),
                                static_cast<std::uint16_t>(size.height()));
}

OffscreenTarget::~OffscreenTarget() {
    m_frameBuffer.Destroy();
}

QImage ReadBack(zx3D::FrameBuffer const& frameBuffer) {
    std::uint16_t const width = frameBuffer.GetWidth();
    std::uint16_t const height = frameBuffer.GetHeight();
    bgfx::Caps const& caps = *bgfx::getCaps();
    auto const lastView = static_cast<bgfx::ViewId>(caps.limits.maxViews - 1);
    bgfx::TextureHandle const copy = bgfx::createTexture2D(
        width, height, false, 1, bgfx::TextureFormat::RGBA8, BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK);
    bgfx::blit(lastView, copy, 0, 0, bgfx::getTexture(frameBuffer.GetHandle()));
    QImage image(width, height, QImage::Format_RGBA8888);
    std::uint32_t const readyFrame = bgfx::readTexture(copy, image.bits());
    while (bgfx::frame() < readyFrame) {
    }
    bgfx::destroy(copy);
    return caps.originBottomLeft ? image.mirrored() : image;
}

} // namespace zarvex::testing
