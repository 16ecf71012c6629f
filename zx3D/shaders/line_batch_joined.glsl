// The segments of polylines: one begins at each texel, if that and the next are vertices. src/batch/PolylineTexels.h
// explains the texels.

struct LineTexels {
    uvec4 start;
    uvec4 end;
    uvec4 before; // the other end of the segment that ends at the start; not finite where there is none
    uvec4 after;  // the other end of the segment that starts at the end
};

// The vertex beside one, in the direction of `step`. One step farther where the line is closed, and `joins` says so, or
// where the vertex is repeated: then its repetition has no length, and no direction.
uvec4 FetchNeighbour(uvec4 vertex, int index, int step, uint joins) {
    uvec4 beside = FetchTexel(index + step);
    uvec4 farther = FetchTexel(max(index + 2 * step, -int(u_batchRange.x)));
    bool isFarther = beside.x == joins || beside.xyz == vertex.xyz;
    return isFarther ? farther : beside;
}

LineTexels FetchLine(int line) {
    uvec4 start = FetchTexel(line);
    uvec4 end = FetchTexel(line + 1);
    return LineTexels(start, end, FetchNeighbour(start, line, -1, 0x7FC00001u),
                      FetchNeighbour(end, line + 1, 1, 0x7FC00002u));
}
