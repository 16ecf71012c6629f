// Materials of all kinds of files as what the lighting program computes: Blinn and Phong's.
#pragma once

#include "../MeshContent.h"

#include <assimp/material.h>

namespace viewer {

/// `hasColors`: the vertices carry colours, which the material's are multiplied with.
MeshMaterial ToMeshMaterial(aiMaterial const& material, bool hasColors);

} // namespace viewer
