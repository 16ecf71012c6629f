// Wide lines.

#include "rectangle_vertex.glsl"

void main() { WriteRectangleVertex(); }
