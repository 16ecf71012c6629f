// Wide lines with a stipple: u_lineStipple is (16-bit mask, repeat factor, 0, 0).

#include "line_pattern.glsl"
#include "rectangle_fragment.glsl"

uniform vec4 u_lineStipple;

void main() {
    if (!IsStippleDrawn(DistanceFromStart(), u_lineStipple.x, u_lineStipple.y)) {
        discard;
    }
    o_color = v_color;
}
