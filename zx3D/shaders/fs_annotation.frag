// What a glyph or a shape covers of a pixel, in its colour, premultiplied.

// Of a glyph: the place on its page and a negative number. Of a shape: the pixel's place from its middle, and how far it
// reaches there.
layout(location = 0) in vec4 v_shape;
layout(location = 1) in vec4 v_color;

layout(location = 0) out vec4 o_color;

layout(binding = 0) uniform sampler2D s_glyph_atlas;

void main() {
    float glyph = texture(s_glyph_atlas, v_shape.xy).r;
    vec2 inside = clamp(v_shape.zw + 0.5 - abs(v_shape.xy), 0.0, 1.0);
    float alpha = v_color.a * (v_shape.z < 0.0 ? glyph : inside.x * inside.y);
    o_color = vec4(v_color.rgb * alpha, alpha);
}
