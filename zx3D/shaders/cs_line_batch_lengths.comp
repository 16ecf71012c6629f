// Measures polylines on the screen: one block of texels per thread.
// u_lineRun begins with the first texel that segments may begin at, and the one after the last.

layout(local_size_x = 64) in;

#include "batch_texels.glsl"
#include "line_batch.glsl"
#include "line_batch_color.glsl"
#include "line_batch_blocks.glsl"
#include "line_batch_cut.glsl"

// For the segment that begins at a texel, up to its start; and for each block, up to its end.
layout(r32f, binding = 1) writeonly uniform image2D i_lineMeasures;
layout(r32f, binding = 2) writeonly uniform image2D i_lineBlocks;

float LengthOf(uvec4 startTexel, uvec4 endTexel) {
    vec4 start = ToClipSpace(startTexel);
    vec4 end = ToClipSpace(endTexel);
    CutEnds(startTexel.xyz, endTexel.xyz, start, end);
    return min(start.w, end.w) > 0.0 ? DirectionTo(start, end).z : 0.0;
}

void main() {
    int block = int(gl_GlobalInvocationID.x);
    if (block >= int(u_lineRun.w)) {
        return;
    }
    int first = max(block * kBlockSize, int(u_lineRun.x));
    int last = min((block + 1) * kBlockSize, int(u_lineRun.y));
    float pixels = 0.0;
    bool hasBegun = false;
    uvec4 here = FetchTexel(first);
    for (int texel = first; texel < last; ++texel) {
        imageStore(i_lineMeasures, PlaceOf(texel), vec4(hasBegun ? -1.0 - pixels : pixels));
        uvec4 next = FetchTexel(texel + 1);
        bool isSegment = IsFinite(here.xyz) && IsFinite(next.xyz);
        pixels = isSegment ? mod(pixels + LengthOf(here, next), u_lineRun.z) : 0.0;
        hasBegun = hasBegun || !isSegment;
        here = next;
    }
    imageStore(i_lineBlocks, BlockPlace(block), vec4(hasBegun ? -1.0 - pixels : pixels));
}
