// Hiding, minimising and showing again.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

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
    CornerWindow window(Qt::darkGreen);
    window.setPosition(100, 100);
    ShowAndWait(window);
    ExpectPicture(window);
    QRasterWindow cover;
    cover.setFlags(Qt::BypassWindowManagerHint);
    cover.setGeometry(window.geometry());
    cover.show();
    ASSERT_TRUE(WaitUntil([&cover] { return cover.isExposed(); }));
    ExposureCounter counter;
    window.installEventFilter(&counter);
    cover.hide();
    EXPECT_TRUE(WaitUntil([&counter] { return counter.exposures > 0; }));
    ExpectPicture(window);
}

ZX3D_INSTANTIATE_BACKENDS(ShowTest);

} // namespace zarvex::testing
