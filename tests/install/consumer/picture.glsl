// Pictures in a tint.

uniform vec4 u_tint;

vec4 Tinted(sampler2D picture, vec2 at) { return texture(picture, at) * u_tint; }
