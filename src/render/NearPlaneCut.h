// What is left of a line of which an end is behind the camera.
#pragma once

#include <bx/math.h>

#include <algorithm>

namespace zarvex::zx3DQt {

/// A position in clip space. In doubles: the clip coordinates of a long line round to floats by some
/// millionths of its length, which is much where the near plane is near, and moves what is cut there by
/// pixels.
struct ClipPosition {
    double x, y, z, w;
};

/// `matrix` is column-major, world to clip space.
inline ClipPosition ToClip(float const* matrix, bx::Vec3 const& position) {
    auto const row = [&](int i) {
        return double(matrix[i]) * position.x + double(matrix[i + 4]) * position.y +
               double(matrix[i + 8]) * position.z + double(matrix[i + 12]);
    };
    return {row(0), row(1), row(2), row(3)};
}

/// Moves `behind`, the end of a line whose w is 0 or less, to where the line that comes from `front`, whose w
/// is positive, leaves the depths that are drawn. False when nothing of the line is in them.
///
/// GPUs draw what has −w ≤ z ≤ w on OpenGL ("homogeneous depth", OpenGL 4.6, 13.7), and 0 ≤ z ≤
/// w elsewhere (Vulkan 1.3, 27.4): nothing with a negative w. A plane of distance 0 is crossed
/// at the part a / (a − b) of a line whose ends have the distances a ≥ 0 and b < 0 (Blinn and Newell,
/// "Clipping Using Homogeneous Coordinates", 1978). Of most projections the near plane is the lower limit, of
/// those with reversed depths the upper one. The plane of a w that is small beside the other end's comes
/// first where a projection has its near plane in the camera, or behind it.
///
/// cs_rectangle_sprite does the same on the GPU.
inline bool CutAtNearPlane(ClipPosition const& front, ClipPosition& behind, bool hasHomogeneousDepth) {
    constexpr double smallestW = 0x1p-24; // of the w in front
    auto const lower = [&](ClipPosition const& p) { return hasHomogeneousDepth ? p.z + p.w : p.z; };
    auto const upper = [](ClipPosition const& p) { return p.w - p.z; };
    auto const camera = [&](ClipPosition const& p) { return p.w - smallestW * front.w; };

    double part = 1.0;
    auto const cut = [&](auto const& distance) {
        double const a = distance(front);
        double const b = distance(behind);
        if (b < 0.0)
            part = std::min(part, a / (a - b)); // negative when a is
        return a >= 0.0 || b >= 0.0;
    };
    if (!cut(lower) || !cut(upper) || !cut(camera))
        return false;
    auto const between = [&](double from, double to) { return from + part * (to - from); };
    behind = {between(front.x, behind.x), between(front.y, behind.y), between(front.z, behind.z),
              between(front.w, behind.w)};
    return true;
}

} // namespace zarvex::zx3DQt
