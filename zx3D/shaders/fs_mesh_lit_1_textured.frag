// Meshes of a batch under one light, with a texture.

#define LIGHTS 1
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_textured.glsl"
#include "mesh_light.glsl"
