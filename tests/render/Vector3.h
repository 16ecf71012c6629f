// Vectors in double precision, for references that are to be more exact than what they check.
#pragma once

#include <bx/math.h>

#include <cmath>

namespace zarvex::testing {

struct Vector3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

constexpr Vector3 operator+(Vector3 const& a, Vector3 const& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr Vector3 operator-(Vector3 const& a, Vector3 const& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

constexpr Vector3 operator*(double factor, Vector3 const& a) {
    return {factor * a.x, factor * a.y, factor * a.z};
}

/// By component.
constexpr Vector3 operator*(Vector3 const& a, Vector3 const& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

constexpr double Dot(Vector3 const& a, Vector3 const& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

constexpr Vector3 Cross(Vector3 const& a, Vector3 const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline Vector3 Normalized(Vector3 const& a) {
    return 1.0 / std::sqrt(Dot(a, a)) * a;
}

inline bx::Vec3 ToVec3(Vector3 const& a) {
    return {static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(a.z)};
}

} // namespace zarvex::testing
