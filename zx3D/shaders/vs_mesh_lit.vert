// Meshes of a batch in any light, or with a texture.

#include "mesh_single.glsl"
#include "mesh_lit.glsl"
