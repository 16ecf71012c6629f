// Unlit meshes of a batch, with a texture.

#include "mesh_surface.glsl"
#include "mesh_inputs.glsl"
#include "mesh_textured.glsl"

void main() { o_color = SurfaceColor(); }
