// Segments of one pixel from a batch.

#include "line_batch_thin.glsl"

void main() {
    uvec4 texel = FetchTexel(gl_VertexID);
    WriteThinVertex(texel, IsFinite(texel.xyz));
}
