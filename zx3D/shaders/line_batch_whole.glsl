// Lines of which no end is behind the camera: nothing is cut off.

vec2 CutEnds(uvec3 startPosition, uvec3 endPosition, inout vec4 start, inout vec4 end) { return vec2(0.0, 1.0); }

vec4 ValueAt(uvec4 startTexel, uvec4 endTexel, vec2 parts, bool isEnd) {
    return VertexValue(isEnd ? endTexel : startTexel);
}
