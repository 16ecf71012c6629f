// The fragment stage of thin lines: inputs as line_vertex.glsl explains them.

layout(location = 0) in vec4 v_color;
layout(location = 1) noperspective in vec2 v_pixel;
layout(location = 2) noperspective in float v_fraction;
layout(location = 3) flat in vec3 v_anchor;

layout(location = 0) out vec4 o_color;

// The distance from the line's start in pixels. Seen from the end, it follows from the proportion of the two parts. The
// centres of the first and the last fragment may be a little beyond the line: the fraction is below 0 or above 1 there.
float DistanceFromStart() {
    float distanceFromAnchor = distance(v_pixel, v_anchor.xy);
    if (v_anchor.z == 0.0) {
        return distanceFromAnchor;
    }
    return distanceFromAnchor * max(v_fraction, 0.0) / max(abs(1.0 - v_fraction), 1e-6);
}
