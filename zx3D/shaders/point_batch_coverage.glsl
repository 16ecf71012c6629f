// The part of a pixel that lies inside a circle of radius 1, where this is the distance from its centre: as that of a
// half-plane whose edge moves over the pixel. In quarters: where alpha is turned into samples, drivers round what lies
// between two numbers of samples up or down.

float CircleCoverage(float distance) {
    float perPixel = length(vec2(dFdx(distance), dFdy(distance)));
    return floor(4.0 * clamp(0.5 + (1.0 - distance) / perPixel, 0.0, 1.0) + 0.5) / 4.0;
}
