// Runs the tests with a QApplication alive.
#include <harness/Trouble.h>

#include <QApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    // Tests that end a process do it in a fresh one: Qt has threads.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // No display is needed, and none is used where there is one.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const application(argc, argv);
    zarvex::testing::Trouble::Watch(); // unless a LogCapture listens
    return RUN_ALL_TESTS();
}
