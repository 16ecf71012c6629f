// Which programs, and which numbers.
#include "MeshPass.h"

#include "../render/Drawing.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/ProgramFactory.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

using Vec4 = SurfaceLight::Vec4;

/// By kind, and whether there are instances.
constexpr char const* kVertexShaders[3][2] = {{"vs_mesh_unlit", "vs_mesh_unlit_instances"},
                                              {"vs_mesh_diffuse", "vs_mesh_diffuse_instances"},
                                              {"vs_mesh_lit", "vs_mesh_lit_instances"}};

/// By the binary logarithm of the number of lights, and whether there is a texture.
constexpr char const* kLitShaders[4][2] = {{"fs_mesh_lit_1", "fs_mesh_lit_1_textured"},
                                           {"fs_mesh_lit_2", "fs_mesh_lit_2_textured"},
                                           {"fs_mesh_lit_4", "fs_mesh_lit_4_textured"},
                                           {"fs_mesh_lit_8", "fs_mesh_lit_8_textured"}};

Vec4 ColorOf(std::optional<QColor> const& color) {
    return color ? Vec4{color->redF(), color->greenF(), color->blueF(), color->alphaF()} : Vec4{};
}

/// Columns of the cofactor matrix, which takes the place of the inverse transpose up to a factor; of a size
/// that floats hold the squares of, whatever the model's.
std::array<QVector3D, 3> NormalMatrix(QMatrix4x4 const& model) {
    std::array<QVector3D, 3> columns;
    float largest = 0.0f;
    for (int i = 0; i < 3; ++i) {
        columns[i] = model.column(i).toVector3D();
        for (int row = 0; row < 3; ++row)
            largest = std::max(largest, std::abs(columns[i][row]));
    }
    if (largest > 0.0f) {
        for (QVector3D& column : columns)
            column /= largest;
    }
    return {QVector3D::crossProduct(columns[1], columns[2]), QVector3D::crossProduct(columns[2], columns[0]),
            QVector3D::crossProduct(columns[0], columns[1])};
}

/// 1 where what is counter-clockwise in the world, seen from its outside, is so in the picture; -1 where the
/// view shows a mirror image. Normalised device coordinates are left-handed: x to the right, y up, z away.
float OrientationOf(BGFXViewContext const& view) {
    return view.GetProjectionMatrix().determinant() * view.GetViewMatrix().determinant() < 0.0 ? 1.0f : -1.0f;
}

} // namespace

MeshPass::MeshPass(BGFXViewContext const& view, MeshStyle const& style, MeshFormat const& format,
                   QMatrix4x4 const& model, bool hasInstances)
    : m_state(Drawing::ForView(view, style.state.value_or(BGFXRenderer::STATE_OPAQUE))),
      m_shading(style.shading == MeshShading::Smooth && !format.HasNormals() ? MeshShading::Flat
                                                                             : style.shading),
      m_hasInstances(hasInstances),
      m_texture(format.HasTextureCoordinates() ? style.texture : bgfx::TextureHandle(BGFX_INVALID_HANDLE)),
      m_light(style.lights, style.material, view) {
    m_mayBeDiffuse = m_shading == MeshShading::Smooth && m_light.IsOneDirection() &&
                     !bgfx::isValid(m_texture) && !style.backColor;

    std::array<QVector3D, 3> const normalMatrix = NormalMatrix(model);
    for (std::size_t i = 0; i < 3; ++i)
        m_vertex[i] = {normalMatrix[i].x(), normalMatrix[i].y(), normalMatrix[i].z(), 0.0f};
    m_vertex[3] = ColorOf(style.color);
    m_vertex[4] = {style.color ? 1.0f : 0.0f, m_shading == MeshShading::Smooth ? 1.0f : 0.0f, 0.0f, 0.0f};

    // bgfx's front is the clockwise side unless told otherwise.
    float const front = (m_state.GetValue() & BGFX_STATE_FRONT_CCW) != 0 ? 1.0f : -1.0f;
    float const orientation = OrientationOf(view);
    m_normalSign = front * orientation;
    m_surface = {m_light.GetAmbient(), m_light.GetEmission(), ColorOf(style.backColor),
                 Vec4{style.backColor ? 1.0f : 0.0f, orientation, front, 0.0f}, m_light.GetViewer()};
}

MeshPass::Kind MeshPass::KindFor(MeshPiece const& piece) const {
    if (m_shading == MeshShading::Unlit)
        return bgfx::isValid(m_texture) ? Kind::Lit : Kind::Unlit;
    return m_mayBeDiffuse && piece.GetSideOfNormals() != 0 ? Kind::Diffuse : Kind::Lit;
}

char const* MeshPass::FragmentShader(Kind kind) const {
    if (kind == Kind::Unlit)
        return "fs_mesh_unlit";
    if (kind == Kind::Diffuse)
        return "fs_mesh_diffuse";
    if (m_shading == MeshShading::Unlit)
        return "fs_mesh_unlit_textured";
    return kLitShaders[std::bit_width(m_light.GetRoom()) - 1][bgfx::isValid(m_texture) ? 1 : 0];
}

std::optional<bgfx::ProgramHandle> MeshPass::ProgramFor(MeshPiece const& piece) {
    Kind const kind = KindFor(piece);
    std::optional<bgfx::ProgramHandle>& program = m_programs[IndexOf(kind)];
    if (!program)
        program = zx3D::ProgramFactory::Get().CreateProgram(
            kVertexShaders[IndexOf(kind)][m_hasInstances ? 1 : 0], FragmentShader(kind));
    return program;
}

void MeshPass::SetUniforms(BatchUniforms const& uniforms, MeshPiece const& piece) const {
    std::array<Vec4, 5> surface = m_surface;
    surface[3][3] = m_normalSign * static_cast<float>(piece.GetSideOfNormals());
    uniforms.Set(BatchUniform::MeshVertex, m_vertex);
    uniforms.Set(BatchUniform::MeshSurface, surface);
    if (m_shading != MeshShading::Unlit)
        uniforms.Set(BatchUniform::MeshLights, m_light.GetLights());
    if (bgfx::isValid(m_texture))
        bgfx::setTexture(1, uniforms[BatchUniform::MeshTexture], m_texture);
}

} // namespace zarvex::zx3DQt
