// Which of a batch's lines a pixel shows, over its whole width and the gaps of a stipple.

#include "line_batch_fragment.glsl"
#include "pick_output.glsl"

void main() {
    LinePlace place = PlaceOnLine();
    if (place.outside > 0.0) {
        discard;
    }
    gl_FragDepth = DepthOf(place);
    o_color = Picked(ColorOf(place), gl_FragDepth);
}
