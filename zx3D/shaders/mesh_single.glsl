// A mesh that is drawn once, where it is.

vec3 PositionOf(vec3 position) { return position; }

vec3 NormalOf(vec3 normal) { return normal; }

vec4 ColorOf(vec4 color) { return color; }
