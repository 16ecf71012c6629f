// What is left of a line of which an end is behind the camera: as src/render/NearPlaneCut.h has it, and explains it.
//
// The clip coordinates of a long line round to floats by some millionths of its length, which is much where the near plane
// is near, and moves what is cut there by pixels. So here a number is the sum of two floats, the second being what the first
// has rounded away (Dekker, "A Floating-Point Technique for Extending the Available Precision", 1971). "precise" keeps
// compilers from simplifying that away.

#if __VERSION__ < 400
// The GLSL of vertex shaders has no "precise". There, what was rounded passes through a bitwise operation with a zero that
// compilers do not know: a component of a batch's uniform that is never anything else.
#define precise
#define ROUNDED(a) uintBitsToFloat(floatBitsToUint(a) | uvec4(u_batchRange.w))
#else
#define ROUNDED(a) a
#endif

struct Vec4Sum {
    vec4 value;
    vec4 rest;
};

Vec4Sum Add(vec4 a, vec4 b) {
    precise vec4 sum = ROUNDED(a + b);
    precise vec4 bInSum = ROUNDED(sum - a);
    precise vec4 rest = (a - (sum - bInSum)) + (b - bInSum);
    return Vec4Sum(sum, rest);
}

Vec4Sum Add(Vec4Sum a, Vec4Sum b) {
    Vec4Sum sum = Add(a.value, b.value);
    precise vec4 rest = sum.rest + (a.rest + b.rest);
    return Add(sum.value, rest);
}

// The first 12 of the 24 digits: products of such halves are exact.
vec4 UpperHalf(vec4 a) {
    return uintBitsToFloat(floatBitsToUint(a) & uvec4(0xfffff000u));
}

Vec4Sum Multiply(vec4 a, vec4 b) {
    vec4 aUpper = UpperHalf(a);
    vec4 bUpper = UpperHalf(b);
    precise vec4 aLower = a - aUpper;
    precise vec4 bLower = b - bUpper;
    precise vec4 product = ROUNDED(a * b);
    precise vec4 rest = ((aUpper * bUpper - product) + aUpper * bLower + aLower * bUpper) + aLower * bLower;
    return Vec4Sum(product, rest);
}

Vec4Sum Multiply(Vec4Sum a, Vec4Sum b) {
    Vec4Sum product = Multiply(a.value, b.value);
    precise vec4 rest = product.rest + (a.value * b.rest + a.rest * b.value);
    return Add(product.value, rest);
}

Vec4Sum ToClip(vec3 position) {
    Vec4Sum clip = Vec4Sum(u_modelViewProj[3], vec4(0.0));
    for (int i = 0; i < 3; ++i) {
        clip = Add(clip, Multiply(u_modelViewProj[i], vec4(position[i])));
    }
    return clip;
}

// From the lower and the upper limit of the depths that are drawn, and from the plane of the smallest w.
Vec4Sum DistancesFromPlanes(Vec4Sum clip, float smallestW) {
#ifdef VULKAN
    const float kLowerW = 0.0;
#else
    const float kLowerW = 1.0;
#endif
    const vec4 kW = vec4(kLowerW, 1.0, 1.0, 0.0);
    const vec4 kZ = vec4(1.0, -1.0, 0.0, 0.0);
    Vec4Sum w = Vec4Sum(clip.value.w * kW, clip.rest.w * kW);
    Vec4Sum z = Vec4Sum(clip.value.z * kZ, clip.rest.z * kZ);
    return Add(Add(w, z), Vec4Sum(vec4(0.0, 0.0, -smallestW, 0.0), vec4(0.0)));
}

// The clip position where the line from `front`, whose w is positive, to `behind` leaves the depths that are drawn. With a w
// of 0 when nothing of the line is in them.
vec4 CutAtNearPlane(vec3 front, vec3 behind) {
    const float kSmallestW = 1.0 / 16777216.0; // of the w in front
    Vec4Sum clipFront = ToClip(front);
    Vec4Sum clipBehind = ToClip(behind);
    float smallestW = clipFront.value.w * kSmallestW;
    Vec4Sum distancesFront = DistancesFromPlanes(clipFront, smallestW);
    Vec4Sum distancesBehind = DistancesFromPlanes(clipBehind, smallestW);

    float part = 1.0;
    Vec4Sum partBehind = Vec4Sum(vec4(1.0), vec4(0.0));
    Vec4Sum partFront = Vec4Sum(vec4(0.0), vec4(0.0));
    for (int i = 0; i < 3; ++i) {
        float a = distancesFront.value[i];
        float b = distancesBehind.value[i];
        if (!(a >= 0.0 || b >= 0.0)) {
            return vec4(0.0);
        }
        if (b < 0.0 && a / (a - b) < part) {
            part = a / (a - b);
            partBehind = Vec4Sum(vec4(a), vec4(distancesFront.rest[i]));
            partFront = Vec4Sum(vec4(-b), vec4(-distancesBehind.rest[i]));
        }
    }
    return Add(Multiply(clipBehind, partBehind), Multiply(clipFront, partFront)).value;
}
