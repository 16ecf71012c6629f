// Lines of any shape with a stipple: u_lineStipple is (16-bit mask, repeat factor, 0, 0).

#include "line_batch_fragment.glsl"
#include "line_pattern.glsl"

uniform vec4 u_lineStipple;

void main() {
    LinePlace place = PlaceOnLine();
    if (place.outside > 0.0 || !IsStippleDrawn(place.distance, u_lineStipple.x, u_lineStipple.y)) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    o_color = ColorOf(place);
}
