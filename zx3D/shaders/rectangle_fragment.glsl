// The fragment stage of wide lines: inputs as rectangle_vertex.glsl writes them.

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_pixel;
layout(location = 2) flat in vec2 v_start;
layout(location = 3) flat in vec2 v_end;

layout(location = 0) out vec4 o_color;

// In pixels. Across the line the pattern is the same, so only the way along it counts.
float DistanceFromStart() { return max(dot(v_pixel - v_start, normalize(v_end - v_start)), 0.0); }
