// Glyphs in the colour of their text, premultiplied by how much of the pixel they cover.

layout(location = 0) in vec2 v_texcoord;
layout(location = 1) in vec4 v_color;

layout(location = 0) out vec4 o_color;

layout(binding = 0) uniform sampler2D s_glyph_atlas;

void main() {
    float alpha = v_color.a * texture(s_glyph_atlas, v_texcoord).r;
    o_color = vec4(v_color.rgb * alpha, alpha);
}
