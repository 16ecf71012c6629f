// The colour of a surface with a texture.

layout(binding = 1) uniform sampler2D s_meshTexture;

vec4 SurfaceColor() { return ColorOfSide(v_color) * texture(s_meshTexture, vec2(v_place.w, v_normal.w)); }
