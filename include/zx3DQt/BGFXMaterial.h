// How a surface reflects light.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>

#include <bgfx/bgfx.h>

#include <array>
#include <string>

class QColor;

namespace zarvex::zx3DQt {

/// A Blinn-Phong material: four colours and a shininess, each a vec4 uniform that is named after the
/// material. The lighting program reads the one whose name is "u_material":
///
///     BGFXMaterial steel("u_material", ambient, diffuse, specular, Qt::black, 64.0f);
///     steel.CreateUniforms();      // once, when the library runs
///     ...
///     steel.Submit();              // before each draw that it is for
///     renderer.DrawTriangles(view, vertices, indices);
///
/// bgfx keeps a submitted material until another one of its name is submitted, but in the order in which it
/// draws, which need not be that of the calls: submit before every draw. Ambient and diffuse colour are
/// multiplied by the vertex colours: draw with white vertices to see the material's own. Where no material
/// was ever submitted, or one that is as the constructor leaves it, the vertex colours are the surface's. Two
/// materials of one name share their uniforms.
///
/// Lifetime: owns its uniforms from `CreateUniforms` to `DestroyUniforms`, its destructor, or the end of the
/// context. Move construction hands them over; after a move assignment both objects refer to the same ones,
/// and the caller sees to it that only one destroys them. Thread: the GUI thread. Errors: a warning says,
/// once for a name, that uniforms could not be created, or were submitted without being there.
class ZX3DQT_EXPORT BGFXMaterial : private zx3D::ContextListener {
public:
    /// Black and transparent, without shininess, without a name.
    BGFXMaterial();
    /// Black and transparent, without shininess.
    explicit BGFXMaterial(std::string const& name);
    /// With the given values, without uniforms.
    BGFXMaterial(std::string const& name, QColor const& ambient, QColor const& diffuse,
                 QColor const& specular, QColor const& emission, float shininess);
    /// Takes over the uniforms and the name.
    BGFXMaterial(BGFXMaterial&& other);
    /// Takes the name, and refers to the other's uniforms; its own, if it had any, are forgotten.
    BGFXMaterial& operator=(BGFXMaterial&& other);
    ~BGFXMaterial();

    /// Creates the uniforms `name` + "_ambient", "_diffuse", "_specular", "_emission" and "_shininess". The
    /// library must run. Destroys none that exist: call it once, or after `DestroyUniforms`.
    void CreateUniforms();
    /// Destroys the uniforms that exist.
    void DestroyUniforms();

    /// Sets the uniforms for the next draw. Those that do not exist, or are of an earlier run of the library,
    /// are left out with a warning.
    void Submit() const;

    // The values reach the GPU with the next `Submit`, a name with the next `CreateUniforms`.

    /// Colour in ambient light.
    void SetAmbient(QColor const& color);
    /// Colour in directed light.
    void SetDiffuse(QColor const& color);
    /// Colour of highlights.
    void SetSpecular(QColor const& color);
    /// Sets the specular colour, exactly as `SetSpecular`. The emission colour is given to the constructor.
    void SetEmission(QColor const& color);
    /// Exponent of the highlights: the larger, the smaller they are.
    void SetShininess(float shininess);
    /// The first part of the uniforms' names.
    void SetName(std::string const& name);

private:
    friend class SurfaceLight; // has batches made of it

    enum Value { Ambient, Diffuse, Specular, Emission, Shininess, Count };

    void OnContextStopping() override;

    std::array<std::array<float, 4>, Count> m_values{}; ///< shininess in x
    std::array<bgfx::UniformHandle, Count> m_uniforms;
    zx3D::ContextRun m_run; ///< in which the uniforms were created
    std::string m_name;
};

/// Builds a material in a chain:
///
///     BGFXMaterial const steel = BGFXMaterialBuilder().SetName("u_material").SetShininess(64.0f).Build();
class ZX3DQT_EXPORT BGFXMaterialBuilder {
public:
    /// As the material's.
    /// @{
    BGFXMaterialBuilder& SetAmbient(QColor const& color);
    BGFXMaterialBuilder& SetDiffuse(QColor const& color);
    BGFXMaterialBuilder& SetSpecular(QColor const& color);
    /// @}
    /// Sets the specular colour, as the material's does.
    BGFXMaterialBuilder& SetEmission(QColor const& color);
    /// As the material's.
    /// @{
    BGFXMaterialBuilder& SetShininess(float shininess);
    BGFXMaterialBuilder& SetName(std::string const& name);
    /// @}

    /// The material, without uniforms. A second one has the same colours and no name.
    BGFXMaterial Build();

private:
    BGFXMaterial m_material;
};

} // namespace zarvex::zx3DQt
