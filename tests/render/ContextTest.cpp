// The context by itself: thread modes, and what it refuses.
#include "ChildProcess.h"
#include "DrawingCheck.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>
#include <harness/TroubleCallback.h>
#include <harness/WaitUntil.h>

#include <zx3D/BgfxVersion.h>
#include <zx3D/Context.h>
#include <zx3D/FrameBuffer.h>

#include <bx/bx.h>

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

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

    /// In single-threaded mode only `SubmitFrame` notices that a window has been drawn into.
    void ExpectAWindowToAppearAfterSubmitFrame() {
        ASSERT_TRUE(zx3D::Context::Initialize(Options(ThreadMode::SingleThreaded)));
        QWindow window;
        window.resize(80, 60);
        window.show();
        ASSERT_TRUE(WaitUntil([&window] { return window.isExposed(); }));
        zx3D::FrameBuffer frameBuffer(reinterpret_cast<void*>(window.winId()), bgfx::TextureFormat::BGRA8,
                                      bgfx::TextureFormat::D16);
        frameBuffer.RequestResize(80, 60);
        frameBuffer.SubmitOnDemand();
        auto const record = [&frameBuffer] {
            frameBuffer.BindToView(0);
            bgfx::setViewClear(0, BGFX_CLEAR_COLOR, 0xff00ffff);
            bgfx::setViewRect(0, 0, 0, 80, 60);
            bgfx::touch(0);
        };
        auto const isShown = [&window] {
            QImage const image = window.screen()->grabWindow(window.winId()).toImage();
            return image.pixelColor(40, 30) == QColor(0xff, 0x00, 0xff);
        };
        for (int i = 0; i < 5; ++i) {
            record();
            bgfx::frame();
            HandlePendingEvents();
            EXPECT_FALSE(isShown()) << i;
        }
        record();
        zx3D::Context::SubmitFrame();
        for (int i = 0; i < 3; ++i) { // from the next one on, whoever submits it
            record();
            bgfx::frame();
            EXPECT_TRUE(WaitUntil(isShown)) << i;
        }
        frameBuffer.Destroy();
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

TEST_P(ContextTest, SingleThreadedAWindowAppearsAfterSubmitFrame) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(ExpectAWindowToAppearAfterSubmitFrame(), "");
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
