// A light with a place or a direction.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>

#include <bgfx/bgfx.h>

#include <array>
#include <cstdint>
#include <string>

class QColor;
class QVector4D;

namespace zarvex::zx3DQt {

/// A light: a position in world space and three colours, each a vec4 uniform that is named after the light.
/// The lighting program reads the lights whose names are "u_light0" to "u_light7".
///
/// Position (x, y, z, 1) is a point that shines in all directions, without getting weaker with distance;
/// (x, y, z, 0) is the direction towards a light that is infinitely far away; (0, 0, 0, 0) is the viewer.
///
/// A submitted light shines until another one of its name is submitted, in the order in which bgfx draws.
/// `BGFXLightingContext` keeps several, and turns off those that it no longer has. Where no light was ever
/// submitted, or none but those whose colours are all zero, alpha included, the viewer carries a white one.
///
/// Lifetime, thread and errors as for `BGFXMaterial`.
class ZX3DQT_EXPORT BGFXPointLightSource : private zx3D::ContextListener {
public:
    /// At (0, 0, 0, 0), black and transparent: it does not shine. Without a name.
    BGFXPointLightSource();
    /// At (0, 0, 0, 0), black and transparent.
    explicit BGFXPointLightSource(std::string const& name);
    /// With the given values, without uniforms.
    BGFXPointLightSource(std::string const& name, QVector4D position, QColor const& ambient,
                         QColor const& diffuse, QColor const& specular);
    /// Takes over the uniforms and the name.
    BGFXPointLightSource(BGFXPointLightSource&& other);
    /// Takes the name, and refers to the other's uniforms; its own, if it had any, are forgotten.
    BGFXPointLightSource& operator=(BGFXPointLightSource&& other);
    ~BGFXPointLightSource();

    /// Creates the uniforms `name` + "_position", "_ambient", "_diffuse" and "_specular". The library
    /// must run. Destroys none that exist: call it once, or after `DestroyUniforms`.
    void CreateUniforms();
    /// Destroys the uniforms that exist.
    void DestroyUniforms();

    /// Sets the uniforms for the next draw. Those that do not exist, or are of an earlier run of the library,
    /// are left out with a warning.
    void Submit() const;

    // The values reach the GPU with the next `Submit`, a name with the next `CreateUniforms`.

    /// World space; the meaning of w is above.
    void SetPosition(QVector4D const& position);
    /// What the light adds everywhere.
    void SetAmbient(QColor const& color);
    /// What it adds where it reaches.
    void SetDiffuse(QColor const& color);
    /// What it adds to highlights.
    void SetSpecular(QColor const& color);
    /// The first part of the uniforms' names.
    void SetName(std::string const& name);

private:
    friend class BGFXLightingContext;
    friend class SurfaceLight; // has batches lit by it

    enum Value { Position, Ambient, Diffuse, Specular, Count };

    void OnContextStopping() override;

    bool HasUniforms() const;

    /// A submission among all those of the process.
    struct Submission {
        zx3D::ContextRun run;
        std::uint16_t uniform = 0; ///< the position's
        std::uint64_t number = 0;  ///< counts from 1; 0 is none
    };

    Submission CountSubmission() const;

    /// True when bgfx still has what this light submitted last: no other light of its name was submitted
    /// since.
    bool IsLastSubmitted() const;

    std::array<std::array<float, 4>, Count> m_values{};
    std::array<bgfx::UniformHandle, Count> m_uniforms;
    zx3D::ContextRun m_run; ///< in which the uniforms were created
    std::string m_name;
    std::string m_uniformName; ///< the name at the time of `CreateUniforms`
    mutable Submission m_lastSubmission;
};

/// Builds a light in a chain:
///
///     auto lamp = BGFXPointLightSourceBuilder().DefaultDiffuse().SetName("u_light0").Build();
class ZX3DQT_EXPORT BGFXPointLightSourceBuilder {
public:
    // Recipes open a chain: they forget what was set before, the name included.

    /// Dim light without a direction: ambient (76, 76, 76), diffuse black, specular (51, 51, 51).
    BGFXPointLightSourceBuilder& DefaultAmbient();
    /// A lamp: ambient (102, 102, 102), diffuse (178, 178, 178), specular white.
    BGFXPointLightSourceBuilder& DefaultDiffuse();

    /// As the light's.
    /// @{
    BGFXPointLightSourceBuilder& SetName(std::string const& name);
    BGFXPointLightSourceBuilder& SetPosition(QVector4D const& position);
    BGFXPointLightSourceBuilder& SetAmbient(QColor const& color);
    BGFXPointLightSourceBuilder& SetDiffuse(QColor const& color);
    BGFXPointLightSourceBuilder& SetSpecular(QColor const& color);
    /// @}

    /// The light, without uniforms. A second one has the same values and no name.
    BGFXPointLightSource Build();

private:
    BGFXPointLightSource m_light;
};

} // namespace zarvex::zx3DQt
