// Packing of a colour into a 32-bit word.
#include <zx3D/Color.h>

namespace zarvex::zx3D {

namespace {

std::uint32_t ToByte(float channel) {
    // Written so that a NaN fails the first comparison.
    if (!(channel > 0.0f))
        return 0;
    return channel < 1.0f ? static_cast<std::uint32_t>(channel * 255.0f + 0.5f) : 255;
}

} // namespace

std::uint32_t Color::ToRGBA() const {
    return ToByte(red) << 24 | ToByte(green) << 16 | ToByte(blue) << 8 | ToByte(alpha);
}

} // namespace zarvex::zx3D
