// The segments of polylines of one pixel from a batch. Where a texel is no vertex there is none.

#include "line_batch_thin.glsl"

void main() {
    int line = gl_VertexID >> 1;
    int end = gl_VertexID & 1;
    uvec4 texel = FetchTexel(line + end);
    uvec4 other = FetchTexel(line + 1 - end);
    WriteThinVertex(texel, IsFinite(texel.xyz) && IsFinite(other.xyz));
}
