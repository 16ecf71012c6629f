// Where the lights are, and how bright.
#include "Lights.h"

#include <QColor>
#include <QVector4D>

namespace viewer {

using namespace zarvex;

namespace {

struct Light {
    QVector3D direction; ///< towards it; to the right, up, and towards the viewer
    QColor ambient;
    QColor diffuse;
    QColor specular;
};

std::array<Light, 3> const kLights{{
    {{-0.55f, 0.75f, 0.60f}, QColor(42, 43, 47), QColor(158, 154, 146), QColor(170, 168, 164)},
    {{0.85f, 0.05f, 0.45f}, QColor(9, 10, 13), QColor(36, 43, 55), QColor(26, 30, 38)},
    {{0.0f, 0.0f, 1.0f}, QColor(0, 0, 0), QColor(50, 50, 52), QColor(30, 30, 30)},
}};

zx3DQt::BGFXPointLightSource Build(std::size_t index) {
    Light const& light = kLights[index];
    return zx3DQt::BGFXPointLightSourceBuilder()
        .SetName("u_light" + std::to_string(index))
        .SetAmbient(light.ambient)
        .SetDiffuse(light.diffuse)
        .SetSpecular(light.specular)
        .Build();
}

/// Infinitely far away: w is 0.
QVector4D PositionOf(Light const& light, OrbitCamera const& camera) {
    return {light.direction.x() * ScreenRight(camera) + light.direction.y() * ScreenUp(camera) +
                light.direction.z() * TowardsViewer(camera),
            0.0f};
}

} // namespace

Lights::Lights() : m_lights{Build(0), Build(1), Build(2)} {}

void Lights::Submit(OrbitCamera const& camera) {
    for (std::size_t i = 0; i < m_lights.size(); ++i) {
        if (!m_created)
            m_lights[i].CreateUniforms();
        m_lights[i].SetPosition(PositionOf(kLights[i], camera));
        m_lights[i].Submit();
    }
    m_created = true;
}

void Lights::AddTo(zx3DQt::BGFXLightingContext& lights, OrbitCamera const& camera) {
    for (std::size_t i = 0; i < kLights.size(); ++i) {
        zx3DQt::BGFXPointLightSource light = Build(i);
        light.SetPosition(PositionOf(kLights[i], camera));
        lights.Add(std::move(light));
    }
}

} // namespace viewer
