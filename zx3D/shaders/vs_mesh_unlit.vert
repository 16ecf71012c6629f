// Unlit meshes of a batch.

#include "mesh_single.glsl"
#include "mesh_unlit.glsl"
