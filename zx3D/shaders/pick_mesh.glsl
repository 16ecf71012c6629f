// The vertex stage of meshes that are picked: where they are in the batch, and the number of the instance.

layout(location = 0) in vec3 a_position;

layout(location = 0) out vec3 v_place;
layout(location = 1) flat out vec4 v_instance;

uniform mat4 u_modelViewProj;

void main() {
    v_place = PositionOf(a_position);
    v_instance = vec4(InstanceNumber());
    gl_Position = u_modelViewProj * vec4(v_place, 1.0);
    gl_PointSize = 1.0;
}
