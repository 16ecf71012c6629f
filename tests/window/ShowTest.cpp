// Hiding, minimising and showing again.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

#include <QElapsedTimer>
#include <QRasterWindow>

namespace zarvex::testing {

namespace {

struct ExposureCounter : QObject {
    int exposures = 0;

    bool eventFilter(QObject*, QEvent* event) override {
        exposures += event->type() == QEvent::Expose ? 1 : 0;
        return false;
    }
};

/// A window that shows its picture, below one that the window manager does not know.
struct CoveredWindow {
    CoveredWindow() {
        window.setPosition(100, 100);
        ShowAndWait(window);
        ExpectPicture(window);
        cover.setFlags(Qt::BypassWindowManagerHint);
        cover.setGeometry(window.geometry());
        cover.show();
        EXPECT_TRUE(WaitUntil([this] { return cover.isExposed(); }));
        window.installEventFilter(&counter);
    }

    ExposureCounter counter;
    CornerWindow window{Qt::darkGreen};
    QRasterWindow cover;
};

} // namespace

using ShowTest = BackendTest;

TEST_P(ShowTest, ShowsItsPictureAgainAfterHiding) {
    CornerWindow window(Qt::darkGreen);
    for (int i = 0; i < 10; ++i) {
        ShowAndWait(window);
        ExpectPicture(window);
        window.hide();
        ASSERT_TRUE(WaitUntil([&window] { return !window.isExposed(); }));
        window.PaintFrame(); // nobody sees it, and nothing breaks
    }
}

TEST_P(ShowTest, ShowsItsPictureAgainAfterMinimising) {
    CornerWindow window(Qt::darkBlue);
    ShowAndWait(window);
    for (int i = 0; i < 5; ++i) {
        window.showMinimized();
        ASSERT_TRUE(WaitUntil([&window] { return !window.isExposed(); }));
        window.PaintFrame();
        window.showNormal();
        ASSERT_TRUE(WaitUntil([&window] { return window.isExposed(); }));
        ExpectPicture(window);
    }
}

TEST_P(ShowTest, ResizedWhileHiddenItAppearsAtTheNewSize) {
    CornerWindow window(Qt::darkGreen);
    ShowAndWait(window);
    ExpectPicture(window);
    window.hide();
    window.resize(411, 133);
    ShowAndWait(window);
    // The window manager may show it as it was for a moment.
    QSize const size = QSize(411, 133) * window.devicePixelRatio();
    EXPECT_TRUE(WaitUntil([&] { return window.GetViewport().size() == size; }));
    ExpectPicture(window);
}

TEST_P(ShowTest, BeingUncoveredIsAnExposure) {
    CoveredWindow covered;
    covered.cover.hide();
    EXPECT_TRUE(WaitUntil([&] { return covered.counter.exposures > 0; }));
    ExpectPicture(covered.window);
}

TEST_P(ShowTest, BeingUncoveredIsNoNewsWhileAnotherPictureIsOnItsWay) {
    CoveredWindow covered;
    zx3D::FrameBuffer& frameBuffer = covered.window.GetFrameBuffer();
    frameBuffer.DestroyKeepingPicture();
    frameBuffer.SubmitOnDemand();
    covered.cover.hide();
    constexpr int milliseconds = 300;
    QElapsedTimer timer;
    timer.start();
    WaitUntil([&] { return timer.elapsed() > milliseconds; });
    EXPECT_EQ(covered.counter.exposures, 0);
    covered.window.PaintFrame();
    ExpectPicture(covered.window);
}

ZX3D_INSTANTIATE_BACKENDS(ShowTest);

} // namespace zarvex::testing
