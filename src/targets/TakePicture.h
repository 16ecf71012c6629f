// Having a window or widget draw a picture instead.
#pragma once

#include <zx3DQt/PictureOptions.h>

#include <zx3D/FrameBuffer.h>

#include <QImage>
#include <QRect>
#include <QSize>

#include <functional>
#include <optional>

namespace zarvex::zx3DQt {

/// Where a window or widget draws: members of it.
struct DrawTarget {
    zx3D::FrameBuffer& frameBuffer;
    QRect& viewport;
    zx3D::FrameBufferOptions const& options; ///< of its own frame buffers
    std::optional<double>& pictureRatio;     ///< the pixel ratio of the picture that it draws now
};

/// Has `draw` draw into textures of this size, in pixels, in place of the target's frame buffer, and reads
/// their colours. Null, with a warning, when the GPU or the memory refuses what it takes. Afterwards the
/// target is as before, also when `draw` throws; the options that `draw` gave the target hold.
QImage RenderToTextures(DrawTarget const& target, QSize size, zx3D::FrameBufferOptions const& options,
                        std::function<void()> const& draw);

/// The same with the options that an application gave. `ownRatio` is the target's pixel ratio on the screen.
/// Null, with a warning, also when there can be no such picture.
QImage TakePicture(DrawTarget const& target, PictureOptions const& options, double ownRatio,
                   std::function<void()> const& draw);

/// False, with a warning, while the target draws a picture that `TakePicture` takes.
bool CanDrawPicture(DrawTarget const& target);

} // namespace zarvex::zx3DQt
