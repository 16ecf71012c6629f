// A point's colour is that of a number, the fourth word of its texel, in a map of 256 colours.
// u_pointRange is (the number of the first colour, 1 / (that of the last minus it), 0, 0).

layout(binding = 1) uniform sampler2D s_colorMap;

uniform vec4 u_pointRange;

vec4 PointColor(uint word) {
    float share = IsNumber(word) ? clamp((uintBitsToFloat(word) - u_pointRange.x) * u_pointRange.y, 0.0, 1.0) : 0.0;
    return texelFetch(s_colorMap, ivec2(int(share * 255.0 + 0.5), 0), 0);
}
