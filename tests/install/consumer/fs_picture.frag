// The texture in a tint.

#include "picture.glsl"

layout(location = 0) in vec2 v_texcoord;

layout(location = 0) out vec4 o_color;

layout(binding = 1) uniform sampler2D s_picture;

void main() { o_color = Tinted(s_picture, v_texcoord); }
