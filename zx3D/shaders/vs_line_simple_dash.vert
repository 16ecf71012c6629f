// Thin lines with dashes and gaps.

#include "line_vertex.glsl"

void main() { WriteLineVertex(); }
