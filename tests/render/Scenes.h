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

/// All of these.
std::vector<Scene> AllScenes();

} // namespace zarvex::testing
