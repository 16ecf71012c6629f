// The vertex stage of wide lines: corners that come in NDC with the line's ends in viewport pixels beside them.

#include "collapsed_vertex.glsl"

layout(location = 0) in vec4 a_texcoord0;
layout(location = 1) in vec4 a_color0;
layout(location = 2) in vec4 a_texcoord1;
layout(location = 3) in vec4 a_texcoord2;

layout(location = 0) out vec4 v_color;
layout(location = 1) out vec2 v_pixel;
layout(location = 2) flat out vec2 v_start;
layout(location = 3) flat out vec2 v_end;

uniform vec4 u_viewport;

// A line of no length comes as (0, 0, 0, 0); one that ends in the camera's own plane has no finite corners.
bool IsDrawable(vec4 corner) {
    const float kLargest = 1e30;
    return corner.w != 0.0 && all(lessThan(abs(corner.xyz), vec3(kLargest)));
}

void WriteRectangleVertex() {
    gl_Position = IsDrawable(a_texcoord0) ? a_texcoord0 : kCollapsedVertex;
    gl_PointSize = 1.0;
    v_color = a_color0;
    // From the corner and not from gl_FragCoord, which counts from the target's corner and not from the viewport's, and
    // upwards or downwards according to the backend.
    v_pixel = vec2(gl_Position.x + 1.0, 1.0 - gl_Position.y) * 0.5 * u_viewport.xy;
    v_start = a_texcoord1.xy;
    v_end = a_texcoord2.xy;
}
