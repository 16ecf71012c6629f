// Blinn-Phong lighting, computed without a GPU.
#pragma once

#include "Vector3.h"

#include <QColor>
#include <QVector4D>

#include <vector>

namespace zarvex::testing {

struct SoftwareMaterial {
    QColor ambient;
    QColor diffuse;
    QColor specular;
    QColor emission;
    float shininess = 1.0f;
};

/// At xyz / w, or, when w is 0, infinitely far away in the direction of xyz, or, when all are 0, where the
/// viewer is.
struct SoftwareLight {
    QVector4D position;
    QColor ambient;
    QColor diffuse;
    QColor specular;
};

/// A place on a surface.
struct SurfacePoint {
    Vector3 position;
    Vector3 normal; ///< of any length, on either side
};

/// What the viewer sees there, red, green and blue without bounds. Normals that point away from the viewer
/// are turned round; highlights are only where the light reaches.
Vector3 Illuminate(SoftwareMaterial const& material, std::vector<SoftwareLight> const& lights,
                   SurfacePoint const& point, Vector3 const& toViewer);

/// The channels as bytes.
QColor ToBytes(Vector3 const& color);

} // namespace zarvex::testing
