// The renderer's public face: what is behind it is `Drawing`.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>

#include "../frame/Logging.h"
#include "Drawing.h"

namespace zarvex::zx3DQt {

BGFXRenderer::BGFXRenderer(QObject* parent)
    : QObject(parent),
      m_drawing(std::make_unique<Drawing>(static_cast<void const*>(this))) {
    LogDebug("Creating BGFXRenderer [this: ", static_cast<void const*>(this), "]");
}

BGFXRenderer::~BGFXRenderer() {
    LogDebug("Destroying BGFXRenderer [this: ", static_cast<void const*>(this), "]");
}

void BGFXRenderer::Initialize() {
    m_drawing->Initialize();
}

void BGFXRenderer::CleanUp() {
    m_drawing->CleanUp();
}

bgfx::ProgramHandle BGFXRenderer::GetBasicProgram() const {
    return m_drawing->GetProgram(Program::Basic);
}

bgfx::ProgramHandle BGFXRenderer::GetLightingProgram() const {
    return m_drawing->GetProgram(Program::Lighting);
}

bgfx::ProgramHandle BGFXRenderer::GetFullscreenTextureProgram() const {
    return m_drawing->GetProgram(Program::FullscreenTexture);
}

bgfx::UniformHandle BGFXRenderer::GetFullscreenTextureSampler() const {
    return m_drawing->GetUniform(Uniform::FullscreenTexture);
}

void BGFXRenderer::UpdateViewPositionUniform(QVector3D const& position) const {
    m_drawing->UpdateViewPositionUniform(position);
}

bool BGFXRenderer::StartFrame(zx3D::FrameBuffer& frameBuffer) {
    return m_drawing->StartFrame(frameBuffer);
}

void BGFXRenderer::SetUploadBudget(std::uint64_t bytesPerFrame) {
    m_drawing->GetUploadBudget().SetLimit(bytesPerFrame);
}

std::uint64_t BGFXRenderer::GetUploadBudget() const {
    return m_drawing->GetUploadBudget().GetLimit();
}

FrameStatistics BGFXRenderer::GetFrameStatistics() const {
    return m_drawing->GetCounter().GetStatistics();
}

std::uint32_t BGFXRenderer::PresentCurrentAndSubmitNextFrame(bool capture) {
    std::uint32_t const frame = zx3D::Context::SubmitFrame(capture);
    LogDebug("--- [1] Presenting current frame [", frame, "] ---");
    LogDebug("--- [2] Submitting next    frame [", frame + 1, "] ---");
    return frame;
}

std::uint32_t BGFXRenderer::PresentSubmittedFrame(bool capture) {
    // bgfx runs up to one frame behind: the second call waits for the recorded frame.
    std::uint32_t const discarded = zx3D::Context::SubmitFrame(capture);
    LogDebug("--- [1] Presenting discarded frame [count:", discarded, "] ---");
    std::uint32_t const frame = zx3D::Context::SubmitFrame(capture);
    LogDebug("--- [2] Presenting submitted frame [count:", frame, "] ---");
    return frame;
}

ModelTransformCacheId BGFXRenderer::SetModelTransform(QMatrix4x4 const& matrix) {
    return m_drawing->SetModelTransform(matrix);
}

QMatrix4x4 BGFXRenderer::GetModelTransform() const {
    return m_drawing->GetModelTransform();
}

} // namespace zarvex::zx3DQt
