// The context by itself: thread modes, and what it refuses.
#include "ChildProcess.h"
#include "DrawingCheck.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>
#include <harness/TroubleCallback.h>

#include <zx3D/BgfxVersion.h>
#include <zx3D/Context.h>

#include <bx/bx.h>

#include <QGuiApplication>
#include <QWidget>

using namespace zarvex;
using namespace zarvex::testing;
using ThreadMode = zx3D::ContextOptions::ThreadMode;

namespace {

class ContextTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    ContextTest() { zx3D::Context::PreferRenderer(GetParam()); }
    ~ContextTest() override { zx3D::Context::Shutdown(); }

    zx3D::ContextOptions OptionsOn(void* nativeWindow, ThreadMode mode) {
        return zx3D::ContextOptions::Create(nativeWindow, 64, 64, &m_callback, mode, false);
    }

    zx3D::ContextOptions Options(ThreadMode mode) {
        return OptionsOn(reinterpret_cast<void*>(m_widget.winId()), mode);
    }

    /// Starts, draws and stops.
    void ExpectRun(ThreadMode mode) {
        ASSERT_TRUE(zx3D::Context::Initialize(Options(mode)));
        EXPECT_TRUE(zx3D::Context::IsInitialized());
        EXPECT_EQ(bgfx::getRendererType(), GetParam());
        ExpectDrawingWorks(Qt::red);
        ExpectDrawingWorks(Qt::green);
        zx3D::Context::Shutdown();
        EXPECT_FALSE(zx3D::Context::IsInitialized());
        EXPECT_TRUE(Trouble::Take().empty());
    }

    void ExpectRefusal(void* nativeWindow, char const* message) {
        EXPECT_FALSE(zx3D::Context::Initialize(OptionsOn(nativeWindow, ThreadMode::MultiThreaded)));
        EXPECT_FALSE(zx3D::Context::IsInitialized());
        std::vector<std::string> const messages = Trouble::Take();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_NE(messages.front().find(message), std::string::npos) << messages.front();
    }

    /// What may follow a single-threaded run: any other with a release build of bgfx, none with a debug
    /// build.
    void ExpectRunsAfterSingleThreaded() {
        ExpectRun(ThreadMode::SingleThreaded);
        for (ThreadMode const mode :
             {ThreadMode::MultiThreaded, ThreadMode::SingleThreaded, ThreadMode::MultiThreaded}) {
#if BX_CONFIG_DEBUG
            EXPECT_FALSE(zx3D::Context::Initialize(Options(mode)));
            EXPECT_EQ(Trouble::Take().size(), 1u);
#else
            ExpectRun(mode);
#endif
        }
    }

    QWidget m_widget;
    TroubleCallback m_callback;
};

} // namespace

TEST_P(ContextTest, DrawsWithBgfxsRenderThread) {
    ExpectRun(ThreadMode::MultiThreaded);
    ExpectRun(ThreadMode::MultiThreaded);
}

TEST_P(ContextTest, DrawsSingleThreaded) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(ExpectRun(ThreadMode::SingleThreaded), "");
}

TEST_P(ContextTest, ChangesBetweenThreadModes) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(ExpectRunsAfterSingleThreaded(), "");
}

TEST_P(ContextTest, RunsOnceAtATime) {
    ASSERT_TRUE(zx3D::Context::Initialize(Options(ThreadMode::MultiThreaded)));
    EXPECT_FALSE(zx3D::Context::Initialize(Options(ThreadMode::MultiThreaded)));
    EXPECT_TRUE(zx3D::Context::IsInitialized());
    ExpectDrawingWorks(Qt::red);
}

TEST_P(ContextTest, RefusesAHandleThatIsNoWindow) {
    ExpectRefusal(nullptr, "is not a window");
    ExpectRefusal(reinterpret_cast<void*>(std::uintptr_t{1}), "is not a window");
    ExpectRefusal(reinterpret_cast<void*>(std::uintptr_t{0x7fffffff}), "is not a window");
    void* gone;
    {
        QWidget const widget;
        gone = reinterpret_cast<void*>(widget.winId());
    }
    QGuiApplication::sync(); // until then the display server may not know
    ExpectRefusal(gone, "is not a window");
    ExpectRun(ThreadMode::MultiThreaded);
}

TEST_P(ContextTest, TellsItsOptions) {
    zx3D::ContextOptions options = Options(ThreadMode::MultiThreaded);
    options.verticalSync = true;
    ASSERT_TRUE(zx3D::Context::Initialize(options));
    EXPECT_EQ(zx3D::Context::GetOptions().nativeWindowHandle, options.nativeWindowHandle);
    EXPECT_EQ(zx3D::Context::GetOptions().callback, &m_callback);
    EXPECT_TRUE(zx3D::Context::GetOptions().verticalSync);
    EXPECT_EQ(bgfx::getCaps()->limits.*zx3D::kTransientVbSize<bgfx::Caps::Limits>,
              options.transientVertexBufferSize);
    EXPECT_EQ(bgfx::getCaps()->limits.*zx3D::kTransientIbSize<bgfx::Caps::Limits>,
              options.transientIndexBufferSize);
    zx3D::Context::Shutdown();
    EXPECT_EQ(zx3D::Context::GetOptions().callback, nullptr) << "borrowed only while running";
}

TEST_P(ContextTest, EveryRunIsAnother) {
    zx3D::ContextRun const before = zx3D::ContextRun::Current();
    EXPECT_TRUE(before.IsCurrent());
    ASSERT_TRUE(zx3D::Context::Initialize(Options(ThreadMode::MultiThreaded)));
    EXPECT_FALSE(before.IsCurrent());
    zx3D::ContextRun const first = zx3D::ContextRun::Current();
    EXPECT_TRUE(first.IsCurrent());
    zx3D::Context::Shutdown();
    EXPECT_FALSE(first.IsCurrent());
    ASSERT_TRUE(zx3D::Context::Initialize(Options(ThreadMode::MultiThreaded)));
    EXPECT_FALSE(first.IsCurrent());
}

ZX3D_INSTANTIATE_BACKENDS(ContextTest);
