// A point's colour is its own: the fourth word of its texel.

vec4 PointColor(uint word) { return UnpackColor(word); }
