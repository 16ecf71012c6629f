// Which of a batch's points a pixel shows, of points that fill their vertices' square or pixel.

#include "pick_output.glsl"

layout(location = 0) in vec4 v_color;
layout(location = 3) flat in vec4 v_element;

layout(location = 0) out vec4 o_color;

void main() { o_color = Picked(v_element, gl_FragCoord.z); }
