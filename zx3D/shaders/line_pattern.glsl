// Whether a line is drawn at a distance from its start, in pixels.

// Lines whose ends are at pixel centres put their fragments at whole distances, exactly where one pixel of a pattern
// ends and the next begins. Rounding would decide there; this small shift does instead, always the same way.
const float kBoundaryShift = 1.0 / 128.0;

// A 16-bit mask, its lowest bit first, each bit `factor` pixels long and drawn when it is set.
bool IsStippleDrawn(float distance, float mask, float factor) {
    float bit = mod(floor((distance + kBoundaryShift) / max(factor, 1.0)), 16.0);
    return ((int(mask) >> int(bit)) & 1) != 0;
}

// Dashes and gaps of the given lengths in turn, beginning with a dash; solid unless both have a length.
bool IsDashDrawn(float distance, float dashLength, float gapLength) {
    if (dashLength <= 0.0 || gapLength <= 0.0) {
        return true;
    }
    return mod(distance + kBoundaryShift, dashLength + gapLength) < dashLength;
}
