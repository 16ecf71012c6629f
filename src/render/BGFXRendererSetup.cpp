// The renderer's life cycle: its uniforms, sampler and programs.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/ProgramFactory.h>

#include "../frame/Logging.h"

namespace zarvex::zx3DQt {

namespace {

bgfx::UniformHandle CreateVec4Uniform(char const* name) {
    return bgfx::createUniform(name, bgfx::UniformType::Vec4, 1);
}

void DestroyUniform(bgfx::UniformHandle& uniform) {
    if (bgfx::isValid(uniform))
        bgfx::destroy(uniform);
    uniform = BGFX_INVALID_HANDLE;
}

} // namespace

BGFXRenderer::BGFXRenderer(QObject* parent) : QObject(parent) {
    LogDebug("Creating BGFXRenderer [this: ", static_cast<void const*>(this), "]");
}

BGFXRenderer::~BGFXRenderer() {
    LogDebug("Destroying BGFXRenderer [this: ", static_cast<void const*>(this), "]");
    CleanUp();
}

void BGFXRenderer::Initialize() {
    if (m_initialized)
        return;
    LogDebug("Init BGFXRenderer [this: ", static_cast<void const*>(this), "]");
    InitUniforms();
    InitTextureSamplers();
    InitPrograms();
    m_initialized = true;
}

void BGFXRenderer::CleanUp() {
    if (!m_initialized)
        return;
    LogDebug("Destroying BGFXRenderer bgfx resources [this: ", static_cast<void const*>(this), "]");
    DestroyUniform(m_lineStippleUniform);
    DestroyUniform(m_lineStyleUniform);
    DestroyUniform(m_pointSpriteUniform);
    DestroyUniform(m_rectangleSpriteUniform);
    DestroyUniform(m_viewportUniform);
    DestroyUniform(m_viewPositionUniform);
    DestroyUniform(m_depthOffsetBiasUniform);
    DestroyUniform(m_fullscreenTextureSampler);
    m_initialized = false;
}

void BGFXRenderer::OnContextStopping() {
    CleanUp();
    m_frameResources.clear();
    m_persistentResources.clear();
}

void BGFXRenderer::InitUniforms() {
    if (m_initialized)
        return;
    LogDebug("Init bgfx uniforms [this: ", static_cast<void const*>(this), "]");
    m_lineStippleUniform = CreateVec4Uniform("u_lineStipple");
    m_lineStyleUniform = CreateVec4Uniform("u_lineStyle");
    m_pointSpriteUniform = CreateVec4Uniform("u_pointSprite");
    m_rectangleSpriteUniform = CreateVec4Uniform("u_rectangleSprite");
    m_viewportUniform = CreateVec4Uniform("u_viewport");
    m_viewPositionUniform = CreateVec4Uniform("u_viewPosition");
    m_depthOffsetBiasUniform = CreateVec4Uniform("u_depthOffsetBias");
}

void BGFXRenderer::InitTextureSamplers() {
    if (m_initialized)
        return;
    LogDebug("Init bgfx texture samplers [this: ", static_cast<void const*>(this), "]");
    m_fullscreenTextureSampler = bgfx::createUniform("s_fullscreen_texture", bgfx::UniformType::Sampler, 1);
}

void BGFXRenderer::InitPrograms() {
    if (m_initialized)
        return;
    LogDebug("Init BGFXRenderer bgfx programs [this: ", static_cast<void const*>(this), "]");
    static zx3D::ProgramFactory& factory = zx3D::ProgramFactory::Get();
    m_basicProgram = factory.CreateProgram("vs_basic", "fs_basic").value();
    m_lightingProgram = factory.CreateProgram("vs_lighting", "fs_lighting").value();
    m_dashedLineProgram = factory.CreateProgram("vs_line_simple_dash", "fs_line_simple_dash").value();
    m_stippledLineProgram = factory.CreateProgram("vs_line_opengl_stipple", "fs_line_opengl_stipple").value();
    m_pointSpriteComputeProgram = factory.CreateProgram("cs_point_sprite").value();
    m_pointSpriteProgram = factory.CreateProgram("vs_point_sprite", "fs_point_sprite").value();
    m_rectangleSpriteComputeProgram = factory.CreateProgram("cs_rectangle_sprite").value();
    // The plain rectangle's vertices, stippled.
    m_rectangleSpriteProgram =
        factory.CreateProgram("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple").value();
    m_fullscreenTextureProgram =
        factory.CreateProgram("vs_fullscreen_triangle", "fs_fullscreen_texture").value();
}

} // namespace zarvex::zx3DQt
