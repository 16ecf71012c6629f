// Picking meshes of a batch.

#include "mesh_single.glsl"

float InstanceNumber() { return 0.0; }

#include "pick_mesh.glsl"
