// Meshes of a batch in the light of one direction, in many places.

#include "batch_texels.glsl"
#include "mesh_instance.glsl"
#include "mesh_diffuse.glsl"
