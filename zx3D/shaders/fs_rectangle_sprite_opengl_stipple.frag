// Wide lines with a stipple: u_lineStipple is (16-bit mask, repeat factor, 0, 0).

#include "line_pattern.glsl"

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_pixel;
layout(location = 2) flat in vec2 v_start;
layout(location = 3) flat in vec2 v_end;

layout(location = 0) out vec4 o_color;

uniform vec4 u_lineStipple;

void main() {
    // Across the line the pattern is the same, so only the way along it counts.
    float distanceFromStart = max(dot(v_pixel - v_start, normalize(v_end - v_start)), 0.0);
    if (!IsStippleDrawn(distanceFromStart, u_lineStipple.x, u_lineStipple.y)) {
        discard;
    }
    o_color = v_color;
}
