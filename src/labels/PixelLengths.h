// Lengths in styles, whatever they are.
#pragma once

#include <cmath>

namespace zarvex::zx3DQt {

/// More is more than any picture has.
constexpr double kMostPixels = 65'536.0;

/// A length, or 0 for what is none.
inline float LengthOr0(double length) {
    return length > 0.0 && length < kMostPixels ? static_cast<float>(length) : 0.0f;
}

/// The same in either direction.
inline float OffsetOr0(double offset) {
    return std::abs(offset) < kMostPixels ? static_cast<float>(offset) : 0.0f;
}

} // namespace zarvex::zx3DQt
