// The colour that vertices, lines and text carry.
#pragma once

#include <zx3D/zx3DExport.h>

#include <cstdint>

namespace zarvex::zx3D {

/// A colour of four 32-bit floats, each in 0 to 1; not premultiplied. Default: all zero (transparent black).
struct Color {
    float red = 0.0f;   ///< 0 to 1
    float green = 0.0f; ///< 0 to 1
    float blue = 0.0f;  ///< 0 to 1
    float alpha = 0.0f; ///< 0 to 1; 0 is transparent

    /// The colour as a 32-bit word with red in the most significant byte and alpha in the least
    /// (0xRRGGBBAA, as bgfx's clear colours). Channels are clamped to 0 to 1 and rounded to the nearest of
    /// 256 steps; a NaN counts as 0.
    ZX3D_EXPORT std::uint32_t ToRGBA() const;

    /// True when all four channels are equal.
    friend constexpr bool operator==(Color const&, Color const&) = default;
};

static_assert(sizeof(Color) == 16, "uploaded to the GPU as it stands");

} // namespace zarvex::zx3D
