// Hands position and normal on in world space. bgfx sets u_model and u_viewProj.

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec2 a_texcoord0;

layout(location = 0) out vec3 v_position;
layout(location = 1) out vec3 v_normal;
layout(location = 2) out vec2 v_texcoord;

uniform mat4 u_model;
uniform mat4 u_viewProj;

void main() {
    vec4 position = u_model * vec4(a_position, 1.0);
    gl_Position = u_viewProj * position;
    v_position = position.xyz;
    v_normal = mat3(u_model) * a_normal; // right for rotations
    v_texcoord = a_texcoord0;
}
