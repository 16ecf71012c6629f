// bgfx's render thread calls back and logs while the GUI thread logs too.
#include "RenderTest.h"

#include <harness/Sanitizers.h>
#include <harness/Trouble.h>
#include <harness/WaitUntil.h>

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>
#include <zx3D/FrameListener.h>

#include <QLoggingCategory>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr int kFrames = 40;

std::thread::id guiThread;
std::atomic<int> messagesOfGuiThread;
std::atomic<int> messagesOfOtherThreads;
std::atomic<int> screenshots;

void CountMessage(QtMsgType, QMessageLogContext const& context, QString const& text) {
    if (!QString(context.category).startsWith("zarvex."))
        return;
    ++(std::this_thread::get_id() == guiThread ? messagesOfGuiThread : messagesOfOtherThreads);
    if (text.startsWith("Screenshot captured"))
        ++screenshots;
}

/// Counts the library's messages by thread instead of having them printed.
class MessageCount {
public:
    MessageCount() {
        guiThread = std::this_thread::get_id();
        messagesOfGuiThread = messagesOfOtherThreads = screenshots = 0;
        QLoggingCategory::setFilterRules("zarvex.*=true");
        m_before = qInstallMessageHandler(CountMessage);
    }

    ~MessageCount() {
        qInstallMessageHandler(m_before);
        QLoggingCategory::setFilterRules(QString());
    }

private:
    QtMessageHandler m_before;
};

/// Has the render thread call back: with a screenshot of the back buffer, which must be what is drawn on
/// last.
void RequestScreenshot() {
    constexpr bgfx::ViewId afterAll = 200;
    bgfx::setViewFrameBuffer(afterAll, BGFX_INVALID_HANDLE);
    bgfx::setViewRect(afterAll, 0, 0, bgfx::BackbufferRatio::Equal);
    bgfx::touch(afterAll);
    bgfx::requestScreenShot(BGFX_INVALID_HANDLE, "frame");
}

/// The frame that the render thread finished last, and on which thread.
class LastFrame {
public:
    std::uint32_t GetNumber() const { return m_number; }
    std::thread::id GetThread() const { return m_thread; }

private:
    std::atomic<std::uint32_t> m_number = 0;
    std::atomic<std::thread::id> m_thread;
    zx3D::FrameListener m_listener{[this](std::uint32_t number) {
        m_thread = std::this_thread::get_id();
        m_number = number;
    }};
};

/// Time that all threads of the process together have been running, seconds.
double ProcessSeconds() {
    std::timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

class RenderThreadTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {};

} // namespace

TEST_P(RenderThreadTest, LogsThroughTheDefaultCallbackWhileTheGuiThreadLogs) {
    MessageCount const count;
    zx3D::Context::PreferRenderer(GetParam());
    ASSERT_TRUE(zx3DQt::Init(false));
    {
        OffscreenTarget target(QSize(64, 48));
        zx3DQt::BGFXRenderer renderer;
        for (int i = 0; i < kFrames; ++i) {
            ASSERT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
            renderer.SetModelTransform(QMatrix4x4());
            zx3DQt::BGFXViewContext const view = PixelView(target.GetViewport());
            view.Submit(target.GetFrameBuffer());
            DrawRect(renderer, view, QRectF(i, 0, 8, 8), Qt::red);
            RequestScreenshot();
            renderer.PresentCurrentAndSubmitNextFrame(false);
        }
        renderer.PresentSubmittedFrame(false);
    }
    zx3DQt::Shutdown();
    EXPECT_EQ(screenshots, kFrames);
    EXPECT_GE(messagesOfOtherThreads, kFrames);
    EXPECT_GE(messagesOfGuiThread, 5 * kFrames);
}

TEST_P(RenderThreadTest, TellsWhichFrameIsFinished) {
    zx3D::Context::PreferRenderer(GetParam());
    EXPECT_FALSE(zx3D::Context::IsFrameInFlight());
    LastFrame const last;
    ASSERT_TRUE(zx3DQt::Init(false));
    EXPECT_FALSE(zx3D::Context::IsFrameInFlight()) << "none was submitted yet";
    for (int i = 0; i < kFrames; ++i) {
        if (i % 3 == 1)
            bgfx::frame(); // the application's own, between ours
        std::uint32_t const number = zx3D::Context::SubmitFrame();
        ASSERT_TRUE(WaitUntil([] { return !zx3D::Context::IsFrameInFlight(); })) << "frame " << i;
        ASSERT_TRUE(WaitUntil([&] { return last.GetNumber() >= number; }));
        EXPECT_EQ(last.GetNumber(), number);
        EXPECT_NE(last.GetThread(), std::this_thread::get_id());
    }
    zx3D::Context::SubmitFrame();
    zx3DQt::Shutdown();
    EXPECT_FALSE(zx3D::Context::IsFrameInFlight());
}

TEST_P(RenderThreadTest, IsTheSameInEveryRun) {
    zx3D::Context::PreferRenderer(GetParam());
    LastFrame const last;
    std::thread::id first;
    for (int run = 0; run < 5; ++run) {
        ASSERT_TRUE(zx3DQt::Init(false));
        std::uint32_t const number = zx3D::Context::SubmitFrame();
        ASSERT_TRUE(WaitUntil([&] { return last.GetNumber() == number; }));
        zx3DQt::Shutdown();
        first = run == 0 ? last.GetThread() : first;
        EXPECT_EQ(last.GetThread(), first);
    }
}

TEST_P(RenderThreadTest, CostsNothingBetweenRuns) {
    zx3D::Context::PreferRenderer(GetParam());
    ASSERT_TRUE(zx3DQt::Init(false));
    zx3DQt::Shutdown();
    double const before = ProcessSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(ProcessSeconds() - before, 0.01);
}

namespace {

void ExitWhileAFrameIsDrawn(bgfx::RendererType::Enum backend) {
    ExpectUntidyEnd();
    zx3D::Context::PreferRenderer(backend);
    static LastFrame const last; // hears of frames until the end
    ASSERT_TRUE(zx3DQt::Init(false));
    zx3D::Context::SubmitFrame();
    std::exit(0);
}

} // namespace

TEST_P(RenderThreadTest, AProcessMayExitWithoutShutdown) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitWhileAFrameIsDrawn(GetParam()), ::testing::ExitedWithCode(0), "");
}

ZX3D_INSTANTIATE_BACKENDS(RenderThreadTest);
