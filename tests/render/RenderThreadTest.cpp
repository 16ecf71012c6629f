// bgfx's render thread calls back and logs while the GUI thread logs too.
#include "RenderTest.h"

#include <harness/Trouble.h>

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <QLoggingCategory>

#include <atomic>
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

ZX3D_INSTANTIATE_BACKENDS(RenderThreadTest);
