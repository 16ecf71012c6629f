// Several samples on each kind of target: what the screen and pictures show of edges.
#include "CornerWidget.h"

#include "harness/Trouble.h"
#include "render/SharedRun.h"
#include "render/SmoothTriangle.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/Library.h>

#include <QScreen>

namespace zarvex::testing {

namespace {

void PutOnScreen(zx3DQt::BGFXNativeWidget& widget) {
    widget.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
}

void PutOnScreen(zx3DQt::BGFXOffscreenWidget& widget) {
    widget.Flush();
}

template<typename Base>
class TriangleWidget final : public Base {
public:
    TriangleWidget() { Base::resize(200, 150); }

    void paintEvent(QPaintEvent* event) override {
        Base::paintEvent(event);
        if (RecordTriangle(Base::GetRenderer(), Base::GetFrameBuffer(), 1) && event != nullptr)
            PutOnScreen(*this);
    }
};

QImage GrabWindow(QWindow const& window) {
    return window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
}

int CountTextures() {
    bgfx::frame();
    bgfx::frame(); // destructions wait for the frame that they were recorded in
    return bgfx::getStats()->numTextures;
}

template<typename Widget>
void CheckWidget() {
    Widget widget;
    ShowAndWait(widget);
    auto const shows = [&widget](bool (*matches)(QImage const&)) {
        return WaitUntil([&] { return matches(GrabFromScreen(widget)); });
    };
    EXPECT_TRUE(shows(IsStepped)) << "by default";
    int const textures = CountTextures();
    for (int round = 0; round < 2; ++round) {
        widget.SetSampleCount(4);
        EXPECT_EQ(widget.GetSampleCount(), 4u);
        EXPECT_TRUE(shows(IsSmooth)) << "without an update() of the application's";
        widget.resize(220 + round, 140);
        EXPECT_TRUE(shows(IsSmooth)) << "resized";
        EXPECT_TRUE(IsSmooth(widget.RenderPixmap(333, 217).toImage())) << "in a picture";
        widget.hide();
        EXPECT_TRUE(IsSmooth(widget.RenderPixmap(90, 130).toImage())) << "while it is hidden";
        ShowAndWait(widget);
        EXPECT_TRUE(shows(IsSmooth)) << "shown again";
        widget.SetSampleCount(1);
        EXPECT_TRUE(shows(IsStepped)) << "as before";
        EXPECT_EQ(CountTextures(), textures);
        EXPECT_TRUE(IsStepped(widget.RenderPixmap(333, 217).toImage()));
        EXPECT_TRUE(shows(IsStepped));
    }
    widget.SetDepthFormat(bgfx::TextureFormat::D32F);
    EXPECT_EQ(widget.GetDepthFormat(), bgfx::TextureFormat::D32F);
    EXPECT_TRUE(shows(IsStepped));
}

} // namespace

using SmoothEdgesTest = SharedRunTest;

TEST_P(SmoothEdgesTest, ANativeWidgetShowsThemOnceItHasSeveralSamples) {
    CheckWidget<TriangleWidget<zx3DQt::BGFXNativeWidget>>();
}

TEST_P(SmoothEdgesTest, AnOffscreenWidgetShowsThemOnceItHasSeveralSamples) {
    CheckWidget<TriangleWidget<zx3DQt::BGFXOffscreenWidget>>();
}

TEST_P(SmoothEdgesTest, AWindowShowsThemFromTheNextFrameOn) {
    zx3DQt::BGFXWindow window;
    window.resize(200, 150);
    window.show();
    ASSERT_TRUE(WaitUntil([&window] { return window.isExposed(); }));
    auto const shows = [&window](bool (*matches)(QImage const&)) {
        return WaitUntil([&] {
            if (RecordTriangle(window.GetRenderer(), window.GetFrameBuffer(), 1))
                window.GetRenderer().PresentSubmittedFrame(false);
            return matches(GrabWindow(window));
        });
    };
    EXPECT_TRUE(shows(IsStepped));
    int const textures = CountTextures();
    window.SetSampleCount(4);
    window.SetDepthFormat(bgfx::TextureFormat::D24S8);
    EXPECT_TRUE(shows(IsSmooth));
    for (int const width : {120, 260}) {
        window.resize(width, 140);
        EXPECT_TRUE(shows(IsSmooth)) << width;
    }
    window.hide();
    window.show();
    EXPECT_TRUE(shows(IsSmooth)) << "shown again";
    window.SetSampleCount(1);
    EXPECT_TRUE(shows(IsStepped));
    EXPECT_EQ(CountTextures(), textures);
    window.GetFrameBuffer().Destroy();
}

TEST_P(SmoothEdgesTest, TwoWindowsInOneFrameShowThemBoth) {
    zx3DQt::BGFXWindow left, right;
    for (zx3DQt::BGFXWindow* const window : {&left, &right}) {
        window->resize(200, 150);
        window->setPosition(window == &left ? 20 : 300, 40);
        window->SetSampleCount(4);
        window->show();
        ASSERT_TRUE(WaitUntil([window] { return window->isExposed(); }));
    }
    auto const show = [&] {
        return WaitUntil([&] {
            // Started before either is drawn, as one of them may be made anew.
            left.GetRenderer().StartFrame(left.GetFrameBuffer());
            right.GetRenderer().StartFrame(right.GetFrameBuffer());
            if (RecordTriangle(left.GetRenderer(), left.GetFrameBuffer(), 1) &&
                RecordTriangle(right.GetRenderer(), right.GetFrameBuffer(), 2))
                left.GetRenderer().PresentSubmittedFrame(false);
            return IsSmooth(GrabWindow(left)) && IsSmooth(GrabWindow(right));
        });
    };
    EXPECT_TRUE(show());
    right.resize(180, 190);
    EXPECT_TRUE(show());
    left.GetFrameBuffer().Destroy();
    right.GetFrameBuffer().Destroy();
}

ZX3D_INSTANTIATE_BACKENDS(SmoothEdgesTest);

} // namespace zarvex::testing
