// Input of a window, as signals.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

namespace zarvex::testing {

class InputTest : public BackendTest {
protected:
    InputTest() { ShowAndWait(m_window); }

    CornerWindow m_window{Qt::darkGreen};
};

TEST_P(InputTest, AClickIsOnePressAndOneRelease) {
    QSignalSpy const pressed(&m_window, &zx3DQt::BGFXWindow::mouseClickedEvent);
    QSignalSpy const released(&m_window, &zx3DQt::BGFXWindow::mouseReleasedEvent);
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, QPoint(20, 30));
    EXPECT_EQ(pressed.count(), 1);
    EXPECT_EQ(released.count(), 1);
}

TEST_P(InputTest, ADoubleClickIsRepublished) {
    QSignalSpy const doubleClicked(&m_window, &zx3DQt::BGFXWindow::mouseDoubleClickedEvent);
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, QPoint(20, 30));
    EXPECT_EQ(doubleClicked.count(), 1);
}

TEST_P(InputTest, AMoveIsRepublished) {
    QTest::mouseMove(&m_window, QPoint(40, 40));
    QSignalSpy const moved(&m_window, &zx3DQt::BGFXWindow::mouseMovedEvent);
    QTest::mouseMove(&m_window, QPoint(50, 60));
    EXPECT_GE(moved.count(), 1);
}

TEST_P(InputTest, AKeyPressIsRepublishedAndItsReleaseIsNot) {
    QSignalSpy const pressed(&m_window, &zx3DQt::BGFXWindow::keyPressedEvent);
    QTest::keyClick(&m_window, Qt::Key_A);
    EXPECT_EQ(pressed.count(), 1);
}

TEST_P(InputTest, AWheelStepIsOneSignal) {
    QSignalSpy const wheel(&m_window, &zx3DQt::BGFXWindow::wheelEvent);
    QPointF const place(20, 30);
    QWheelEvent step(place, m_window.mapToGlobal(place), QPoint(), QPoint(0, 120), Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&m_window, &step);
    EXPECT_EQ(wheel.count(), 1);
}

ZX3D_INSTANTIATE_BACKENDS(InputTest);

} // namespace zarvex::testing
