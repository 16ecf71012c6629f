// main() of the tests that need a display.
#include "Trouble.h"
#include "VirtualDisplay.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <X11/Xlib.h>

namespace {

int OnXError(Display*, XErrorEvent* error) {
    zarvex::testing::Trouble::Report("X error " + std::to_string(error->error_code) + " in request " +
                                     std::to_string(error->request_code) + "." +
                                     std::to_string(error->minor_code));
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    // Qt would have libdbus start a session bus: a fork that, with the address sanitizer, may never return.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    zarvex::testing::VirtualDisplay const display;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    // After Qt has installed its own handlers.
    XSetErrorHandler(OnXError);
    zarvex::testing::Trouble::Watch();
    return RUN_ALL_TESTS();
}
