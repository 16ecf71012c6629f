// What all programs for a batch's lines share.
// u_lineSize is (half the width in pixels, half of one in world units times clip w, and what clip z and clip w add to the
// depth, which is shifted so).

uniform mat4 u_modelViewProj;
uniform vec4 u_viewRect;
uniform vec4 u_lineSize;

// A line shorter than this, in pixels, has no direction.
const float kShortestLength = 1e-5;

vec4 ToClipSpace(uvec4 texel) { return u_modelViewProj * vec4(uintBitsToFloat(texel.xyz), 1.0); }

float ShiftedDepth(vec4 clip) { return dot(clip.zw, u_lineSize.zw); }

// In pixels, where clip w has this value.
float HalfWidth(float w) { return min(u_lineSize.x + u_lineSize.y / w, 32768.0); }

// Of the four corners of a line's rectangle, in order around it: whether it is at the end (1) or the start (0), and its side, -1 or 1.
float IsAtEnd(int corner) { return float((6 >> corner) & 1); }
float SideOf(int corner) { return float((12 >> corner) & 1) * 2.0 - 1.0; }

// From a position in front of the camera to any other: the direction on the screen and the distance, 0 when it is too short
// for one.
vec3 DirectionTo(vec4 here, vec4 there) {
    vec2 along = (there.xy * here.w - here.xy * there.w) * vec2(0.5, -0.5) * u_viewRect.zw;
    float reach = length(along);
    float inPixels = there.w > 0.0 ? reach / (here.w * there.w) : 1e9;
    bool hasDirection = reach > 0.0 && inPixels > kShortestLength;
    return hasDirection ? vec3(along / reach, inPixels) : vec3(0.0);
}
