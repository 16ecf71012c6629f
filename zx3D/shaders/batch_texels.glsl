// What a batch keeps on the GPU: texels of four 32-bit words, which are floats, colours or numbers, in rows.
// u_batchRange is (first texel of the draw call, texels in a row, which are a power of two, 0, always 0).

layout(binding = 0) uniform usampler2D s_batchTexels;

uniform vec4 u_batchRange;

// The index in its texture of the draw call's texel with an index.
int TexelOf(int index) { return int(u_batchRange.x) + index; }

ivec2 PlaceOf(int texel) {
    // The power is the float's exponent. Processors divide slowly.
    int width = int(u_batchRange.y);
    int power = (floatBitsToInt(u_batchRange.y) >> 23) - 127;
    return ivec2(texel & (width - 1), texel >> power);
}

// The texel of the draw call's with this index.
uvec4 FetchTexel(int index) { return texelFetch(s_batchTexels, PlaceOf(TexelOf(index)), 0); }

// By their bits: compilers may take it for granted that no float is infinite or not a number.
bool IsFinite(uvec3 position) {
    const uvec3 kExponent = uvec3(0x7F800000u);
    return all(notEqual(position & kExponent, kExponent));
}

bool IsNumber(uint value) { return (value & 0x7FFFFFFFu) <= 0x7F800000u; }

// 0xRRGGBBAA.
vec4 UnpackColor(uint rgba) {
    return vec4((uvec4(rgba) >> uvec4(24u, 16u, 8u, 0u)) & 0xFFu) / 255.0;
}
