// The vertex stage of what fades with distance: where it is, seen from the place that distances are measured from.

// Homogeneous. It depends linearly on clip space, so that interpolated like any other variable it is right everywhere: in
// perspective along thin lines, and on the screen along wide ones, whose corners come in NDC.
layout(location = 4) out vec4 v_place;

// To the place, world units: from the world for thin lines, from clip space for wide ones.
uniform mat4 u_fadePlace;

void WritePlace(vec4 position) { v_place = u_fadePlace * position; }
