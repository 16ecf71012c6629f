// The window target at device pixel ratios other than 1.
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/Library.h>

#include <Fixtures.h>

#include <QApplication>
#include <QResizeEvent>

#include <optional>

using namespace zarvex::zx3DQt;

namespace {

/// Runs the application at a scale, and the library in it.
class ScaledTest : public RecordedTest {
protected:
    void StartAt(char const* factor) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_SCALE_FACTOR", factor);
        m_application.emplace(m_argc, m_argv);
        ASSERT_TRUE(Init(false));
        ASSERT_EQ(QString::number(qApp->devicePixelRatio()).toStdString(), factor);
    }

    void TearDown() override {
        Shutdown();
        m_application.reset();
        qunsetenv("QT_SCALE_FACTOR");
        RecordedTest::TearDown();
    }

    static void Resize(BGFXWindow& window, int width, int height) {
        window.create();
        window.resize(width, height);
        QResizeEvent event(window.size(), QSize());
        window.resizeEvent(&event);
    }

private:
    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    std::optional<QApplication> m_application;
};

} // namespace

TEST_F(ScaledTest, AtOneAndAHalfTheSizeIsRoundedHalfAwayFromZero) {
    StartAt("1.5");
    BGFXWindow window;
    Resize(window, 101, 67);
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 152, 101));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 152);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 101);
}

TEST_F(ScaledTest, AtTwoARegionIsScaledInPositionAndSize) {
    StartAt("2");
    BGFXWindow window;
    Resize(window, 100, 100);
    UpdateViewportEvent event(QRegion(10, 20, 30, 40));
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(20, 40, 60, 80));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 200);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 200);
}

TEST_F(ScaledTest, NegativePositionsAreRoundedHalfAwayFromZeroToo) {
    StartAt("1.5");
    BGFXWindow window;
    UpdateViewportEvent event(QRegion(-3, -5, 3, 1));
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(-5, -8, 5, 2));
}
