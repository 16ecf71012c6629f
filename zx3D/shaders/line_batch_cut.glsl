// Lines that may reach behind the camera: there they end where they leave the depths that are drawn.

#include "near_plane.glsl"

// The parts of the line at which it then starts and ends. A w that is not above 0 where nothing is left.
vec2 CutEnds(uvec3 startPosition, uvec3 endPosition, inout vec4 start, inout vec4 end) {
    vec2 parts = vec2(0.0, 1.0);
    float startW = start.w;
    float endW = end.w;
    if (startW > 0.0 && endW <= 0.0) {
        end = CutAtNearPlane(uintBitsToFloat(startPosition), uintBitsToFloat(endPosition));
        parts.y = (startW - end.w) / (startW - endW);
    } else if (startW <= 0.0 && endW > 0.0) {
        start = CutAtNearPlane(uintBitsToFloat(endPosition), uintBitsToFloat(startPosition));
        parts.x = 1.0 - (endW - start.w) / (endW - startW);
    }
    return parts;
}

vec4 ValueAt(uvec4 startTexel, uvec4 endTexel, vec2 parts, bool isEnd) {
    return mix(VertexValue(startTexel), VertexValue(endTexel), isEnd ? parts.y : parts.x);
}
