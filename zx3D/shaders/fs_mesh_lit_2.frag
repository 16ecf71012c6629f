// Meshes of a batch under two lights.

#define LIGHTS 2
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_plain.glsl"
#include "mesh_light.glsl"
