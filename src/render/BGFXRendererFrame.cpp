// From the start of a frame to its presentation, and the model transforms recorded in between.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>

#include "../frame/Logging.h"

namespace zarvex::zx3DQt {

bool BGFXRenderer::StartFrame(zx3D::FrameBuffer& frameBuffer) {
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
    std::uint32_t const id = bgfx::setTransform(matrix.constData(), 1);
    m_modelTransformId = id;
    m_modelTransforms.insert_or_assign(id, matrix);
    return ModelTransformCacheId{id};
}

std::uint32_t BGFXRenderer::TransformIdOrCurrent(std::optional<ModelTransformCacheId> modelTransform) const {
    return modelTransform ? std::uint32_t{*modelTransform} : m_modelTransformId;
}

void BGFXRenderer::SetTransform(std::optional<ModelTransformCacheId> modelTransform) const {
    bgfx::setTransform(TransformIdOrCurrent(modelTransform), 1);
}

QMatrix4x4 BGFXRenderer::ModelViewProjection(BGFXViewContext const& view,
                                             std::optional<ModelTransformCacheId> modelTransform) const {
    auto const found = m_modelTransforms.find(TransformIdOrCurrent(modelTransform));
    QMatrix4x4 const model = found != m_modelTransforms.end() ? found->second : QMatrix4x4();
    return view.GetProjectionMatrix() * view.GetViewMatrix() * model;
}

} // namespace zarvex::zx3DQt
