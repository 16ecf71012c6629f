// Expands each line into the two triangles of a rectangle of constant width on the screen, one line per thread.
// u_rectangleSprite is (line count, width in pixels, 0, 0).

layout(local_size_x = 64) in;

// Per line: start (x, y, z, 1), end (x, y, z, 1), colour.
layout(std430, binding = 0) readonly buffer Lines { vec4 b_lines[]; };
// Per vertex, six for each line: corner in NDC, colour, start and end in viewport pixels.
layout(std430, binding = 1) writeonly buffer Vertices { vec4 b_vertices[]; };

uniform mat4 u_modelViewProj;
uniform vec4 u_rectangleSprite;
uniform vec4 u_viewport;

#include "near_plane.glsl"

// A line shorter than this, in pixels, has no direction.
const float kShortestLength = 1.1920929e-5;

const uint kCornerOfVertex[6] = uint[6](0u, 1u, 2u, 2u, 3u, 0u);

// Pixels count from the viewport's top left corner, y down.
vec2 ToPixels(vec4 ndc) {
    return vec2((ndc.x + 1.0) * 0.5 * u_viewport.x, (1.0 - ndc.y) * 0.5 * u_viewport.y);
}

vec4 ToNdc(vec2 pixel, float depth) {
    return vec4(2.0 * pixel.x / u_viewport.x - 1.0, -(2.0 * pixel.y / u_viewport.y - 1.0), depth, 1.0);
}

// Of a line that reaches behind the camera, what is left; without a length when that is nothing.
void Cut(vec3 start, vec3 end, inout vec4 clipStart, inout vec4 clipEnd) {
    const vec4 kAnywhere = vec4(0.0, 0.0, 0.0, 1.0);
    bool isStartBehind = clipStart.w <= 0.0;
    bool isEndBehind = clipEnd.w <= 0.0;
    vec4 cut = vec4(0.0);
    if (!isEndBehind) {
        cut = clipStart = CutAtNearPlane(end, start);
    } else if (!isStartBehind) {
        cut = clipEnd = CutAtNearPlane(start, end);
    }
    if (cut.w == 0.0) {
        clipStart = clipEnd = kAnywhere;
    }
}

void main() {
    uint line = gl_GlobalInvocationID.x;
    if (line >= uint(u_rectangleSprite.x)) {
        return;
    }
    vec3 startPosition = b_lines[3u * line].xyz;
    vec3 endPosition = b_lines[3u * line + 1u].xyz;
    vec4 clipStart = u_modelViewProj * vec4(startPosition, 1.0);
    vec4 clipEnd = u_modelViewProj * vec4(endPosition, 1.0);
    if (clipStart.w <= 0.0 || clipEnd.w <= 0.0) {
        Cut(startPosition, endPosition, clipStart, clipEnd);
    }
    vec4 ndcStart = clipStart / clipStart.w;
    vec4 ndcEnd = clipEnd / clipEnd.w;
    vec4 color = b_lines[3u * line + 2u];
    vec2 start = ToPixels(ndcStart);
    vec2 end = ToPixels(ndcEnd);

    vec4 corners[4] = vec4[4](vec4(0.0), vec4(0.0), vec4(0.0), vec4(0.0));
    vec2 along = end - start;
    float lineLength = length(along);
    if (!(lineLength < kShortestLength)) {
        vec2 direction = along / lineLength;
        vec2 offset = vec2(-direction.y, direction.x) * (u_rectangleSprite.y * 0.5);
        corners[0] = ToNdc(start - offset, ndcStart.z);
        corners[1] = ToNdc(end - offset, ndcEnd.z);
        corners[2] = ToNdc(end + offset, ndcEnd.z);
        corners[3] = ToNdc(start + offset, ndcStart.z);
    }

    for (uint i = 0u; i < 6u; ++i) {
        uint vertex = 4u * (6u * line + i);
        b_vertices[vertex] = corners[kCornerOfVertex[i]];
        b_vertices[vertex + 1u] = color;
        b_vertices[vertex + 2u] = vec4(start, ndcStart.z, 1.0);
        b_vertices[vertex + 3u] = vec4(end, ndcEnd.z, 1.0);
    }
}
