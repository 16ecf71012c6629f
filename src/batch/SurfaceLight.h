// What a batch's surfaces are lit by, in the numbers that their programs read.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace zarvex::zx3DQt {

class BGFXLightingContext;
class BGFXMaterial;
class BGFXPointLightSource;
class BGFXViewContext;

/// Lights times a material, as the lighting program multiplies them. Lights that do not shine are left out;
/// without any, there is the one that the viewer carries.
class SurfaceLight {
public:
    using Vec4 = std::array<float, 4>;

    static constexpr std::size_t kMostLights = 8;

    /// Of the lights of the lighting program, "u_light0" to "u_light7". Either may be null: no lights, the
    /// vertices' own colours.
    SurfaceLight(BGFXLightingContext const* lights, BGFXMaterial const* material,
                 BGFXViewContext const& view);

    /// 1, 2, 4 or 8: so many as a program has room for.
    std::size_t GetRoom() const { return m_lights.size() / 3; }
    /// Whether there is but one light, far away, and no highlight.
    bool IsOneDirection() const { return m_isOneDirection; }

    /// For each light place, diffuse and specular colour; black ones fill the room.
    std::vector<Vec4> const& GetLights() const { return m_lights; }
    /// Ambient light, and the factor of alpha.
    Vec4 const& GetAmbient() const { return m_ambient; }
    /// Emission, and the shininess.
    Vec4 const& GetEmission() const { return m_emission; }
    /// A place, w being 1, or a direction, w being 0.
    Vec4 const& GetViewer() const { return m_viewer; }

private:
    struct Surface;

    static std::array<BGFXPointLightSource const*, kMostLights> Named(BGFXLightingContext const& lights);
    void Add(Surface const& surface, Vec4 const& position, Vec4 const& ambient, Vec4 const& diffuse,
             Vec4 const& specular);

    Vec4 m_viewer{};
    Vec4 m_ambient{};
    Vec4 m_emission{};
    std::vector<Vec4> m_lights;
    bool m_isOneDirection = false;
};

} // namespace zarvex::zx3DQt
