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
    // The X server rounds up to whole pixels where Qt's size does not fit; then there is no exact picture.
    if (301 * ratio == expected.width() && 203 * ratio == expected.height())
        ExpectPicture(window);
    else
        EXPECT_TRUE(window.PaintFrame());
}

ZX3D_INSTANTIATE_BACKENDS(PixelRatioTest);

} // namespace zarvex::testing
