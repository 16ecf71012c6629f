// Where the vertices of a sprite go that must not be drawn: all to one place outside the view volume, so that their
// triangles are empty and clipped, and no division by zero is left to the rasteriser.

const vec4 kCollapsedVertex = vec4(2.0, 2.0, 2.0, 1.0);
