// In place of a line's colour, what changes along it: a place in the batch; and its number in the draw call, four vertices
// each. There are no more than 2^18 lines in one, so that what is mixed of equal numbers rounds to them.

vec4 VertexValue(uvec4 texel) { return vec4(uintBitsToFloat(texel.xyz), float(gl_VertexID >> 2)); }
