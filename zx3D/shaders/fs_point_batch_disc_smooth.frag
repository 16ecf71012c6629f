// Discs in targets of several samples, of which alpha says how many a disc covers.

#include "point_batch_coverage.glsl"

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_place;
layout(location = 2) flat in vec4 v_ball;

layout(location = 0) out vec4 o_color;

void main() { o_color = vec4(v_color.rgb, CircleCoverage(length(v_place))); }
