// Unlit meshes of a batch, in many places.

#include "batch_texels.glsl"
#include "mesh_instance.glsl"
#include "mesh_unlit.glsl"
