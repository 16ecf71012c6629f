// Points and triangles with a colour of their own: transforms the position and passes the colour on.

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec4 a_color0;

layout(location = 0) out vec4 v_color;

uniform mat4 u_modelViewProj;

void main() {
    gl_Position = u_modelViewProj * vec4(a_position, 1.0);
    gl_PointSize = 1.0;
    v_color = a_color0;
}
