// Meshes of a batch in the light of one direction.

#include "mesh_single.glsl"
#include "mesh_diffuse.glsl"
