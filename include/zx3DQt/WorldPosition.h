// Places in the world to the millimetre, however far from its origin.
#pragma once

namespace zarvex::zx3DQt {

/// A world position in double precision, world units. A plain value.
struct WorldPosition {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend constexpr bool operator==(WorldPosition const&, WorldPosition const&) = default;
};

/// A box along the world's axes, world units. A plain value.
struct WorldBox {
    WorldPosition minimum;
    WorldPosition maximum;

    friend constexpr bool operator==(WorldBox const&, WorldBox const&) = default;
};

} // namespace zarvex::zx3DQt
