// Thin lines with dashes: u_lineStyle is (dash length, gap length, 0, 0) in pixels.

#include "line_fragment.glsl"
#include "line_pattern.glsl"

uniform vec4 u_lineStyle;

void main() {
    if (!IsDashDrawn(DistanceFromStart(), u_lineStyle.x, u_lineStyle.y)) {
        discard;
    }
    o_color = v_color;
}
