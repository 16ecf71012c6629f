// main() of the tests that need a display.
#include "Trouble.h"
#include "VirtualDisplay.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    // Qt would have libdbus start a session bus: a fork that, with the address sanitizer, may never return.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    zarvex::testing::VirtualDisplay const display;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    zarvex::testing::Trouble::Watch(); // after Qt has installed its own handlers
    return RUN_ALL_TESTS();
}
