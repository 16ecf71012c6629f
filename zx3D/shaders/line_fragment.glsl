// The fragment stage of thin lines: inputs as line_vertex.glsl explains them.

layout(location = 0) in vec4 v_color;
layout(location = 1) noperspective in vec2 v_pixel;
layout(location = 2) noperspective in float v_rest;
layout(location = 3) flat in vec3 v_anchor;

layout(location = 0) out vec4 o_color;

// The distance from the line's start in pixels. Seen from the end, it follows from the proportion of the two parts, the
// less exactly the nearer the end is. Where one end is behind the camera, what is seen lies beyond the other one: the rest
// is more than 1 or less than 0 there.
float DistanceFromStart() {
    float distanceFromAnchor = distance(v_pixel, v_anchor.xy);
    if (v_anchor.z == 0.0) {
        return distanceFromAnchor;
    }
    return distanceFromAnchor * abs(1.0 - v_rest) / max(abs(v_rest), 1e-30);
}
