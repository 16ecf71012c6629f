// A stipple that runs on along a polyline, by what cs_line_batch_lengths and cs_line_batch_carries measured.

#include "line_batch_blocks.glsl"

layout(binding = 1) uniform sampler2D s_lineMeasures;
layout(binding = 2) uniform sampler2D s_lineCarries;

float StippleBefore(int line) {
    int texel = TexelOf(line);
    return FromMeasure(texelFetch(s_lineMeasures, PlaceOf(texel), 0).x,
                       texelFetch(s_lineCarries, BlockPlace(texel / kBlockSize), 0).x);
}
