// Balls.

#include "point_batch_ball.glsl"

void main() {
    float squaredDistance = dot(v_place, v_place);
    if (squaredDistance > 1.0) {
        discard;
    }
    o_color = vec4(BallSurface(sqrt(1.0 - squaredDistance)), v_color.a);
}
