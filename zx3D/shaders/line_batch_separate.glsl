// Segments of their own: two texels each, and no neighbours.

struct LineTexels {
    uvec4 start;
    uvec4 end;
    uvec4 before; // the other end of the segment that ends at the start; not finite where there is none
    uvec4 after;  // the other end of the segment that starts at the end
};

LineTexels FetchLine(int line) {
    const uvec4 kNone = uvec4(0x7FC00000u, 0u, 0u, 0u);
    return LineTexels(FetchTexel(2 * line), FetchTexel(2 * line + 1), kNone, kNone);
}

// Pixels of the stipple.
float StippleBefore(int line) { return 0.0; }
