// How a mesh of a style is drawn in a view: its programs, and what they are told.
#pragma once

#include "BatchUniforms.h"
#include "MeshPiece.h"
#include "SurfaceLight.h"

#include <zx3DQt/MeshBatch.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>

#include <array>
#include <cstdint>
#include <optional>

namespace zarvex::zx3DQt {

/// For the pieces of one batch, in one call of `Draw`.
class MeshPass {
public:
    /// `model` leads from the batch's coordinates to the view's.
    MeshPass(BGFXViewContext const& view, MeshStyle const& style, MeshFormat const& format,
             QMatrix4x4 const& model, bool hasInstances);

    BGFXRenderState GetState() const { return m_state; }

    /// The least that does for the piece. Empty when it cannot be made.
    std::optional<bgfx::ProgramHandle> ProgramFor(MeshPiece const& piece);

    /// For the next submission, of the piece.
    void SetUniforms(BatchUniforms const& uniforms, MeshPiece const& piece) const;

private:
    using Vec4 = SurfaceLight::Vec4;

    /// What the stages know of each other.
    enum class Kind : std::uint8_t { Unlit, Diffuse, Lit };

    Kind KindFor(MeshPiece const& piece) const;
    char const* FragmentShader(Kind kind) const;

    BGFXRenderState m_state;
    MeshShading m_shading;
    bool m_hasInstances;
    bgfx::TextureHandle m_texture;
    bool m_mayBeDiffuse;
    SurfaceLight m_light;
    std::array<Vec4, 5> m_vertex;
    std::array<Vec4, 5> m_surface;
    float m_normalSign; ///< of normals on the counter-clockwise side, where gl_FrontFacing is true
    std::array<std::optional<bgfx::ProgramHandle>, 3> m_programs; ///< by kind
};

} // namespace zarvex::zx3DQt
