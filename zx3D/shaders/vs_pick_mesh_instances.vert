// Picking meshes of a batch, in many places.

#include "batch_texels.glsl"
#include "mesh_instance.glsl"

float InstanceNumber() { return float(gl_InstanceID); }

#include "pick_mesh.glsl"
