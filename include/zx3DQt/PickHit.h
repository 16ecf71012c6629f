// An element that was found, and where.
#pragma once

#include <zx3DQt/WorldPosition.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// Which element, of which batch. A plain value.
struct PickElement {
    /// The address of the batch as it was added; null for an array.
    void const* batch = nullptr;
    std::uint32_t addition = 0; ///< so many were added to the scene before it
    /// Index of the point, the segment, the polyline, or the triangle, which counts those that were not
    /// refused.
    std::uint64_t element = 0;
    std::uint64_t segment = 0;  ///< of a polyline: the vertex that the segment begins with; otherwise 0
    std::uint64_t instance = 0; ///< of a mesh: in which of its places; otherwise 0

    friend constexpr bool operator==(PickElement const&, PickElement const&) = default; ///< in each
};

/// What is at a place of the picture. A plain value.
struct PickHit {
    PickElement what; ///< which element
    /// Where the point is; of a line, the place in its middle, and of a surface, the place on it, that the
    /// nearest of its pixels shows.
    WorldPosition position;
    /// From the place that was asked for to the middle of the nearest pixel that shows it, device-independent
    /// pixels; 0 where that is the place's own.
    double distance = 0.0;
    double depth = 0.0; ///< of that pixel: 0 at the near plane, 1 at the far plane
};

/// Which of several elements near a place is meant.
enum class PickOrder : std::uint8_t {
    Nearest,  ///< the nearest in the picture; of several at the same distance, the one in front
    ThinFirst ///< points before lines before surfaces, as far as they are visible; of each, the nearest
};

} // namespace zarvex::zx3DQt
