// Meshes of a batch under one light.

#define LIGHTS 1
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_plain.glsl"
#include "mesh_light.glsl"
