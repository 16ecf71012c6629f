// Meshes of a batch under two lights, with a texture.

#define LIGHTS 2
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_textured.glsl"
#include "mesh_light.glsl"
