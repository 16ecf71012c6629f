// Wide lines that fade with distance.

#include "fade_vertex.glsl"
#include "rectangle_vertex.glsl"

void main() {
    WriteRectangleVertex();
    WritePlace(gl_Position);
}
