// Highlighted balls of a batch.

#include "point_batch_ball.glsl"

layout(location = 3) flat in vec4 v_element;

uniform vec4 u_highlight;

void main() {
    float squaredDistance = dot(v_place, v_place);
    if (squaredDistance > 1.0) {
        discard;
    }
    float height = sqrt(1.0 - squaredDistance);
    BallSurface(height); // the depth
    o_color = vec4(u_highlight.rgb * (kAmbient + kDiffuse * height), u_highlight.a);
}
