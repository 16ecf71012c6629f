// Meshes of a batch under up to eight lights, with a texture.

#define LIGHTS 8
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_textured.glsl"
#include "mesh_light.glsl"
