// The vertex stage of segments that are rectangles on the screen, four vertices each.

layout(location = 0) out vec4 v_color;

uniform vec4 u_lineShape;

void main() {
    int line = gl_VertexID >> 2;
    int corner = gl_VertexID & 3;
    uvec4 startTexel = FetchTexel(2 * line);
    uvec4 endTexel = FetchTexel(2 * line + 1);
    vec4 start = ToClipSpace(startTexel);
    vec4 end = ToClipSpace(endTexel);
    vec2 parts = CutEnds(startTexel.xyz, endTexel.xyz, start, end);
    bool isDrawn = IsFinite(startTexel.xyz) && min(start.w, end.w) > 0.0;

    vec2 toNdc = 2.0 / u_viewRect.zw;
    vec2 along = (end.xy / end.w - start.xy / start.w) / toNdc;
    float squaredLength = dot(along, along);
    vec2 direction =
        squaredLength > kShortestLength * kShortestLength ? along * inversesqrt(squaredLength) : vec2(1.0, 0.0);

    float isEnd = IsAtEnd(corner);
    vec4 clip = isEnd > 0.5 ? end : start;
    vec2 offset = SideOf(corner) * vec2(-direction.y, direction.x);
    // A square cap is half the width longer. A cut end is none.
    bool isCut = isEnd > 0.5 ? parts.y < 1.0 : parts.x > 0.0;
    offset += (isCut ? 0.0 : u_lineShape.x * (2.0 * isEnd - 1.0)) * direction;
    // Scaled by w, so that the corner keeps its distance in pixels after the division.
    vec2 place = clip.xy + clip.w * max(HalfWidth(clip.w), 0.5) * toNdc * offset;
    gl_Position = isDrawn ? vec4(place, ShiftedDepth(clip), clip.w) : kCollapsedVertex;
    gl_PointSize = 1.0;
    v_color = ValueAt(startTexel, endTexel, parts, isEnd > 0.5);
}
