// Lights, material and viewer as fs_lighting reads them, worked out once for a batch instead of for each
// pixel.
#include "SurfaceLight.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/BGFXViewContext.h>

#include <QVector3D>

#include <algorithm>
#include <bit>
#include <string_view>

namespace zarvex::zx3DQt {

namespace {

using Vec4 = SurfaceLight::Vec4;

bool IsSet(Vec4 const& value) {
    return std::ranges::any_of(value, [](float part) { return part != 0.0f; });
}

Vec4 Place(QVector3D const& place) {
    return {place.x(), place.y(), place.z(), 1.0f};
}

Vec4 Direction(QVector3D const& direction) {
    QVector3D const unit = direction.normalized();
    return {unit.x(), unit.y(), unit.z(), 0.0f};
}

/// Where the camera is; of a parallel projection, in which direction, against that in which clip depth grows.
Vec4 ViewerOf(BGFXViewContext const& view) {
    QMatrix4x4 const& projection = view.GetProjectionMatrix();
    QMatrix4x4 const toWorld = view.GetViewMatrix().inverted();
    if (projection(3, 2) != 0.0f)
        return Place(toWorld.column(3).toVector3D());
    return Direction(toWorld.column(2).toVector3D() * (projection(2, 2) > 0.0f ? -1.0f : 1.0f));
}

Vec4 PlaceOf(Vec4 const& position, Vec4 const& viewer) {
    QVector3D const xyz(position[0], position[1], position[2]);
    if (position[3] != 0.0f)
        return Place(xyz / position[3]);
    return xyz.isNull() ? viewer : Direction(xyz);
}

Vec4 Product(Vec4 const& a, Vec4 const& b) {
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2], 0.0f};
}

constexpr Vec4 kHeadlightAmbient{0.3f, 0.3f, 0.3f, 1.0f};
constexpr Vec4 kHeadlightDiffuse{0.7f, 0.7f, 0.7f, 1.0f};
constexpr Vec4 kHeadlightSpecular{1.0f, 1.0f, 1.0f, 1.0f};

} // namespace

/// As a material without any value has it.
struct SurfaceLight::Surface {
    Vec4 ambient{1.0f, 1.0f, 1.0f, 1.0f};
    Vec4 diffuse{1.0f, 1.0f, 1.0f, 1.0f};
    Vec4 specular{};
    Vec4 emission{};
    float shininess = 1.0f;
};

SurfaceLight::SurfaceLight(BGFXLightingContext const* lights, BGFXMaterial const* material,
                           BGFXViewContext const& view)
    : m_viewer(ViewerOf(view)) {
    Surface surface;
    if (material != nullptr && std::ranges::any_of(material->m_values, IsSet)) {
        surface = {material->m_values[BGFXMaterial::Ambient], material->m_values[BGFXMaterial::Diffuse],
                   material->m_values[BGFXMaterial::Specular], material->m_values[BGFXMaterial::Emission],
                   std::max(material->m_values[BGFXMaterial::Shininess][0], 1.0f)};
    }
    m_emission = {surface.emission[0], surface.emission[1], surface.emission[2], surface.shininess};
    m_lights.reserve(3 * kMostLights);
    if (lights != nullptr) {
        for (BGFXPointLightSource const* const light : Named(*lights)) {
            if (light != nullptr)
                Add(surface, light->m_values[BGFXPointLightSource::Position],
                    light->m_values[BGFXPointLightSource::Ambient],
                    light->m_values[BGFXPointLightSource::Diffuse],
                    light->m_values[BGFXPointLightSource::Specular]);
        }
    }
    if (m_lights.empty())
        Add(surface, Vec4{}, kHeadlightAmbient, kHeadlightDiffuse, kHeadlightSpecular);
    m_ambient[3] = surface.diffuse[3];

    bool const isFar = m_lights[0][3] == 0.0f;
    m_isOneDirection = m_lights.size() == 3 && isFar && !IsSet(m_lights[2]);
    m_lights.resize(3 * std::bit_ceil(m_lights.size() / 3));
}

/// By their names; of those of one name, the last.
std::array<BGFXPointLightSource const*, SurfaceLight::kMostLights>
SurfaceLight::Named(BGFXLightingContext const& lights) {
    std::array<BGFXPointLightSource const*, kMostLights> named{};
    for (auto const& [id, light] : lights.m_lights) {
        std::string_view const name = light.m_name;
        constexpr std::string_view prefix = "u_light";
        if (name.size() != prefix.size() + 1 || !name.starts_with(prefix))
            continue;
        auto const number = static_cast<std::size_t>(name.back() - '0');
        if (number < kMostLights)
            named[number] = &light;
    }
    return named;
}

void SurfaceLight::Add(Surface const& surface, Vec4 const& position, Vec4 const& ambient, Vec4 const& diffuse,
                       Vec4 const& specular) {
    if (!IsSet(ambient) && !IsSet(diffuse) && !IsSet(specular))
        return;
    Vec4 const added = Product(ambient, surface.ambient);
    for (std::size_t i = 0; i < 3; ++i)
        m_ambient[i] += added[i];
    m_lights.insert(m_lights.end(), {PlaceOf(position, m_viewer), Product(diffuse, surface.diffuse),
                                     Product(specular, surface.specular)});
}

} // namespace zarvex::zx3DQt
