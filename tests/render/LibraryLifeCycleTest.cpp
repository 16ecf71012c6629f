// Init and Shutdown, again and again.
#include "DrawingCheck.h"
#include "EnvironmentVariable.h"
#include "OffscreenTarget.h"
#include "SmoothTriangle.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>
#include <harness/TroubleCallback.h>

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <QWidget>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

/// Says when it is deleted.
class CountedCallback : public TroubleCallback {
public:
    explicit CountedCallback(int& deletions) : m_deletions(deletions) {}
    ~CountedCallback() override { ++m_deletions; }

private:
    int& m_deletions;
};

} // namespace

TEST(LibraryLifeCycleTest, StartsAndStopsAgainAndAgainOnEitherBackend) {
    for (int cycle = 0; cycle < 6; ++cycle) {
        LibraryRun const run(cycle % 2 == 0 ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
        ExpectDrawingWorks(QColor(255, 40 * cycle, 0));
    }
}

TEST(LibraryLifeCycleTest, ATargetOfSeveralSamplesHasThemOnTheOtherBackendAfterwards) {
    OffscreenTarget target(QSize(96, 64), {.sampleCount = 4});
    using Renderer = bgfx::RendererType;
    for (Renderer::Enum const backend : {Renderer::OpenGL, Renderer::Vulkan, Renderer::OpenGL}) {
        LibraryRun const run(backend);
        zx3DQt::BGFXRenderer renderer;
        ASSERT_TRUE(RecordTriangle(renderer, target.GetFrameBuffer()));
        EXPECT_TRUE(IsSmooth(ReadBack(target.GetFrameBuffer())));
        EXPECT_EQ(target.GetFrameBuffer().GetSampleCount(), 4u);
    }
}

TEST(LibraryLifeCycleTest, BackBufferWidgetIsHiddenAndLivesWithTheLibrary) {
    EXPECT_EQ(zx3DQt::GetBackBufferWidget(), nullptr);
    {
        LibraryRun const run(bgfx::RendererType::OpenGL);
        ASSERT_NE(zx3DQt::GetBackBufferWidget(), nullptr);
        EXPECT_FALSE(zx3DQt::GetBackBufferWidget()->isVisible());
        EXPECT_EQ(zx3DQt::GetBackBufferWidget()->size(), QSize(64, 64));
    }
    EXPECT_EQ(zx3DQt::GetBackBufferWidget(), nullptr);
}

TEST(LibraryLifeCycleTest, SecondInitChangesNothing) {
    LibraryRun const run(bgfx::RendererType::OpenGL);
    QWidget const* const widget = zx3DQt::GetBackBufferWidget();
    bgfx::CallbackI const* const callback = zx3DQt::GetZx3DContextOptions().callback;
    int deletions = 0;
    EXPECT_TRUE(zx3DQt::Init(true, std::make_unique<CountedCallback>(deletions)));
    EXPECT_EQ(deletions, 1);
    EXPECT_EQ(zx3DQt::GetBackBufferWidget(), widget);
    EXPECT_EQ(zx3DQt::GetZx3DContextOptions().callback, callback);
    EXPECT_FALSE(zx3DQt::GetZx3DContextOptions().verticalSync);
    ExpectDrawingWorks(Qt::red);
}

TEST(LibraryLifeCycleTest, ShutdownWithoutInitIsHarmless) {
    zx3DQt::Shutdown();
    zx3DQt::Shutdown();
    EXPECT_EQ(zx3DQt::GetBackBufferWidget(), nullptr);
    LibraryRun const run(bgfx::RendererType::Vulkan);
    ExpectDrawingWorks(Qt::red);
}

TEST(LibraryLifeCycleTest, CallbackLivesUntilShutdown) {
    int deletions = 0;
    zx3D::Context::PreferRenderer(bgfx::RendererType::OpenGL);
    ASSERT_TRUE(zx3DQt::Init(false, std::make_unique<CountedCallback>(deletions)));
    ExpectDrawingWorks(Qt::red);
    EXPECT_EQ(deletions, 0);
    zx3DQt::Shutdown();
    EXPECT_EQ(deletions, 1);
    EXPECT_TRUE(Trouble::Take().empty());
}

TEST(LibraryLifeCycleTest, WithoutADisplayInitFailsAndLaterWorks) {
    {
        EnvironmentVariable const noDisplay("DISPLAY", nullptr);
        EXPECT_FALSE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
        std::vector<std::string> const messages = Trouble::Take();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_NE(messages.front().find("there is no X display"), std::string::npos) << messages.front();
        EXPECT_NE(zx3DQt::GetBackBufferWidget(), nullptr);
        EXPECT_TRUE(zx3DQt::Init(false)) << "counts as initialised until Shutdown";
        zx3DQt::Shutdown();
        EXPECT_EQ(zx3DQt::GetBackBufferWidget(), nullptr);
    }
    LibraryRun const run(bgfx::RendererType::OpenGL);
    ExpectDrawingWorks(Qt::red);
}
