// Corners of point sprites, which come in clip space.

#include "collapsed_vertex.glsl"

layout(location = 0) in vec4 a_position;
layout(location = 1) in vec4 a_color0;

layout(location = 0) out vec4 v_color;

void main() {
    // A point in the camera's own plane has no place on the screen.
    gl_Position = a_position.w == 0.0 ? kCollapsedVertex : a_position;
    gl_PointSize = 1.0;
    v_color = a_color0;
}
