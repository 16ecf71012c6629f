// Native windows that go: announced, unannounced, and with somebody still holding the frame buffer.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"
#include "harness/Trouble.h"

#include <QGuiApplication>

namespace zarvex::testing {

using SurfaceLossTest = BackendTest;

TEST_P(SurfaceLossTest, ClosingAWindowFreesItsSurfaceAtOnce) {
    CornerWindow window(Qt::darkGreen);
    ShowAndWait(window);
    ExpectPicture(window);
    window.destroy(); // what closing does
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
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

ZX3D_INSTANTIATE_BACKENDS(SurfaceLossTest);

} // namespace zarvex::testing
