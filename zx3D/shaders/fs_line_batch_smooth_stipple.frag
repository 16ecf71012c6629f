// Lines of any shape with smooth edges and a stipple: u_lineStipple is (16-bit mask, repeat factor, 0, 0).

#include "line_batch_fragment.glsl"
#include "line_pattern.glsl"

uniform vec4 u_lineStipple;

// Of a pixel at a distance from the start, how much the pattern draws, at four places in it.
float StippleCoverage(float distance) {
    float drawn = 0.0;
    for (int i = 0; i < 4; ++i) {
        float place = max(distance - 0.375 + 0.25 * float(i), 0.0);
        drawn += IsStippleDrawn(place, u_lineStipple.x, u_lineStipple.y) ? 0.25 : 0.0;
    }
    return drawn;
}

void main() {
    LinePlace place = PlaceOnLine();
    float coverage = Coverage(place) * StippleCoverage(place.distance);
    if (coverage <= 0.0) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    vec4 color = ColorOf(place);
    o_color = vec4(color.rgb, color.a * coverage);
}
