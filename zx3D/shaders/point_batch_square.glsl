// The vertex stage of a batch's square points.

#include "point_batch_corner.glsl"

layout(location = 0) out vec4 v_color;

void main() {
    uvec4 point = FetchTexel(gl_VertexID / 6);
    gl_Position = CornerOf(point.xyz, gl_VertexID % 6).clip;
    gl_PointSize = 1.0;
    v_color = PointColor(point.w);
}
