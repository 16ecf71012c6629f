// The target, the camera and reading back.
#include "runner/Stage.h"

#include <bx/math.h>

namespace zarvex::benchmarks {

namespace {

constexpr std::uint16_t kWidth = 1280;
constexpr std::uint16_t kHeight = 720;
constexpr std::uint16_t kClearFlags = BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH;
constexpr std::uint32_t kClearColor = 0x1a1a1aff;
constexpr bgfx::ViewId kView = 0;

bgfx::ViewId LastView() {
    return static_cast<bgfx::ViewId>(bgfx::getCaps()->limits.maxViews - 1);
}

bgfx::TextureHandle CreateReadableTexture(std::uint16_t width, std::uint16_t height) {
    return bgfx::createTexture2D(width, height, false, 1, bgfx::TextureFormat::RGBA8,
                                 BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK);
}

} // namespace

bool DrawsNothing() {
    return bgfx::getRendererType() == bgfx::RendererType::Noop;
}

Stage::Stage(bx::Vec3 const& eye, std::uint32_t sampleCount)
    : m_frameBuffer(nullptr, bgfx::TextureFormat::RGBA8,
                    zx3D::FrameBufferOptions{.sampleCount = sampleCount}),
      m_view(kView, zx3DQt::BGFXViewClearOptions{kClearFlags, kClearColor, 1.0f, 0}) {
    m_frameBuffer.RequestResize(kWidth, kHeight);
    m_frameBuffer.SubmitOnDemand();
    m_view.SetViewport({0, 0, kWidth, kHeight});
    bx::mtxLookAt(m_view.GetViewMatrix().data(), eye, {0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f},
                  bx::Handedness::Right);
    bx::mtxProj(m_view.GetProjectionMatrix().data(), 60.0f, 16.0f / 9.0f, 0.1f, 100.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
    if (!DrawsNothing())
        m_pixel = CreateReadableTexture(1, 1);
}

Stage::~Stage() {
    if (bgfx::isValid(m_pixel))
        bgfx::destroy(m_pixel);
    m_frameBuffer.Destroy();
}

void Stage::SetUpView() const {
    bgfx::setViewMode(kView, bgfx::ViewMode::Default);
    bgfx::setViewFrameBuffer(kView, m_frameBuffer.GetHandle());
    bgfx::setViewRect(kView, 0, 0, kWidth, kHeight);
    bgfx::setViewTransform(kView, m_view.GetViewMatrix().constData(),
                           m_view.GetProjectionMatrix().constData());
    bgfx::setViewClear(kView, kClearFlags, kClearColor, 1.0f, 0);
}

std::uint32_t Stage::RequestPixel() {
    if (DrawsNothing())
        return 0;
    bgfx::blit(LastView(), m_pixel, 0, 0, bgfx::getTexture(m_frameBuffer.GetHandle()), kWidth / 2,
               kHeight / 2, 1, 1);
    return bgfx::readTexture(m_pixel, &m_pixelValue);
}

FrameResult Stage::Inspect() {
    FrameResult result;
    std::uint32_t ready = 0;
    bgfx::TextureHandle copy = BGFX_INVALID_HANDLE;
    if (!DrawsNothing()) {
        copy = CreateReadableTexture(kWidth, kHeight);
        bgfx::blit(LastView(), copy, 0, 0, bgfx::getTexture(m_frameBuffer.GetHandle()));
        result.picture = QImage(kWidth, kHeight, QImage::Format_RGBA8888);
        ready = bgfx::readTexture(copy, result.picture.bits());
    }
    bgfx::frame();
    std::uint32_t const frame = bgfx::frame(); // the one before is done, and bgfx has counted it
    bgfx::Stats const& stats = *bgfx::getStats();
    result.draws = stats.numDraw;
    result.dispatches = stats.numCompute;
    result.transientVertexBytes = stats.transientVbUsed;
    result.transientIndexBytes = stats.transientIbUsed;

    WaitForFrame(ready, frame);
    if (bgfx::isValid(copy))
        bgfx::destroy(copy);
    if (bgfx::getCaps()->originBottomLeft)
        result.picture = result.picture.mirrored();
    return result;
}

void WaitForFrame(std::uint32_t ready, std::uint32_t frame) {
    while (frame < ready)
        frame = bgfx::frame();
}

} // namespace zarvex::benchmarks
