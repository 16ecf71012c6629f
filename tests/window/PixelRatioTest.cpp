// Physical pixels where the screen has more of them than the window counts.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

namespace zarvex::testing {

using PixelRatioTest = BackendTest;

TEST_P(PixelRatioTest, FrameBufferAndViewportHaveTheRoundedPhysicalSize) {
    CornerWindow window(Qt::darkCyan);
    window.resize(301, 203);
    ShowAndWait(window);
    qreal const ratio = window.devicePixelRatio();
    QSize const expected(qRound(301 * ratio), qRound(203 * ratio));
    ASSERT_TRUE(WaitUntil([&] { return window.GetViewport() == QRect(QPoint(0, 0), expected); }));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), expected.width());
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), expected.height());
    if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
        EXPECT_EQ(ratio, qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
    }
    EXPECT_TRUE(window.PaintFrame());

    // A size that is whole in physical pixels at every ratio tested, so that the screen shows exactly the
    // picture.
    window.resize(304, 200);
    ASSERT_TRUE(WaitUntil([&] { return window.GetViewport().size() == QSize(304, 200) * ratio; }));
    ExpectPicture(window);
}

ZX3D_INSTANTIATE_BACKENDS(PixelRatioTest);

} // namespace zarvex::testing
