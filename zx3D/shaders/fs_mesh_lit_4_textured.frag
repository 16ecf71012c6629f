// Meshes of a batch under up to four lights, with a texture.

#define LIGHTS 4
#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_textured.glsl"
#include "mesh_light.glsl"
