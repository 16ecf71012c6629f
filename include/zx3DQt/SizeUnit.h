// What a length in a style means.
#pragma once

#include <cstdint>

namespace zarvex::zx3DQt {

/// What a length means.
enum class SizeUnit : std::uint8_t {
    Pixels, ///< physical pixels of the target, at every distance
    World,  ///< world units: what is nearer is larger
};

} // namespace zarvex::zx3DQt
