// main() of the tests that need a display.
#include "Trouble.h"
#include "VirtualDisplay.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    zarvex::testing::VirtualDisplay const display;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    zarvex::testing::Trouble::Watch(); // after Qt has installed its own handlers
    return RUN_ALL_TESTS();
}
