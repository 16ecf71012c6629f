// The fragment stage of lines of any shape: inputs and u_lineShape as line_batch_shape.glsl explains them.

layout(location = 0) in vec2 v_pixel;
layout(location = 1) flat in vec4 v_ends;
layout(location = 2) flat in vec4 v_direction;
layout(location = 3) flat in vec4 v_neighbours;
layout(location = 4) flat in vec4 v_reach;
layout(location = 5) flat in vec4 v_depth;
layout(location = 6) flat in vec4 v_startColor;
layout(location = 7) flat in vec4 v_endColor;

layout(location = 0) out vec4 o_color;

uniform vec4 u_lineShape;

struct LinePlace {
    float outside;   // pixels from the line's edge, negative inside
    float halfWidth; // pixels
    float part;      // of the way from start to end, 0 to 1
    float distance;  // from the start, pixels of the stipple
};

// Outside an end, whose line runs from `end` inwards; `across` is outside of its sides. What is nearer to the neighbour is
// drawn by that, as far as it reaches, and both decide alike: so no pixel is drawn twice, and none is missing. Half of the
// corner between the two belongs to each.
float OutsideEnd(vec2 pixel, vec2 end, vec2 inwards, vec2 neighbour, float reach, float halfWidth, float across, bool isEnd) {
    const float kElsewhere = 1e9;
    vec2 place = pixel - end;
    float along = dot(place, inwards);
    float butt = max(across, -along);
    float square = max(across, -along - halfWidth * u_lineShape.x);
    float disc = along < 0.0 ? length(place) - halfWidth : across;
    float cap = reach < 0.0 ? butt : mix(square, disc, u_lineShape.y);

    float cosine = dot(inwards, neighbour);
    float squaredSine = max(0.5 * (1.0 - cosine), 0.0); // of half the angle between the two
    vec2 outwards = -(inwards + neighbour);
    float bevel = dot(place, outwards) * inversesqrt(max(dot(outwards, outwards), 1e-8)) - halfWidth * sqrt(squaredSine);
    float pointed = squaredSine * 2.0 * u_lineShape.w >= 1.0 ? across : max(across, bevel);
    float corner = along < 0.0 ? mix(pointed, disc, u_lineShape.z) : across;

    float nearer = dot(place, inwards - neighbour);
    bool isNeighbours = isEnd ? nearer <= 0.0 : nearer < 0.0;
    float join = isNeighbours ? (dot(place, neighbour) <= reach ? kElsewhere : butt) : corner;
    return reach > 0.0 ? join : cap;
}

LinePlace PlaceOnLine() {
    // The pixel's middle exactly, however v_pixel was rounded: neighbours must agree. A little beside it, as rasterisers
    // decide where an edge runs through middles: what is left and above is inside.
    vec2 pixel = floor(v_pixel) + vec2(0.5 + 1.0 / 256.0, 0.5 + 1.0 / 512.0);
    vec2 direction = v_direction.xy;
    vec2 place = pixel - v_ends.xy;
    float along = clamp(dot(place, direction), 0.0, v_direction.z);
    float part = along / max(v_direction.z, 1e-6);
    float halfWidth = mix(v_reach.z, v_reach.w, part);
    float across = abs(direction.x * place.y - direction.y * place.x) - max(halfWidth, 0.5);
    float atStart = OutsideEnd(pixel, v_ends.xy, direction, v_neighbours.xy, v_reach.x, max(v_reach.z, 0.5), across, false);
    float atEnd = OutsideEnd(pixel, v_ends.zw, -direction, v_neighbours.zw, v_reach.y, max(v_reach.w, 0.5), across, true);
    return LinePlace(max(atStart, atEnd), halfWidth, part, v_direction.w + along);
}

// Evenly in the world, not on the screen.
vec4 ColorOf(LinePlace place) {
    float atEnd = place.part * v_depth.w;
    return mix(v_startColor, v_endColor, atEnd / max(mix(v_depth.z, v_depth.w, place.part), 1e-30));
}

// That of the line's middle; beyond its ends, that of the end.
float DepthOf(LinePlace place) {
    float depth = mix(v_depth.x, v_depth.y, place.part);
#ifdef VULKAN
    return depth;
#else
    return depth * 0.5 + 0.5;
#endif
}

// How much of the pixel is covered, by what fades out over one. Below a pixel, a line is fainter instead of thinner.
float Coverage(LinePlace place) {
    return clamp(0.5 - place.outside, 0.0, 1.0) * min(2.0 * place.halfWidth, 1.0);
}
