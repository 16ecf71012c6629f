// The vertex stage of lines whose shape is the fragment stage's: rectangles, four vertices each, that are large enough for
// joins, caps and fading edges. Everything is in pixels from the viewport's top left corner, y down.
// u_lineShape is (1 for square caps, 1 for round ones, 1 for round joins, half the squared miter limit or 0).

layout(location = 0) out vec2 v_pixel;
layout(location = 1) flat out vec4 v_ends;       // start, end
layout(location = 2) flat out vec4 v_direction;  // from start to end; its length; pixels of the stipple before the start
layout(location = 3) flat out vec4 v_neighbours; // directions towards the vertices before and after
layout(location = 4) flat out vec4 v_reach;      // how far those are, 0 where there are none, -1 where the picture cuts
                                                 // the line off; half the width at start and end
layout(location = 5) flat out vec4 v_depth;      // depth at start and end in NDC, 1 / w there
layout(location = 6) flat out vec4 v_startColor;
layout(location = 7) flat out vec4 v_endColor;

uniform vec4 u_lineShape;

// Towards the viewport's edges and so far beyond, lines are seen; floats count pixels farther away less and less exactly.
const float kBeyond = 8192.0;

vec2 ToPixels(vec4 clip) { return vec2(1.0 + clip.x / clip.w, 1.0 - clip.y / clip.w) * 0.5 * u_viewRect.zw; }

vec3 Neighbour(vec4 here, uvec4 texel) {
    return IsFinite(texel.xyz) ? DirectionTo(here, ToClipSpace(texel)) : vec3(0.0);
}

// The parts of the line between which it is worth drawing; the first one is larger where it is nowhere.
vec2 PartsInPicture(vec2 start, vec2 end, float halfWidth) {
    float beyond = kBeyond + 2.0 * halfWidth;
    vec2 along = end - start;
    along = mix(along, vec2(1e-6), lessThan(abs(along), vec2(1e-6)));
    vec2 a = (vec2(-beyond) - start) / along;
    vec2 b = (u_viewRect.zw + beyond - start) / along;
    vec2 first = min(a, b);
    vec2 last = max(a, b);
    return vec2(max(max(first.x, first.y), 0.0), min(min(last.x, last.y), 1.0));
}

// How far beyond an end anything is drawn.
float ReachBeyond(vec2 inwards, vec3 neighbour, float halfWidth) {
    float cosine = dot(inwards, neighbour.xy);
    float squaredSine = max(0.5 * (1.0 - cosine), 1e-6); // of half the angle between the two
    bool isMiter = squaredSine * 2.0 * u_lineShape.w >= 1.0;
    float ofJoin = sqrt(max(0.5 * (1.0 + cosine), 0.0)) * (isMiter ? inversesqrt(squaredSine) : 1.0);
    float ofCap = max(u_lineShape.x, u_lineShape.y);
    return neighbour.z < 0.0 ? 0.0 : halfWidth * (neighbour.z > 0.0 ? ofJoin : ofCap);
}

void main() {
    const vec3 kCutOff = vec3(0.0, 0.0, -1.0);
    int line = gl_VertexID >> 2;
    int corner = gl_VertexID & 3;
    LineTexels texels = FetchLine(line);
    bool isDrawn = IsFinite(texels.start.xyz) && IsFinite(texels.end.xyz);
    vec4 start = ToClipSpace(texels.start);
    vec4 end = ToClipSpace(texels.end);
    vec2 parts = CutEnds(texels.start.xyz, texels.end.xyz, start, end);
    isDrawn = isDrawn && min(start.w, end.w) > 0.0;

    vec3 along = DirectionTo(start, end);
    vec3 before = parts.x > 0.0 ? kCutOff : Neighbour(start, texels.before);
    vec3 after = parts.y < 1.0 ? kCutOff : Neighbour(end, texels.after);
    // Without a length it is a dot, if it has caps; its neighbours do without it.
    isDrawn = isDrawn && (along.z > 0.0 || (before.z == 0.0 && after.z == 0.0 && u_lineShape.x + u_lineShape.y > 0.0));
    vec2 direction = along.z > 0.0 ? along.xy : vec2(1.0, 0.0);

    vec2 startPixel = ToPixels(start);
    vec2 endPixel = ToPixels(end);
    vec4 depth = vec4(ShiftedDepth(start) / start.w, ShiftedDepth(end) / end.w, 1.0 / start.w, 1.0 / end.w);
    vec2 halfWidth = vec2(HalfWidth(start.w), HalfWidth(end.w));
    vec4 startColor = ValueAt(texels.start, texels.end, parts, false);
    vec4 endColor = ValueAt(texels.start, texels.end, parts, true);

    // What is far outside the picture is cut off, too. Depths, 1 / w and widths change evenly on the screen.
    vec2 seen = PartsInPicture(startPixel, endPixel, max(halfWidth.x, halfWidth.y));
    isDrawn = isDrawn && seen.x < seen.y;
    vec2 inverseW = mix(depth.zz, depth.ww, seen);
    vec2 seenColors = seen * depth.w / inverseW;
    v_startColor = mix(startColor, endColor, seenColors.x);
    v_endColor = mix(startColor, endColor, seenColors.y);
    v_depth = vec4(mix(depth.xx, depth.yy, seen), inverseW);
    halfWidth = mix(halfWidth.xx, halfWidth.yy, seen);
    v_ends = vec4(mix(startPixel, endPixel, seen.x), mix(startPixel, endPixel, seen.y));
    before = seen.x > 0.0 ? kCutOff : before;
    after = seen.y < 1.0 ? kCutOff : after;

    v_direction = vec4(direction, (seen.y - seen.x) * along.z, StippleBefore(line) + seen.x * along.z);
    v_neighbours = vec4(before.xy, after.xy);
    v_reach = vec4(before.z, after.z, halfWidth);

    // A pixel more on all sides, for what fades out.
    vec2 visibleHalf = max(halfWidth, vec2(0.5));
    float beyond = 1.0 + (IsAtEnd(corner) > 0.5 ? ReachBeyond(-direction, after, visibleHalf.y)
                                                : ReachBeyond(direction, before, visibleHalf.x));
    float isEnd = IsAtEnd(corner);
    v_pixel = (isEnd > 0.5 ? v_ends.zw : v_ends.xy) + (2.0 * isEnd - 1.0) * beyond * direction +
              SideOf(corner) * (1.0 + max(visibleHalf.x, visibleHalf.y)) * vec2(-direction.y, direction.x);
    vec2 ndc = vec2(-1.0, 1.0) + v_pixel * vec2(2.0, -2.0) / u_viewRect.zw;
    gl_Position = isDrawn ? vec4(ndc, isEnd > 0.5 ? v_depth.y : v_depth.x, 1.0) : kCollapsedVertex;
    gl_PointSize = 1.0;
}
