// Thin lines with a 16-bit stipple mask.

#include "line_vertex.glsl"

void main() { WriteLineVertex(); }
