// Rays and a sphere, met in the sphere's own space.
#include "SoftwareSphere.h"

namespace zarvex::testing {

namespace {

Vector3 Column(QMatrix4x4 const& matrix, int column) {
    return {matrix(0, column), matrix(1, column), matrix(2, column)};
}

} // namespace

SoftwareSphere::SoftwareSphere(QMatrix4x4 const& model) : m_center(Column(model, 3)) {
    Vector3 const x = Column(model, 0);
    Vector3 const y = Column(model, 1);
    Vector3 const z = Column(model, 2);
    double const determinant = Dot(x, Cross(y, z));
    m_inverse[0] = 1.0 / determinant * Cross(y, z);
    m_inverse[1] = 1.0 / determinant * Cross(z, x);
    m_inverse[2] = 1.0 / determinant * Cross(x, y);
}

std::optional<SurfacePoint> SoftwareSphere::Meet(Ray const& ray) const {
    Vector3 const origin = ToModel(ray.origin - m_center);
    Vector3 const direction = ToModel(ray.direction);
    // |origin + t direction| = 1
    double const a = Dot(direction, direction);
    double const b = Dot(origin, direction);
    double const discriminant = b * b - a * (Dot(origin, origin) - 1.0);
    if (discriminant < 0.0)
        return std::nullopt;
    double const root = std::sqrt(discriminant);
    double const t = (b + root < 0.0 ? -b - root : -b + root) / a;
    if (t < 0.0)
        return std::nullopt;
    return SurfacePoint{ray.origin + t * ray.direction, NormalToWorld(origin + t * direction)};
}

Vector3 SoftwareSphere::ToModel(Vector3 const& direction) const {
    return {Dot(m_inverse[0], direction), Dot(m_inverse[1], direction), Dot(m_inverse[2], direction)};
}

Vector3 SoftwareSphere::NormalToWorld(Vector3 const& normal) const {
    // Planes, and so normals, are transformed by the inverse, transposed.
    return normal.x * m_inverse[0] + normal.y * m_inverse[1] + normal.z * m_inverse[2];
}

} // namespace zarvex::testing
