// Adds up what was measured of a texture's blocks, in their order: what is before each, and after the last.
// u_lineRun begins with the number of blocks of the texture before, which is 0 where there is none, and a 0.

layout(local_size_x = 1) in;

#include "line_batch_blocks.glsl"

layout(binding = 0) uniform sampler2D s_lineMeasures;
layout(binding = 1) uniform sampler2D s_lineCarries; // of the texture before
layout(r32f, binding = 2) writeonly uniform image2D i_lineCarries;

void main() {
    int before = int(u_lineRun.x);
    float carry = texelFetch(s_lineCarries, BlockPlace(before), 0).x;
    carry = before > 0 ? carry : 0.0;
    int count = int(u_lineRun.w);
    for (int block = 0; block < count; ++block) {
        imageStore(i_lineCarries, BlockPlace(block), vec4(carry));
        carry = FromMeasure(texelFetch(s_lineMeasures, BlockPlace(block), 0).x, carry);
    }
    imageStore(i_lineCarries, BlockPlace(count), vec4(carry));
}
