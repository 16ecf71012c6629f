// The colour of a surface without a texture.

vec4 SurfaceColor() { return ColorOfSide(v_color); }
