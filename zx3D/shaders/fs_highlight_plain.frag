// Highlighted points of a batch, that fill their vertices' square or pixel.

layout(location = 0) in vec4 v_color;
layout(location = 3) flat in vec4 v_element;

layout(location = 0) out vec4 o_color;

uniform vec4 u_highlight;

void main() { o_color = u_highlight; }
