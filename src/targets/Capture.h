// Reading what bgfx has drawn back into an image.
#pragma once

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <QImage>
#include <QSize>

#include <functional>

namespace zarvex::zx3DQt::Capture {

/// Whether the GPU can copy between textures and let the application read them.
bool IsSupported();

/// Whether a picture can have this size, pixels.
bool IsInRange(QSize size);

/// The same, with a warning when it cannot.
bool IsPossible(QSize size);

/// The colours of an unattached frame buffer; invalid while it has no bgfx object.
bgfx::TextureHandle ColorTextureOf(zx3D::FrameBuffer const& frameBuffer);

/// A texture that `Read` copies to and reads from, colour format RGBA8. Invalid where the size is impossible.
bgfx::TextureHandle CreateReadBackTexture(QSize size);

/// Copies a texture to a read-back texture and reads all of that, `size` pixels. Top row first on every
/// backend. Submits frames, `beforeEachFrame` first, until the image is there. Null, with a warning, and
/// without a frame, when there is no memory for it.
QImage Read(
    bgfx::TextureHandle source, bgfx::TextureHandle readBackTexture, QSize size,
    std::function<void()> const& beforeEachFrame = [] {});

/// The warning that a picture of this size, which was asked for, could not be taken.
void WarnNotTaken(QSize size);

} // namespace zarvex::zx3DQt::Capture
