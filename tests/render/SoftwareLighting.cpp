// The formula of Blinn and Phong, in double precision.
#include "SoftwareLighting.h"

#include <algorithm>

namespace zarvex::testing {

namespace {

Vector3 ToVector(QColor const& color) {
    return {color.redF(), color.greenF(), color.blueF()};
}

Vector3 DirectionTo(SoftwareLight const& light, Vector3 const& from, Vector3 const& toViewer) {
    QVector4D const& p = light.position;
    if (p.isNull())
        return toViewer;
    Vector3 const xyz{p.x(), p.y(), p.z()};
    return Normalized(p.w() == 0.0f ? xyz : 1.0 / p.w() * xyz - from);
}

} // namespace

Vector3 Illuminate(SoftwareMaterial const& material, std::vector<SoftwareLight> const& lights,
                   SurfacePoint const& point, Vector3 const& toViewer) {
    Vector3 const v = Normalized(toViewer);
    Vector3 const outwards = Normalized(point.normal);
    Vector3 const n = Dot(outwards, v) < 0.0 ? -1.0 * outwards : outwards;
    Vector3 sum = ToVector(material.emission);
    for (SoftwareLight const& light : lights) {
        sum = sum + ToVector(light.ambient) * ToVector(material.ambient);
        Vector3 const l = DirectionTo(light, point.position, v);
        double const cosine = Dot(n, l);
        if (cosine <= 0.0)
            continue;
        double const highlight = std::pow(std::max(Dot(n, Normalized(l + v)), 0.0), material.shininess);
        sum = sum + cosine * (ToVector(light.diffuse) * ToVector(material.diffuse)) +
              highlight * (ToVector(light.specular) * ToVector(material.specular));
    }
    return sum;
}

QColor ToBytes(Vector3 const& color) {
    auto const byte = [](double channel) {
        return static_cast<int>(std::lround(std::clamp(channel, 0.0, 1.0) * 255.0));
    };
    return QColor(byte(color.x), byte(color.y), byte(color.z));
}

} // namespace zarvex::testing
