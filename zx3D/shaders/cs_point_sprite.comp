// Expands each point into the two triangles of a screen-aligned square, one point per thread.
// u_pointSprite is (point count, size in pixels, 0, 0).

layout(local_size_x = 64) in;

// Per point: position (x, y, z, 1), colour.
layout(std430, binding = 0) readonly buffer Points { vec4 b_points[]; };
// Per vertex, six for each point: clip position, colour, (centre in NDC, half the size in pixels).
layout(std430, binding = 1) writeonly buffer Vertices { vec4 b_vertices[]; };

uniform mat4 u_modelViewProj;
uniform vec4 u_pointSprite;
uniform vec4 u_viewport;

const vec2 kCorners[6] = vec2[6](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(1.0, 1.0), //
                                 vec2(-1.0, -1.0), vec2(1.0, 1.0), vec2(-1.0, 1.0));

void main() {
    uint point = gl_GlobalInvocationID.x;
    if (point >= uint(u_pointSprite.x)) {
        return;
    }
    float size = u_pointSprite.y;
    vec4 clip = u_modelViewProj * vec4(b_points[2u * point].xyz, 1.0);
    vec4 color = b_points[2u * point + 1u];
    vec3 centre = clip.w == 0.0 ? vec3(0.0) : clip.xyz / clip.w;

    for (uint corner = 0u; corner < 6u; ++corner) {
        // Scaled by w, so that the corner keeps its distance in pixels after the perspective division.
        vec2 offset = clip.w * kCorners[corner] * size / u_viewport.xy;
        uint vertex = 3u * (6u * point + corner);
        b_vertices[vertex] = vec4(clip.xy + offset, clip.zw);
        b_vertices[vertex + 1u] = color;
        b_vertices[vertex + 2u] = vec4(centre, size * 0.5);
    }
}
