// Where what a batch has is in the world.
#pragma once

#include "PieceBounds.h"

#include <zx3DQt/WorldPosition.h>

#include <optional>

namespace zarvex::zx3DQt {

/// A box of the batch's coordinates in those of the world; nothing for an empty one.
inline std::optional<WorldBox> InWorld(Bounds const& bounds, WorldPosition const& batchOrigin) {
    if (bounds.IsEmpty())
        return std::nullopt;
    auto const inWorld = [&batchOrigin](QVector3D const& position) {
        return WorldPosition{batchOrigin.x + position.x(), batchOrigin.y + position.y(),
                             batchOrigin.z + position.z()};
    };
    return WorldBox{inWorld(bounds.minimum), inWorld(bounds.maximum)};
}

} // namespace zarvex::zx3DQt
