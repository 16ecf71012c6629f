// Stipples in windows. On OpenGL a window's context may take what does not vary along a line from another
// vertex than the context that draws off screen.
#include "harness/LibraryRun.h"
#include "harness/WaitUntil.h"

#include <zx3DQt/BGFXWindow.h>

#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <gtest/gtest.h>

#include <optional>

namespace zarvex::testing {

namespace {

constexpr zx3D::LineStipplePattern kPattern{0x0CF5, 4};
constexpr int kLength = 150; // pixels

/// Two thin lines of the same place in x: row 30 from left to right, row 50 from right to left.
class StippleWindow : public zx3DQt::BGFXWindow {
public:
    explicit StippleWindow(bgfx::ViewId viewId) : m_viewId(viewId) { resize(200, 80); }

    void PaintFrame() {
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return;
        zx3DQt::BGFXViewContext view(
            m_viewId, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000ff, 1.0f, 0});
        view.SetViewport(GetViewport());
        view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
        view.Submit(GetFrameBuffer());
        GetRenderer().SetModelTransform(QMatrix4x4());
        zx3D::Color const white{1.0f, 1.0f, 1.0f, 1.0f};
        float const left = 20.5f;
        float const right = left + kLength;
        zx3D::Line const lines[] = {{{left, 30.5f, 0.0f}, {right, 30.5f, 0.0f}, white},
                                    {{right, 50.5f, 0.0f}, {left, 50.5f, 0.0f}, white}};
        GetRenderer().DrawLines(view, lines, std::nullopt, std::nullopt, kPattern);
        GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    }

    /// The first pixel, counted from its line's start, that is not as the pattern says; empty when all are.
    /// Looks at the middle of each of the pattern's bits.
    std::optional<int> FindMistake() const {
        QImage const image = screen()->grabWindow(winId()).toImage();
        for (int distance = 2; distance < kLength; distance += kPattern.factor) {
            bool const isDrawn = (kPattern.pattern >> (distance / kPattern.factor % 16) & 1) != 0;
            bool const isForthDrawn = qRed(image.pixel(20 + distance, 30)) == 255;
            bool const isBackDrawn = qRed(image.pixel(20 + kLength - distance, 50)) == 255;
            if (isForthDrawn != isDrawn || isBackDrawn != isDrawn)
                return distance;
        }
        return std::nullopt;
    }

private:
    bgfx::ViewId m_viewId;
};

} // namespace

using StippleTest = BackendTest;

TEST_P(StippleTest, RunsAlongLinesInEveryWindow) {
    StippleWindow first(1);
    StippleWindow second(2);
    second.setPosition(300, 200);
    for (StippleWindow* const window : {&first, &second})
        window->show();
    for (StippleWindow* const window : {&first, &second}) {
        EXPECT_TRUE(WaitUntil([&] {
            first.PaintFrame();
            second.PaintFrame();
            return window->isExposed() && !window->FindMistake();
        })) << "wrong at distance "
            << window->FindMistake().value_or(-1);
    }
}

ZX3D_INSTANTIATE_BACKENDS(StippleTest);

} // namespace zarvex::testing
