// Lines of any shape.

#include "line_batch_fragment.glsl"

void main() {
    LinePlace place = PlaceOnLine();
    if (place.outside > 0.0) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    o_color = ColorOf(place);
}
