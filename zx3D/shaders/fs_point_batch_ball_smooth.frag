// Balls in targets of several samples, of which alpha says how many a ball covers.

#include "point_batch_ball.glsl"
#include "point_batch_coverage.glsl"

void main() {
    vec3 color = BallSurface(sqrt(max(1.0 - dot(v_place, v_place), 0.0)));
    o_color = vec4(color, CircleCoverage(length(v_place)));
}
