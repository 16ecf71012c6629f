// From a place in the picture back into the world.
#pragma once

#include <zx3DQt/WorldPosition.h>

#include <QMatrix4x4>

#include <optional>

namespace zarvex::zx3DQt {

/// All positions that appear at (x, y), NDC, from depth `nearest` towards depth 1. Empty for matrices whose
/// product has no inverse.
std::optional<WorldRay> Unproject(QMatrix4x4 const& projection, QMatrix4x4 const& view,
                                  WorldPosition const& origin, double x, double y, double nearest);

} // namespace zarvex::zx3DQt
