// Shows a texture as it is; a frame buffer's colour texture appears upright on every backend.

layout(location = 0) in vec2 v_texcoord;

layout(location = 0) out vec4 o_color;

layout(binding = 0) uniform sampler2D s_fullscreen_texture;

void main() { o_color = texture(s_fullscreen_texture, v_texcoord); }
