// Places in the world to the millimetre, however far from its origin.
#pragma once

namespace zarvex::zx3DQt {

/// A world position in double precision, world units. A plain value.
struct WorldPosition {
    double x = 0.0; ///< along the world's x axis
    double y = 0.0; ///< along its y axis
    double z = 0.0; ///< along its z axis

    friend constexpr bool operator==(WorldPosition const&, WorldPosition const&) = default; ///< in each
};

/// A box along the world's axes, world units. A plain value.
struct WorldBox {
    WorldPosition minimum; ///< the corner of the least coordinates
    WorldPosition maximum; ///< the corner of the greatest ones

    friend constexpr bool operator==(WorldBox const&, WorldBox const&) = default; ///< in both
};

} // namespace zarvex::zx3DQt
