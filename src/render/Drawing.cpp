// The renderer's life cycle: its programs, uniforms and sampler, its frames and model transforms.
#include "Drawing.h"

#include <zx3D/Context.h>
#include <zx3D/ProgramFactory.h>

#include "../frame/Logging.h"

namespace zarvex::zx3DQt {

namespace {

struct ProgramName {
    char const* vertexOrComputeShader;
    char const* fragmentShader; ///< none for a compute program
};

constexpr ProgramName kPrograms[] = {
    {"vs_basic", "fs_basic"},
    {"vs_lighting", "fs_lighting"},
    {"vs_line_simple_dash", "fs_line_simple_dash"},
    {"vs_line_opengl_stipple", "fs_line_opengl_stipple"},
    {"cs_point_sprite", nullptr},
    {"vs_point_sprite", "fs_point_sprite"},
    {"cs_rectangle_sprite", nullptr},
    {"vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple"}, // the plain rectangle's vertices, stippled
    {"vs_fullscreen_triangle", "fs_fullscreen_texture"},
};
static_assert(std::size(kPrograms) == IndexOf(Program::Count));

constexpr char const* kVec4Uniforms[] = {"u_lineStipple",     "u_lineStyle", "u_pointSprite",
                                         "u_rectangleSprite", "u_viewport",  "u_viewPosition",
                                         "u_depthOffsetBias"};
static_assert(std::size(kVec4Uniforms) == IndexOf(Uniform::FullscreenTexture));

} // namespace

Drawing::Drawing(void const* renderer) : m_renderer(renderer) {
    m_uniforms.fill(BGFX_INVALID_HANDLE);
    m_programs.fill(BGFX_INVALID_HANDLE);
}

Drawing::~Drawing() {
    CleanUp();
}

void Drawing::Initialize() {
    if (m_initialized)
        return;
    LogDebug("Init BGFXRenderer [this: ", m_renderer, "]");
    InitUniforms();
    InitTextureSamplers();
    InitPrograms();
    m_initialized = true;
}

void Drawing::CleanUp() {
    if (!m_initialized)
        return;
    LogDebug("Destroying BGFXRenderer bgfx resources [this: ", m_renderer, "]");
    for (bgfx::UniformHandle& uniform : m_uniforms) {
        if (bgfx::isValid(uniform))
            bgfx::destroy(uniform);
        uniform = BGFX_INVALID_HANDLE;
    }
    m_initialized = false;
}

void Drawing::OnContextStopping() {
    CleanUp();
    m_frameResources.clear();
    m_persistentResources.clear();
}

void Drawing::InitUniforms() {
    if (m_initialized)
        return;
    LogDebug("Init bgfx uniforms [this: ", m_renderer, "]");
    for (std::size_t i = 0; i < std::size(kVec4Uniforms); ++i)
        m_uniforms[i] = bgfx::createUniform(kVec4Uniforms[i], bgfx::UniformType::Vec4, 1);
}

void Drawing::InitTextureSamplers() {
    if (m_initialized)
        return;
    LogDebug("Init bgfx texture samplers [this: ", m_renderer, "]");
    m_uniforms[IndexOf(Uniform::FullscreenTexture)] =
        bgfx::createUniform("s_fullscreen_texture", bgfx::UniformType::Sampler, 1);
}

void Drawing::InitPrograms() {
    if (m_initialized)
        return;
    LogDebug("Init BGFXRenderer bgfx programs [this: ", m_renderer, "]");
    static zx3D::ProgramFactory& factory = zx3D::ProgramFactory::Get();
    for (std::size_t i = 0; i < std::size(kPrograms); ++i) {
        auto const& [vertexOrComputeShader, fragmentShader] = kPrograms[i];
        m_programs[i] =
            (fragmentShader != nullptr ? factory.CreateProgram(vertexOrComputeShader, fragmentShader)
                                       : factory.CreateProgram(vertexOrComputeShader))
                .value();
    }
}

bool Drawing::StartFrame(zx3D::FrameBuffer& frameBuffer) {
    std::uint16_t const width = frameBuffer.GetWidth();
    std::uint16_t const height = frameBuffer.GetHeight();
    if (width == 0 || height == 0) {
        LogDebug("--- WARNING: Framebuffer is collapsed: cannot render to framebuffer ---");
        return false;
    }
    if (!zx3D::Context::IsInitialized())
        return false;
    LogDebug("--- Starting next frame [(width,height):(", width, ",", height, ")] ---");
    Initialize();
    frameBuffer.SubmitOnDemand();
    LogDebug("--- Cleaning up stale dynamic execution resource contexts (per frame data) ---");
    m_frameResources.clear();
    LogDebug("--- Recording commands and pipeline states for next frame ---");
    return true;
}

ModelTransformCacheId Drawing::SetModelTransform(QMatrix4x4 const& matrix) {
    m_modelTransformId = bgfx::setTransform(matrix.constData(), 1);
    m_modelTransforms.insert_or_assign(m_modelTransformId, matrix);
    return ModelTransformCacheId{m_modelTransformId};
}

QMatrix4x4 Drawing::ModelViewProjection(DrawCall const& call) const {
    auto const found = m_modelTransforms.find(call.transform);
    QMatrix4x4 const model = found != m_modelTransforms.end() ? found->second : QMatrix4x4();
    return call.view.GetProjectionMatrix() * call.view.GetViewMatrix() * model;
}

} // namespace zarvex::zx3DQt
