// Meshes of a batch under up to eight lights.

#define LIGHTS 8
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_plain.glsl"
#include "mesh_light.glsl"
