// Which of a batch's triangles a pixel shows, and of which instance.

#include "pick_output.glsl"

layout(location = 0) in vec3 v_place;
layout(location = 1) flat in vec4 v_instance;

layout(location = 0) out vec4 o_color;

void main() { o_color = Picked(vec4(v_place, float(gl_PrimitiveID)), gl_FragCoord.z) + vec4(0.0, 0.0, v_instance.x, 0.0); }
