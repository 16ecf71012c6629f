// Thin lines that fade with distance.

#include "fade_vertex.glsl"
#include "line_vertex.glsl"

uniform mat4 u_model;

void main() {
    WriteLineVertex();
    WritePlace(u_model * vec4(a_position, 1.0));
}
