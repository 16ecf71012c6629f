// A line segment, and how a line is stippled or dashed.
#pragma once

#include <zx3D/Color.h>

#include <bx/math.h>

#include <cstdint>

namespace zarvex::zx3D {

/// A segment with one colour. Positions are in the space of the model transform that it is drawn with.
struct Line {
    bx::Vec3 start{0.0f, 0.0f, 0.0f}; ///< where the stipple begins
    bx::Vec3 end{0.0f, 0.0f, 0.0f};   ///< the other end
    Color color;                      ///< of the whole segment
};

static_assert(sizeof(Line) == 40, "start, end and colour follow each other without gaps");

/// A repeating on/off pattern along a line, counted in pixels from its start.
///
/// Pixel d of the line is drawn when bit (d / factor) mod 16 of `pattern` is set; bit 0 is the first. d is
/// the distance from the line's start to the pixel's centre, plus 1/128 of a pixel, rounded down: distances
/// that are whole but for rounding errors count as whole, so that backends agree.
struct LineStipplePattern {
    std::uint16_t pattern = 0xFFFF; ///< the 16-bit mask; bit set = pixel drawn
    std::uint8_t factor = 1;        ///< pixels that each bit covers
};

/// A dash pattern for the simple dash program ("vs_line_simple_dash"). A length of 0 or less draws solid.
struct LineStyle {
    float dashLength = 0.0f; ///< drawn length, pixels
    float gapLength = 0.0f;  ///< length left out between dashes, pixels
};

} // namespace zarvex::zx3D
