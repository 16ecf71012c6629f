// The scenes that lines and points are checked with.
#pragma once

#include "Scene.h"

#include <vector>

namespace zarvex::testing {

std::vector<Scene> ThinLineScenes();
std::vector<Scene> WideLineScenes();
std::vector<Scene> PointScenes();

/// Lines and points of every kind under model transforms, view matrices, projections and in parts of the
/// target.
std::vector<Scene> TransformScenes();

/// Lines around a camera that is in their midst: many of them end behind it.
std::vector<Scene> InsideScenes();

/// All of these.
std::vector<Scene> AllScenes();

} // namespace zarvex::testing
