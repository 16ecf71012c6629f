// A sphere under a model transform, as rays meet it.
#pragma once

#include "SoftwareCamera.h"
#include "SoftwareLighting.h"

#include <QMatrix4x4>

#include <optional>

namespace zarvex::testing {

/// The sphere of radius 1 around the origin, moved, turned and scaled by an affine matrix.
class SoftwareSphere {
public:
    explicit SoftwareSphere(QMatrix4x4 const& model);

    /// The first point of the ray on the surface, or, from within, the only one.
    std::optional<SurfacePoint> Meet(Ray const& ray) const;

private:
    Vector3 ToModel(Vector3 const& direction) const;
    Vector3 NormalToWorld(Vector3 const& normal) const;

    Vector3 m_center;
    Vector3 m_inverse[3]; ///< the rows of the inverse of the matrix's linear part
};

} // namespace zarvex::testing
