// Thin lines with a stipple that fade with distance: u_lineStipple is (16-bit mask, repeat factor, 0, 0).

#include "fade_fragment.glsl"
#include "line_fragment.glsl"
#include "line_pattern.glsl"

uniform vec4 u_lineStipple;

void main() {
    if (!IsStippleDrawn(DistanceFromStart(), u_lineStipple.x, u_lineStipple.y)) {
        discard;
    }
    o_color = Faded(v_color);
}
