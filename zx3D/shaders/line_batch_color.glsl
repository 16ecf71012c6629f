// What changes along a line: its colour.

vec4 VertexValue(uvec4 texel) { return UnpackColor(texel.w); }
