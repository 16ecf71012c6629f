// The renderer's life cycle: its programs, uniforms and sampler, its frames and model transforms.
#include "Drawing.h"

#include <zx3D/Context.h>
#include <zx3D/ProgramFactory.h>

#include "../frame/Logging.h"

#include <algorithm>
#include <utility>

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

/// Uniforms of the programs' shaders that are not among the renderer's, of a material and eight lights; and
/// five that a program names and that exist already, for which the factory wants room, too.
constexpr std::uint32_t kUniformsOfShaders = 5 + 8 * 4 + 5;

/// Buffers that each frame leaves to the application and to bgfx itself.
constexpr std::uint32_t kBuffersOfOthers = 16;

/// Buffers of sprites in all renderers, which share bgfx's.
std::uint32_t buffersHeld = 0;

} // namespace

Drawing::Drawing(void const* renderer) : m_renderer(renderer) {
    m_uniforms.fill(BGFX_INVALID_HANDLE);
    m_programs.fill(BGFX_INVALID_HANDLE);
}

Drawing::~Drawing() {
    CleanUp();
    ReleaseFrameResources();
}

void Drawing::Initialize() {
    if (m_initialized)
        return;
    LogDebug("Init BGFXRenderer [this: ", m_renderer, "]");
    InitUniforms();
    InitTextureSamplers();
    if (!HasUniforms()) {
        DestroyUniforms();
        m_programs.fill(BGFX_INVALID_HANDLE);
        m_noUniforms.Raise([] {
            LogWarning("renderer.no-uniforms", [] {
                return QString("The renderer draws nothing: bgfx has no uniforms left for its programs");
            });
        });
        return;
    }
    m_noUniforms.Clear();
    InitPrograms();
    m_initialized = true;
}

void Drawing::CleanUp() {
    if (!m_initialized)
        return;
    LogDebug("Destroying BGFXRenderer bgfx resources [this: ", m_renderer, "]");
    DestroyUniforms();
    m_initialized = false;
}

void Drawing::DestroyUniforms() {
    for (bgfx::UniformHandle& uniform : m_uniforms) {
        if (bgfx::isValid(uniform))
            bgfx::destroy(uniform);
        uniform = BGFX_INVALID_HANDLE;
    }
    m_lineFading = {};
}

bool Drawing::HasUniforms() const {
    if (!std::all_of(m_uniforms.begin(), m_uniforms.end(),
                     [](bgfx::UniformHandle uniform) { return bgfx::isValid(uniform); }))
        return false;
    // The factory makes no program whose shaders' uniforms do not fit. Programs are created once in a run of
    // the context.
    static zx3D::ContextRun programRun;
    if (programRun.IsCurrent())
        return true;
    if (bgfx::getStats()->numUniforms + kUniformsOfShaders > bgfx::getCaps()->limits.maxUniforms)
        return false;
    programRun = zx3D::ContextRun::Current();
    return true;
}

void Drawing::ReleaseFrameResources() {
    m_frameResources.clear();
    buffersHeld -= std::exchange(m_frameBuffers, 0);
}

void Drawing::CountBuffer() {
    ++m_frameBuffers;
    ++buffersHeld;
}

bool Drawing::MayTakeBuffers(std::uint32_t count) {
    bgfx::Caps::Limits const& limits = bgfx::getCaps()->limits;
    // Half of them: those of the frame before come back only with this one.
    std::uint32_t const share = std::min(limits.maxVertexBuffers, limits.maxDynamicVertexBuffers) / 2;
    return buffersHeld + count + kBuffersOfOthers <= share;
}

void Drawing::OnContextStopping() {
    CleanUp();
    ReleaseFrameResources();
    m_persistentResources.clear();
    m_programs.fill(BGFX_INVALID_HANDLE); // they end with the context
    m_pool = std::make_shared<BlockPool>();
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
    m_counter.StartFrame();
    static std::uint64_t frames = 0;
    m_frameNumber = ++frames;
    m_uploadBudget.StartFrame();
    m_pool->StartFrame();
    if (!bgfx::isValid(frameBuffer.GetHandle())) {
        m_counter.LeaveOut(LeftOutReason::NoFrameBuffer);
        return false;
    }
    LogDebug("--- Cleaning up stale dynamic execution resource contexts (per frame data) ---");
    ReleaseFrameResources();
    LogDebug("--- Recording commands and pipeline states for next frame ---");
    return true;
}

ModelTransformCacheId Drawing::SetModelTransform(QMatrix4x4 const& matrix) {
    m_modelTransformId = bgfx::setTransform(matrix.constData(), 1);
    m_modelTransforms.insert_or_assign(m_modelTransformId, matrix);
    return ModelTransformCacheId{m_modelTransformId};
}

QMatrix4x4 Drawing::ModelTransform(std::uint32_t id) const {
    auto const found = m_modelTransforms.find(id);
    return found != m_modelTransforms.end() ? found->second : QMatrix4x4();
}

QMatrix4x4 Drawing::ModelViewProjection(DrawCall const& call) const {
    return call.view.GetProjectionMatrix() * call.view.GetViewMatrix() * ModelTransform(call.transform);
}

} // namespace zarvex::zx3DQt
