// A stipple that begins anew at each vertex, if there is one.

float StippleBefore(int line) { return 0.0; }
