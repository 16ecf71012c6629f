// Exchanging what is drawn into, and what becomes of the alpha.
#include "TakePicture.h"

#include <zx3D/Context.h>
#include <zx3D/Owned.h>

#include "../frame/Logging.h"
#include "Capture.h"
#include "FollowSize.h"
#include "SurfaceFormats.h"

#include <QScopeGuard>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zarvex::zx3DQt {

namespace {

bool IsSupported() {
    if (Capture::IsSupported())
        return true;
    LogWarning("picture.unsupported", [] {
        return QString("there is no picture where the library does not run, or the GPU cannot copy textures "
                       "and read them back");
    });
    return false;
}

bool IsRatio(double ratio) {
    if (std::isfinite(ratio) && ratio > 0.0)
        return true;
    LogWarning("picture.no-ratio", [ratio] {
        return QString("a picture cannot have a pixel ratio of %1: it must be more than 0").arg(ratio);
    });
    return false;
}

zx3D::FrameBufferOptions FrameBufferOptionsFor(PictureOptions const& picture,
                                               zx3D::FrameBufferOptions options) {
    options.sampleCount = picture.sampleCount.value_or(options.sampleCount);
    options.blendsAlpha = picture.hasAlpha;
    return options;
}

/// Calls `change` with the four bytes of each pixel.
template<typename Change>
void ChangePixels(QImage& rgba, Change change) {
    for (int y = 0; y < rgba.height(); ++y) {
        uchar* const line = rgba.scanLine(y);
        for (uchar* pixel = line; pixel != line + 4 * static_cast<std::ptrdiff_t>(rgba.width()); pixel += 4)
            change(pixel);
    }
}

/// Not by a conversion of Qt's, which would take the colours of what is transparent away.
void MakeOpaque(QImage& rgba) {
    ChangePixels(rgba, [](uchar* pixel) { pixel[3] = 255; });
    rgba.reinterpretAsFormat(QImage::Format_RGBX8888);
}

/// What is not blended may have left colours beyond their alpha, which Qt does not expect.
void MakePremultiplied(QImage& rgba) {
    ChangePixels(rgba, [](uchar* pixel) {
        for (int channel = 0; channel < 3; ++channel)
            pixel[channel] = std::min(pixel[channel], pixel[3]);
    });
    rgba.reinterpretAsFormat(QImage::Format_RGBA8888_Premultiplied);
}

} // namespace

QImage RenderToTextures(DrawTarget const& target, QSize size, zx3D::FrameBufferOptions const& options,
                        std::function<void()> const& draw) {
    zx3D::FrameBuffer const savedFrameBuffer = target.frameBuffer;
    QRect const savedViewport = target.viewport;
    zx3D::FrameBufferOptions const savedOptions = target.options;

    zx3D::FrameBuffer textures(nullptr, kOffscreenColorFormat, options);
    RequestResize(textures, size);
    target.frameBuffer = textures;
    target.frameBuffer.SubmitOnDemand();
    target.viewport = QRect(QPoint(0, 0), size);
    zx3D::Owned<bgfx::TextureHandle> readBackTexture(Capture::CreateReadBackTexture(size));
    auto const restore = qScopeGuard([&] { // also when `draw` throws
        readBackTexture.Reset();
        textures.Destroy();
        target.frameBuffer = savedFrameBuffer;
        if (target.options != savedOptions) // by `draw`
            target.frameBuffer.SetOptions(target.options);
        target.viewport = savedViewport;
    });

    draw();
    bgfx::TextureHandle const source = Capture::ColorTextureOf(target.frameBuffer);
    QImage picture;
    if (bgfx::isValid(source) && readBackTexture)
        picture = Capture::Read(source, readBackTexture.Get(), size);
    if (picture.isNull())
        Capture::WarnNotTaken(size);
    return picture;
}

QImage TakePicture(DrawTarget const& target, PictureOptions const& options, double ownRatio,
                   std::function<void()> const& draw) {
    double const ratio = options.pixelRatio.value_or(ownRatio);
    if (!IsSupported() || !CanDrawPicture(target) || !Capture::IsPossible(options.size) || !IsRatio(ratio))
        return {};
    QScopedValueRollback const follow(target.pictureRatio, std::optional(ratio));
    // A frame of its own frees the textures, where none may follow for long, and takes away what is left to
    // draw after an exception.
    auto const finish = qScopeGuard([] { zx3D::Context::SubmitFrame(); });
    QImage picture =
        RenderToTextures(target, options.size, FrameBufferOptionsFor(options, target.options), draw);
    if (picture.isNull())
        return picture;
    if (options.hasAlpha)
        MakePremultiplied(picture);
    else
        MakeOpaque(picture);
    picture.setDevicePixelRatio(ratio);
    return picture;
}

bool CanDrawPicture(DrawTarget const& target) {
    if (!target.pictureRatio)
        return true;
    LogWarning("picture.in-picture", [] {
        return QString("a window or widget that draws a picture was asked for another one meanwhile");
    });
    return false;
}

} // namespace zarvex::zx3DQt
