// Windows beside each other.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

#include <zx3D/Vertex.h>

#include <QMatrix4x4>
#include <QPixmap>
#include <QScreen>

namespace zarvex::testing {

using SeveralWindowsTest = BackendTest;

namespace {

/// A white square of 20 pixels in row 40, where it was last told to be, in a black window.
class SquareWindow : public zx3DQt::BGFXWindow {
public:
    explicit SquareWindow(bgfx::ViewId viewId) : m_viewId(viewId) { resize(200, 100); }

    bool RecordFrame(float left) {
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return false;
        zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000ff, 1.0f, 0};
        zx3DQt::BGFXViewContext view(m_viewId, clear, bgfx::ViewMode::Sequential);
        view.SetViewport(GetViewport());
        view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
        view.Submit(GetFrameBuffer());
        QMatrix4x4 place;
        place.translate(left, 40.0f);
        GetRenderer().SetModelTransform(place);
        using Vertex = zx3D::Vertex::Pos3fColorRGBA;
        zx3D::Color const white{1.0f, 1.0f, 1.0f, 1.0f};
        Vertex const corners[] = {Vertex({0.0f, 0.0f, 0.0f}, white), Vertex({20.0f, 0.0f, 0.0f}, white),
                                  Vertex({20.0f, 20.0f, 0.0f}, white), Vertex({0.0f, 20.0f, 0.0f}, white)};
        std::uint16_t const indices[] = {0, 1, 2, 0, 2, 3};
        GetRenderer().DrawTriangles(view, corners, indices);
        return true;
    }

    bool ShowsSquareAt(int left) const {
        QImage const image = screen()->grabWindow(winId()).toImage().convertToFormat(QImage::Format_RGB32);
        auto const isWhite = [&image](int x) { return image.pixel(x, 50) == qRgb(255, 255, 255); };
        return !isWhite(left - 1) && isWhite(left) && isWhite(left + 19) && !isWhite(left + 20);
    }

private:
    bgfx::ViewId m_viewId;
};

} // namespace

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

// Each window has an OpenGL context of its own. What one sets to a value that another has just set must
// arrive.
TEST_P(SeveralWindowsTest, WindowsThatDrawTheSameAllFollowItsChanges) {
    SquareWindow first(0);
    SquareWindow second(1);
    SquareWindow third(2);
    SquareWindow* const windows[] = {&first, &second, &third};
    int x = 50;
    for (SquareWindow* const window : windows) {
        window->setPosition(x, 100);
        window->show();
        ASSERT_TRUE(WaitUntil([window] { return window->isExposed(); }));
        x += 300;
    }
    for (int const left : {10, 60, 110}) {
        EXPECT_TRUE(WaitUntil([&] {
            bool painted = true;
            for (SquareWindow* const window : windows)
                painted = window->RecordFrame(static_cast<float>(left)) && painted;
            bgfx::frame();
            return painted && first.ShowsSquareAt(left) && second.ShowsSquareAt(left) &&
                   third.ShowsSquareAt(left);
        })) << "with the square at "
            << left << " in " << first.ShowsSquareAt(left) << second.ShowsSquareAt(left)
            << third.ShowsSquareAt(left);
    }
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
