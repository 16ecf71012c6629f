// The picture follows the window's size.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

#include <QCoreApplication>
#include <QElapsedTimer>

namespace zarvex::testing {

using ResizeTest = BackendTest;

TEST_P(ResizeTest, PictureFillsTheWindow) {
    CornerWindow window(Qt::darkCyan);
    ShowAndWait(window);
    ExpectPicture(window);
}

TEST_P(ResizeTest, AHundredResizesInASecondEndAtTheLastSize) {
    CornerWindow window(Qt::darkYellow);
    ShowAndWait(window);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 100; ++i) {
        window.resize(200 + 3 * i, 150 + 7 * (i % 10));
        window.PaintFrame();
        while (clock.elapsed() < 10 * i)
            QCoreApplication::processEvents();
    }
    QSize const last(347, 261);
    window.resize(last);
    ASSERT_TRUE(WaitUntil([&] { return window.GetViewport().size() == last * window.devicePixelRatio(); }));
    ExpectPicture(window);
}

TEST_P(ResizeTest, GrowsAndShrinksByOnePixel) {
    CornerWindow window(Qt::darkMagenta);
    ShowAndWait(window);
    for (QSize const size : {QSize(301, 201), QSize(302, 201), QSize(302, 202), QSize(301, 201)}) {
        window.resize(size);
        ASSERT_TRUE(
            WaitUntil([&] { return window.GetViewport().size() == size * window.devicePixelRatio(); }));
        ExpectPicture(window);
    }
}

ZX3D_INSTANTIATE_BACKENDS(ResizeTest);

} // namespace zarvex::testing
