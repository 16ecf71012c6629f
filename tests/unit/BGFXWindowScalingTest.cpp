// The window target at device pixel ratios other than 1.
#include <zx3DQt/BGFXWindow.h>

#include <ScaledTest.h>

#include <QResizeEvent>

using namespace zarvex::zx3DQt;

namespace {

class BGFXWindowScalingTest : public ScaledTest {
protected:
    static void Resize(BGFXWindow& window, int width, int height) {
        window.create();
        window.resize(width, height);
        QResizeEvent event(window.size(), QSize());
        window.resizeEvent(&event);
    }
};

} // namespace

TEST_F(BGFXWindowScalingTest, AtOneAndAHalfTheSizeIsRoundedHalfAwayFromZero) {
    StartAt("1.5");
    BGFXWindow window;
    Resize(window, 101, 67);
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 152, 101));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 152);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 101);
}

TEST_F(BGFXWindowScalingTest, AtTwoARegionIsScaledInPositionAndSize) {
    StartAt("2");
    BGFXWindow window;
    Resize(window, 100, 100);
    UpdateViewportEvent event(QRegion(10, 20, 30, 40));
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(20, 40, 60, 80));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 200);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 200);
}

TEST_F(BGFXWindowScalingTest, NegativePositionsAreRoundedHalfAwayFromZeroToo) {
    StartAt("1.5");
    BGFXWindow window;
    UpdateViewportEvent event(QRegion(-3, -5, 3, 1));
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(-5, -8, 5, 2));
}
