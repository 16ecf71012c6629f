// Windows beside each other.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

namespace zarvex::testing {

using SeveralWindowsTest = BackendTest;

TEST_P(SeveralWindowsTest, ThreeWindowsKeepTheirOwnColors) {
    CornerWindow first(Qt::darkCyan, 0);
    CornerWindow second(Qt::darkYellow, 1);
    CornerWindow third(Qt::darkMagenta, 2);
    int x = 50;
    for (CornerWindow* const window : {&first, &second, &third}) {
        window->setPosition(x, 100);
        ShowAndWait(*window);
        x += 400;
    }
    for (int round = 0; round < 3; ++round) {
        for (CornerWindow* const window : {&first, &second, &third})
            ExpectPicture(*window);
        second.resize(300 + round, 200);
    }
}

TEST_P(SeveralWindowsTest, OneFrameShowsAllWindows) {
    CornerWindow left(Qt::darkCyan, 0);
    CornerWindow right(Qt::darkYellow, 1);
    left.setPosition(50, 100);
    right.setPosition(500, 100);
    ShowAndWait(left);
    ShowAndWait(right);
    ASSERT_TRUE(WaitUntil([&] {
        left.RecordFrame();
        right.RecordFrame();
        bgfx::frame();
        QPoint const middle(160, 120);
        return GrabFromScreen(left).pixel(middle) == left.GetColor().rgb() &&
               GrabFromScreen(right).pixel(middle) == right.GetColor().rgb();
    }));
}

TEST_P(SeveralWindowsTest, OthersGoOnWhenOneIsDeleted) {
    CornerWindow staying(Qt::darkGreen, 0);
    staying.setPosition(600, 100);
    ShowAndWait(staying);
    for (int i = 0; i < 5; ++i) {
        auto leaving = std::make_unique<CornerWindow>(Qt::darkRed, 1);
        leaving->setPosition(50, 100);
        ShowAndWait(*leaving);
        ExpectPicture(*leaving);
        leaving->RecordFrame(); // goes with a frame still recorded
        leaving.reset();
        ExpectPicture(staying);
    }
}

TEST_P(SeveralWindowsTest, AChildWindowStaysInFrontOfItsParent) {
    CornerWindow parent(Qt::darkCyan, 0);
    CornerWindow child(Qt::darkYellow, 1);
    child.setParent(&parent);
    child.setGeometry(100, 80, 60, 40);
    ShowAndWait(parent);
    child.show();
    for (int width : {320, 350, 330}) {
        parent.resize(width, 240);
        ASSERT_TRUE(WaitUntil([&] {
            parent.PaintFrame();
            child.PaintFrame();
            return GrabFromScreen(parent).pixel(130, 100) == child.GetColor().rgb() &&
                   GrabFromScreen(parent).pixel(50, 100) == parent.GetColor().rgb();
        }));
    }
}

ZX3D_INSTANTIATE_BACKENDS(SeveralWindowsTest);

} // namespace zarvex::testing
