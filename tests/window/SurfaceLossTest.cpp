// Native windows that go: announced, unannounced, and with somebody still holding the frame buffer.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"
#include "harness/Trouble.h"

#include <zx3D/Context.h>

#include <QGuiApplication>
#include <QWindow>

#include <memory>
#include <optional>

namespace zarvex::testing {

namespace {

/// Counts the times that a window is told of parts that have to be drawn.
class ExposureCounter final : public QObject {
public:
    explicit ExposureCounter(QWindow& window) { window.installEventFilter(this); }

    int GetCount() const { return m_count; }

    bool eventFilter(QObject*, QEvent* event) override {
        m_count += event->type() == QEvent::Expose || event->type() == QEvent::Paint;
        return false;
    }

private:
    int m_count = 0;
};

void LetTheDisplayServerAnswer() {
    for (int i = 0; i < 20; ++i) {
        QGuiApplication::sync();
        HandlePendingEvents();
    }
}

} // namespace

using SurfaceLossTest = BackendTest;

TEST_P(SurfaceLossTest, ClosingAWindowFreesItsSurfaceAtOnce) {
    CornerWindow window(Qt::darkGreen);
    ShowAndWait(window);
    ExpectPicture(window);
    window.destroy(); // what closing does
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
}

TEST_P(SurfaceLossTest, TheLastPictureStaysWhereItIsKeptUntilTheNext) {
    CornerWindow window(Qt::darkGreen);
    ShowAndWait(window);
    ExpectPicture(window);
    ExposureCounter const exposures(window);
    QImage const before = GrabFromScreen(window);
    window.GetFrameBuffer().DestroyKeepingPicture();
    LetTheDisplayServerAnswer();
    EXPECT_EQ(GrabFromScreen(window), before);
    EXPECT_EQ(exposures.GetCount(), 0);
    ExpectPicture(window);
    window.GetFrameBuffer().Destroy(); // and here it is told that it is uncovered
    EXPECT_TRUE(WaitUntil([&] { return exposures.GetCount() > 0; }));
    ExpectPicture(window);
    window.GetFrameBuffer().DestroyKeepingPicture();
    window.close(); // with it, what is kept
}

TEST_P(SurfaceLossTest, AWindowMadeAfterAnotherWasClosedShowsItsPicture) {
    for (int i = 0; i < 5; ++i) {
        CornerWindow window(Qt::darkYellow);
        ShowAndWait(window);
        ExpectPicture(window);
        window.close();
    }
}

TEST_P(SurfaceLossTest, MoreWindowsInTurnThanThereAreFrameBuffers) {
    auto const limit = static_cast<int>(bgfx::getCaps()->limits.maxFrameBuffers);
    for (int i = 0; i < limit + 10; ++i) {
        CornerWindow window(Qt::darkCyan);
        window.show();
        ASSERT_TRUE(WaitUntil([&window] { return window.PaintFrame(); }));
        ASSERT_TRUE(bgfx::isValid(window.GetFrameBuffer().GetHandle())) << "window " << i;
        // Goes without notice: the window's destructor does not destroy the frame buffer.
    }
    CornerWindow window(Qt::darkCyan);
    ShowAndWait(window);
    ExpectPicture(window);
}

TEST_P(SurfaceLossTest, ACopyThatOutlivesTheWindowDrawsToNowhere) {
    auto window = std::make_unique<CornerWindow>(Qt::darkMagenta);
    ShowAndWait(*window);
    ExpectPicture(*window);
    zx3D::FrameBuffer copy = window->GetFrameBuffer();
    window->RecordFrame(); // goes with a frame still recorded
    window.reset();
    QGuiApplication::sync();

    CornerWindow other(Qt::darkGreen, 1);
    ShowAndWait(other);
    zx3DQt::BGFXRenderer renderer;
    zx3DQt::BGFXViewContext view(2, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR, 0xff00ffff, 1.0f, 0});
    view.SetViewport(QRect(0, 0, copy.GetWidth(), copy.GetHeight()));
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(renderer.StartFrame(copy));
        view.Submit(copy);
        bgfx::touch(view);
        renderer.PresentSubmittedFrame(false);
        ExpectPicture(other);
    }
    copy.Destroy();
}

TEST_P(SurfaceLossTest, AClosedWindowDrawsToNowhere) {
    ExpectWarning("surface.window-gone");
    CornerWindow window(Qt::darkMagenta);
    ShowAndWait(window);
    ExpectPicture(window);
    window.close();
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    // At once, while the X server may not have heard of the closing yet.
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(window.PaintFrame());
}

TEST_P(SurfaceLossTest, AWindowThatWasGivenTheFrameBufferOfAnotherGoesAndTheOtherStays) {
    CornerWindow other(Qt::darkGreen, 1);
    ShowAndWait(other);
    ExpectPicture(other);
    for (bool const isClosedFirst : {true, false}) {
        auto window = std::make_unique<CornerWindow>(Qt::darkMagenta);
        ShowAndWait(*window);
        ExpectPicture(*window);
        window->SetFrameBuffer(other.GetFrameBuffer());
        if (isClosedFirst)
            window->close();
        window.reset();
        other.SetColor(isClosedFirst ? Qt::darkBlue
                                     : Qt::darkRed); // it shows more than what it showed before
        ExpectPicture(other);
    }
}

TEST_P(SurfaceLossTest, TwoFrameBuffersOnOneWindowTakeTurns) {
    CornerWindow window(Qt::darkCyan);
    ShowAndWait(window);
    ExpectPicture(window);
    zx3D::FrameBuffer const first = window.GetFrameBuffer();
    zx3D::FrameBuffer second(reinterpret_cast<void*>(window.winId()), bgfx::TextureFormat::BGRA8,
                             bgfx::TextureFormat::D16);
    second.RequestResize(first.GetWidth(), first.GetHeight());
    window.SetFrameBuffer(second);
    ExpectPicture(window);
    second.Destroy();
    window.SetFrameBuffer(first);
    ExpectPicture(window);
}

TEST_P(SurfaceLossTest, DestroyedAndRequestedAgainTheSurfaceComesBack) {
    CornerWindow window(Qt::darkYellow);
    ShowAndWait(window);
    for (int i = 0; i < 10; ++i) {
        ExpectPicture(window);
        zx3D::FrameBuffer saved = window.GetFrameBuffer();
        window.GetFrameBuffer().Destroy();
        EXPECT_FALSE(bgfx::isValid(saved.GetHandle()));
        window.SetFrameBuffer(saved);
    }
    ExpectPicture(window);
}

namespace {

/// A native window of somebody else's, to whom nobody tells what it is used for.
class ForeignWindow {
public:
    ForeignWindow() {
        m_window.resize(200, 150);
        m_window.create();
        m_frameBuffer.emplace(reinterpret_cast<void*>(m_window.winId()), bgfx::TextureFormat::BGRA8,
                              bgfx::TextureFormat::D16);
    }

    zx3D::FrameBuffer& GetFrameBuffer() { return *m_frameBuffer; }

    void Die() {
        m_window.destroy();
        QGuiApplication::sync();
    }

private:
    QWindow m_window;
    std::optional<zx3D::FrameBuffer> m_frameBuffer;
};

void DrawFrames(zx3D::FrameBuffer& frameBuffer, int count) {
    constexpr bgfx::ViewId view = 3;
    for (int i = 0; i < count; ++i) {
        frameBuffer.BindToView(view);
        bgfx::setViewClear(view, BGFX_CLEAR_COLOR, 0xff00ffff);
        bgfx::setViewRect(view, 0, 0, bgfx::BackbufferRatio::Equal);
        bgfx::touch(view);
        zx3D::Context::SubmitFrame();
    }
}

} // namespace

TEST_P(SurfaceLossTest, AWindowMayDieBeforeBgfxHasTakenHoldOfIt) {
    ExpectWarning("surface.window-gone");
    for (int i = 0; i < 5; ++i) {
        ForeignWindow window;
        window.GetFrameBuffer().RequestResize(200, 150);
        window.GetFrameBuffer().SubmitOnDemand();
        window.Die();
        DrawFrames(window.GetFrameBuffer(), 3);
        window.GetFrameBuffer().SubmitOnDemand(); // out of sight
        DrawFrames(window.GetFrameBuffer(), 3);
        window.GetFrameBuffer().Destroy();
    }
    CornerWindow window(Qt::darkGreen);
    ShowAndWait(window);
    ExpectPicture(window);
}

TEST_P(SurfaceLossTest, AWindowBeyondTheGpusLimitHasNoSurface) {
    ExpectWarning("surface.too-large");
    ForeignWindow window;
    window.GetFrameBuffer().RequestResize(32767, 32767);
    window.GetFrameBuffer().SubmitOnDemand();
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    DrawFrames(window.GetFrameBuffer(), 3);
    window.GetFrameBuffer().RequestResize(200, 150);
    window.GetFrameBuffer().SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    DrawFrames(window.GetFrameBuffer(), 3);
    window.GetFrameBuffer().Destroy();
}

TEST_P(SurfaceLossTest, AViewOfADestroyedFrameBufferMayBeDrawnInto) {
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::BGRA8, bgfx::TextureFormat::D16);
    frameBuffer.RequestResize(64, 48);
    frameBuffer.SubmitOnDemand();
    DrawFrames(frameBuffer, 1);
    frameBuffer.Destroy();
    for (int i = 0; i < 5; ++i) {
        bgfx::touch(3);
        zx3D::Context::SubmitFrame();
    }
}

TEST_P(SurfaceLossTest, AFrameBufferWithoutDepthWorks) {
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::BGRA8, bgfx::TextureFormat::Count);
    frameBuffer.RequestResize(64, 48);
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    DrawFrames(frameBuffer, 3);
    frameBuffer.Destroy();
}

ZX3D_INSTANTIATE_BACKENDS(SurfaceLossTest);

} // namespace zarvex::testing
