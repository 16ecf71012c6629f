// Which of a batch's discs a pixel shows.

#include "pick_output.glsl"

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_place;
layout(location = 2) flat in vec4 v_ball;
layout(location = 3) flat in vec4 v_element;

layout(location = 0) out vec4 o_color;

void main() {
    if (dot(v_place, v_place) > 1.0) {
        discard;
    }
    o_color = Picked(v_element, gl_FragCoord.z);
}
