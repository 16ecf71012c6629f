// Which of a batch's balls a pixel shows.

#include "pick_output.glsl"
#include "point_batch_ball.glsl"

layout(location = 3) flat in vec4 v_element;

void main() {
    float squaredDistance = dot(v_place, v_place);
    if (squaredDistance > 1.0) {
        discard;
    }
    BallSurface(sqrt(1.0 - squaredDistance));
    o_color = Picked(v_element, gl_FragDepth);
}
