// Frame buffer and viewport follow the size of a window or widget.
#pragma once

#include "../frame/Logging.h"
#include "PixelRatio.h"

#include <zx3D/FrameBuffer.h>

#include <QRect>

#include <cstdint>
#include <limits>

namespace zarvex::zx3DQt {

/// The side of a frame buffer for so many pixels; 0, which collapses it, when they are more than one can
/// have.
inline std::uint16_t ToSide(int pixels) {
    bool const fits = pixels >= 0 && pixels <= std::numeric_limits<std::uint16_t>::max();
    return fits ? static_cast<std::uint16_t>(pixels) : std::uint16_t{0};
}

/// What a frame buffer has of a size.
inline QSize SizeFor(QSize pixels) {
    return {ToSide(pixels.width()), ToSide(pixels.height())};
}

inline void RequestResize(zx3D::FrameBuffer& frameBuffer, QSize pixels) {
    frameBuffer.RequestResize(ToSide(pixels.width()), ToSide(pixels.height()));
}

inline QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
    return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
}

/// Makes the viewport all of the surface, a QWindow or QWidget, in physical pixels, and requests that size
/// for the frame buffer. Logs its steps with the surface in Qt's form. False when nothing was done, since the
/// target is not ready.
template<typename Surface>
bool FollowSize(Surface const& surface, bool isReady, zx3D::FrameBuffer& frameBuffer, QRect& viewport) {
    auto const log = [&surface, handle = frameBuffer.GetHandle().idx](char const* step) {
        LogDebug(step, &surface, "]", "[handle: ", handle, "]");
    };
    if (!isReady) {
        log("Skipping early framebuffer update (not initialized yet) [this:");
        return false;
    }
    if (surface.size().width() == 0 || surface.size().height() == 0)
        log("Collapsing framebuffer [this:");
    log("Updating framebuffer [this:");
    viewport = QRect(QPoint(0, 0), ToPhysical(surface.size(), surface.devicePixelRatio()));
    RequestResize(frameBuffer, viewport.size());
    return true;
}

} // namespace zarvex::zx3DQt
