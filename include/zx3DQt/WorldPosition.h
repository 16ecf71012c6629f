// Places in the world to the millimetre, however far from its origin.
#pragma once

namespace zarvex::zx3DQt {

/// The way from one world position to another, or a direction, in double precision, world units. A plain
/// value.
struct WorldVector {
    double x = 0.0; ///< along the world's x axis
    double y = 0.0; ///< along its y axis
    double z = 0.0; ///< along its z axis

    friend constexpr bool operator==(WorldVector const&, WorldVector const&) = default; ///< in each

    /// Sums, differences and multiples.
    /// @{
    friend constexpr WorldVector operator+(WorldVector const& a, WorldVector const& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr WorldVector operator-(WorldVector const& a, WorldVector const& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr WorldVector operator-(WorldVector const& a) { return {-a.x, -a.y, -a.z}; }
    friend constexpr WorldVector operator*(double factor, WorldVector const& a) {
        return {factor * a.x, factor * a.y, factor * a.z};
    }
    /// @}
};

/// The dot product: of unit vectors, the cosine of the angle between them.
constexpr double Dot(WorldVector const& a, WorldVector const& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The cross product: at right angles to both, right handed.
constexpr WorldVector Cross(WorldVector const& a, WorldVector const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// A world position in double precision, world units. A plain value.
struct WorldPosition {
    double x = 0.0; ///< along the world's x axis
    double y = 0.0; ///< along its y axis
    double z = 0.0; ///< along its z axis

    friend constexpr bool operator==(WorldPosition const&, WorldPosition const&) = default; ///< in each

    /// The position that a vector leads to, and the vector that leads from `b` to `a`.
    /// @{
    friend constexpr WorldPosition operator+(WorldPosition const& a, WorldVector const& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr WorldVector operator-(WorldPosition const& a, WorldPosition const& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    /// @}
};

/// A box along the world's axes, world units. A plain value.
struct WorldBox {
    WorldPosition minimum; ///< the corner of the least coordinates
    WorldPosition maximum; ///< the corner of the greatest ones

    friend constexpr bool operator==(WorldBox const&, WorldBox const&) = default; ///< in both
};

/// Half of a straight line: the positions `origin + t * direction` with t from 0 on. A plain value.
struct WorldRay {
    WorldPosition origin;  ///< where it begins
    WorldVector direction; ///< of length 1: t is a distance, world units
};

} // namespace zarvex::zx3DQt
