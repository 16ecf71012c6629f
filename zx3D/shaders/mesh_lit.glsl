// The vertex stage of a batch's meshes in any light, or with a texture: what the mesh has no normals or no texture
// coordinates for reads anything.

#include "mesh_vertex.glsl"

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_color0;
layout(location = 3) in vec2 a_texcoord0;

layout(location = 0) out vec4 v_color;
layout(location = 1) out vec4 v_place;  // in the view's world; w is the first texture coordinate
layout(location = 2) out vec4 v_normal; // (0, 0, 0) without one; w is the second texture coordinate

uniform mat4 u_model;

void main() {
    vec4 position = vec4(PositionOf(a_position), 1.0);
    gl_Position = u_modelViewProj * position;
    gl_PointSize = 1.0;
    v_color = FrontColor(a_color0);
    v_place = vec4((u_model * position).xyz, a_texcoord0.x);
    v_normal = vec4(mix(vec3(0.0), WorldNormal(a_normal), bvec3(u_meshVertex[4].y != 0.0)), a_texcoord0.y);
}
