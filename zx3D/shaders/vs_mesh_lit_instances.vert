// Meshes of a batch in any light, or with a texture, in many places.

#include "batch_texels.glsl"
#include "mesh_instance.glsl"
#include "mesh_lit.glsl"
