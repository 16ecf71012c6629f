// Highlighted lines of a batch, over the gaps of a stipple, too.

#include "line_batch_fragment.glsl"

uniform vec4 u_highlight;

void main() {
    LinePlace place = PlaceOnLine();
    if (place.outside > 0.0) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    o_color = u_highlight;
}
