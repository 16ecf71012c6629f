// The copy, the wait and the row order.
#include "Capture.h"

#include <zx3D/Context.h>

#include "../frame/Logging.h"
#include "SurfaceFormats.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zarvex::zx3DQt::Capture {

namespace {

/// After every view that the application draws into, so that the copy sees the finished picture.
constexpr bgfx::ViewId kBlitView = 254;

constexpr std::uint64_t kNeededCaps = BGFX_CAPS_TEXTURE_BLIT | BGFX_CAPS_TEXTURE_READ_BACK;

int LargestSide() {
    std::uint32_t const ofBgfx = std::numeric_limits<std::uint16_t>::max();
    return static_cast<int>(std::min(bgfx::getCaps()->limits.maxTextureSize, ofBgfx));
}

} // namespace

bool IsSupported() {
    bgfx::Caps const* const caps = bgfx::getCaps();
    return zx3D::Context::IsInitialized() && caps != nullptr &&
           (caps->supported & kNeededCaps) == kNeededCaps;
}

bool IsInRange(QSize size) {
    return !size.isEmpty() && std::max(size.width(), size.height()) <= LargestSide();
}

bool IsPossible(QSize size) {
    if (IsInRange(size))
        return true;
    if (LibraryLog().isWarningEnabled())
        LoggerOf(LibraryLog()).warning()
            << "A picture of" << size.width() << "x" << size.height()
            << "pixels cannot be rendered: each side must be 1 to" << LargestSide();
    return false;
}

bgfx::TextureHandle ColorTextureOf(zx3D::FrameBuffer const& frameBuffer) {
    bgfx::FrameBufferHandle const handle = frameBuffer.GetHandle();
    if (!bgfx::isValid(handle))
        return BGFX_INVALID_HANDLE;
    return bgfx::getTexture(handle, 0);
}

bgfx::TextureHandle CreateReadBackTexture(QSize size) {
    if (!IsInRange(size))
        return BGFX_INVALID_HANDLE;
    return bgfx::createTexture2D(static_cast<std::uint16_t>(size.width()),
                                 static_cast<std::uint16_t>(size.height()), false, 1, kOffscreenColorFormat,
                                 BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK);
}

QImage Read(bgfx::TextureHandle source, bgfx::TextureHandle readBackTexture, QSize size,
            std::function<void()> const& beforeEachFrame) {
    QImage image(size, QImage::Format_RGBA8888);
    if (image.isNull()) {
        LogWarning("picture.no-memory", [size] {
            return QString("there is no memory for a picture of %1 x %2 pixels")
                .arg(size.width())
                .arg(size.height());
        });
        return image;
    }
    bgfx::blit(kBlitView, readBackTexture, 0, 0, source, 0, 0);
    std::uint32_t const readyFrame = bgfx::readTexture(readBackTexture, image.bits(), 0);
    if (readyFrame != 0) {
        do
            beforeEachFrame();
        while (zx3D::Context::SubmitFrame(false) != readyFrame);
    }
    // OpenGL stores the bottom row first.
    if (bgfx::getCaps()->originBottomLeft)
        image.mirror();
    return image;
}

void WarnNotTaken(QSize size) {
    LogWarning("picture.not-taken", [size] {
        return QString("a picture of %1 x %2 pixels could not be taken").arg(size.width()).arg(size.height());
    });
}

} // namespace zarvex::zx3DQt::Capture
