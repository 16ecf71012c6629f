// Renderers, targets and windows that are still there when the library stops.
#include "DrawingCheck.h"
#include "OffscreenTarget.h"

#include <harness/LibraryRun.h>
#include <harness/TroubleCallback.h>

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <QGuiApplication>

#include <memory>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

bgfx::RendererType::Enum OtherThan(bgfx::RendererType::Enum backend) {
    return backend == bgfx::RendererType::OpenGL ? bgfx::RendererType::Vulkan : bgfx::RendererType::OpenGL;
}

/// Starts on a backend and then, with objects that live on, on the other; a row per backend to begin with.
class OutlivingShutdownTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    ~OutlivingShutdownTest() override { zx3DQt::Shutdown(); }

    void Start(bgfx::RendererType::Enum backend) {
        zx3D::Context::PreferRenderer(backend);
        ASSERT_TRUE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
        ASSERT_EQ(bgfx::getRendererType(), backend);
    }

    void Stop() { zx3DQt::Shutdown(); }
};

/// Draws one frame that clears a shown window.
void DrawOn(zx3DQt::BGFXWindow& window) {
    ASSERT_TRUE(window.GetRenderer().StartFrame(window.GetFrameBuffer()));
    ASSERT_TRUE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    zx3DQt::BGFXViewContext view(3, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR, 0x336699ff, 1.0f, 0});
    view.SetViewport(window.GetViewport());
    view.Submit(window.GetFrameBuffer());
    bgfx::touch(view);
    window.GetRenderer().PresentSubmittedFrame(false);
}

void Show(QWindow& window) {
    window.resize(120, 80);
    window.show();
    while (!window.isExposed())
        QGuiApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

TEST_P(OutlivingShutdownTest, RendererAndTargetAreDestroyedSafely) {
    Start(GetParam());
    auto renderer = std::make_unique<zx3DQt::BGFXRenderer>();
    auto target = std::make_unique<OffscreenTarget>(QSize(24, 16));
    ExpectDrawingWorks(*renderer, *target, Qt::red);
    Stop();
    EXPECT_FALSE(bgfx::isValid(target->GetFrameBuffer().GetHandle()));
    target->GetFrameBuffer().SubmitOnDemand();
    EXPECT_FALSE(bgfx::isValid(target->GetFrameBuffer().GetHandle()));
    renderer->CleanUp();
    renderer.reset();
    target.reset();
}

TEST_P(OutlivingShutdownTest, RendererAndTargetAreDestroyedSafelyInTheNextRun) {
    Start(GetParam());
    auto renderer = std::make_unique<zx3DQt::BGFXRenderer>();
    auto target = std::make_unique<OffscreenTarget>(QSize(24, 16));
    ExpectDrawingWorks(*renderer, *target, Qt::red);
    Stop();
    Start(OtherThan(GetParam()));
    {
        zx3DQt::BGFXRenderer newRenderer; // whose handles are the same numbers
        OffscreenTarget newTarget(QSize(24, 16));
        ExpectDrawingWorks(newRenderer, newTarget, Qt::red);
        renderer.reset();
        target.reset();
        ExpectDrawingWorks(newRenderer, newTarget, Qt::green);
    }
    Stop();
}

TEST_P(OutlivingShutdownTest, RendererAndTargetDrawInTheNextRun) {
    zx3DQt::BGFXRenderer renderer;
    OffscreenTarget target(QSize(24, 16));
    for (bgfx::RendererType::Enum const backend : {GetParam(), OtherThan(GetParam()), GetParam()}) {
        Start(backend);
        ExpectDrawingWorks(renderer, target, Qt::red);
        ExpectDrawingWorks(renderer, target, Qt::green);
        Stop();
    }
}

TEST_P(OutlivingShutdownTest, TargetAloneLeavesNothingBehind) {
    OffscreenTarget target(QSize(24, 16));
    for (bgfx::RendererType::Enum const backend : {GetParam(), OtherThan(GetParam())}) {
        Start(backend);
        {
            zx3DQt::BGFXRenderer renderer;
            ExpectDrawingWorks(renderer, target, Qt::red);
        }
        Stop();
    }
}

TEST_P(OutlivingShutdownTest, WindowIsDestroyedSafely) {
    auto window = std::make_unique<zx3DQt::BGFXWindow>();
    Start(GetParam());
    Show(*window);
    DrawOn(*window);
    Stop();
    EXPECT_FALSE(bgfx::isValid(window->GetFrameBuffer().GetHandle()));
    window.reset();
    Stop();
}

TEST_P(OutlivingShutdownTest, WindowDrawsInTheNextRun) {
    zx3DQt::BGFXWindow window;
    Show(window); // before there is a context
    for (bgfx::RendererType::Enum const backend : {GetParam(), OtherThan(GetParam()), GetParam()}) {
        Start(backend);
        DrawOn(window);
        DrawOn(window);
        Stop();
    }
}

TEST_P(OutlivingShutdownTest, TargetThatNobodyDestroysGoesWithTheLibrary) {
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    frameBuffer.RequestResize(30, 20);
    Start(GetParam());
    frameBuffer.SubmitOnDemand();
    {
        zx3D::FrameBuffer forgotten(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
        forgotten.RequestResize(30, 20);
        forgotten.SubmitOnDemand();
        EXPECT_TRUE(bgfx::isValid(forgotten.GetHandle()));
    }
    Stop();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
}

ZX3D_INSTANTIATE_BACKENDS(OutlivingShutdownTest);
