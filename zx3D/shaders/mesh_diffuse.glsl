// The vertex stage of a batch's meshes in the light of one direction.

#include "mesh_vertex.glsl"

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_color0;

layout(location = 0) out vec4 v_color;
layout(location = 1) out vec3 v_normal;

void main() {
    gl_Position = u_modelViewProj * vec4(PositionOf(a_position), 1.0);
    gl_PointSize = 1.0;
    v_color = FrontColor(a_color0);
    v_normal = WorldNormal(a_normal);
}
