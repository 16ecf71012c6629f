// Handles of fonts and text buffers.
#pragma once

#include <cstdint>
#include <limits>

namespace zarvex::zx3D {

/// Refers to a font. A 16-bit value in the manner of bgfx's handles; 65535 is the invalid one.
struct FontHandle {
    std::uint16_t idx = std::numeric_limits<std::uint16_t>::max(); ///< the value
};

/// Refers to a text buffer. A 16-bit value in the manner of bgfx's handles; 65535 is the invalid one.
struct TextBufferHandle {
    std::uint16_t idx = std::numeric_limits<std::uint16_t>::max(); ///< the value
};

} // namespace zarvex::zx3D
