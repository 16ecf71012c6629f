// What a picture of a window or widget shall be like.
#pragma once

#include <QSize>

#include <cstdint>
#include <optional>

namespace zarvex::zx3DQt {

/// Of a picture that `RenderPicture` takes. A plain value:
///
///     QImage const picture = widget.RenderPicture({.size = QSize(3840, 2160), .pixelRatio = 2.0});
struct PictureOptions {
    /// Pixels. Each side is 1 to the GPU's largest texture.
    QSize size = {};

    /// Pixels of the picture per device-independent pixel, more than 0. `GetPixelRatio()` of the window or
    /// widget follows it while the picture is drawn: widths and fonts that it is multiplied into have their
    /// size on the screen in a picture that is printed in 96 times it dots per inch. Absent: as on the
    /// screen.
    std::optional<double> pixelRatio = {};

    /// Samples for each pixel, as with `SetSampleCount`. Absent: as many as the window or widget has.
    std::optional<std::uint32_t> sampleCount = {};

    /// False: every pixel is opaque, in the colour that a window shows, whatever was blended and whatever
    /// alpha the ground has. True: with its alpha, in colours that are multiplied by it: clear with
    /// 0x00000000 to lay what is drawn over something else. What is blended by alpha is right in it; where it
    /// is not blended, its own alpha replaces what was there.
    bool hasAlpha = false;
};

} // namespace zarvex::zx3DQt
