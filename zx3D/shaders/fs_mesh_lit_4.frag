// Meshes of a batch under up to four lights.

#define LIGHTS 4
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_plain.glsl"
#include "mesh_light.glsl"
