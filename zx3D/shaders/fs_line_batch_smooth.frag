// Lines of any shape with smooth edges: alpha is also how much of a pixel they cover.

#include "line_batch_fragment.glsl"

void main() {
    LinePlace place = PlaceOnLine();
    float coverage = Coverage(place);
    if (coverage <= 0.0) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    vec4 color = ColorOf(place);
    o_color = vec4(color.rgb, color.a * coverage);
}
