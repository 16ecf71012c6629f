// Stipples in windows. On OpenGL a window's context may take what does not vary along a line from another
// vertex than the context that draws off screen.
#include "harness/LibraryRun.h"
#include "harness/WaitUntil.h"
#include "render/OffscreenTarget.h"
#include "render/RenderTest.h"

#include <zx3DQt/BGFXWindow.h>

#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zarvex::testing {

namespace {

constexpr zx3D::LineStipplePattern kPattern{0x0CF5, 4};
constexpr int kLength = 150; // pixels

zx3D::Color const kWhite{1.0f, 1.0f, 1.0f, 1.0f};

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
        float const left = 20.5f;
        float const right = left + kLength;
        zx3D::Line const lines[] = {{{left, 30.5f, 0.0f}, {right, 30.5f, 0.0f}, kWhite},
                                    {{right, 50.5f, 0.0f}, {left, 50.5f, 0.0f}, kWhite}};
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

constexpr QSize kPictureSize(900, 600);

/// Thin lines in a view of kPictureSize; in pixels unless told otherwise.
struct Lines {
    std::string name;
    std::vector<zx3D::Line> lines;
    std::function<void(zx3DQt::BGFXViewContext&)> setUpView = nullptr;
};

/// From places all over the picture to 16,000 pixels beyond it, in all directions.
Lines LinesBeyondTheEdge() {
    Lines lines{"beyond the edge", {}};
    for (int i = 0; i < 96; ++i) {
        float const x = 60.0f + 111.0f * static_cast<float>(i % 8);
        float const y = 50.0f + 43.0f * static_cast<float>(i / 8);
        float const angle = 0.1f + 2.4f * static_cast<float>(i);
        lines.lines.push_back(
            {{x, y, 0.5f}, {x + 16'900.0f * std::cos(angle), y + 16'900.0f * std::sin(angle), 0.5f}, kWhite});
    }
    return lines;
}

/// Past a camera, far and near.
Lines LinesToBehindTheCamera() {
    Lines lines{"to behind the camera", {}};
    lines.setUpView = [](zx3DQt::BGFXViewContext& view) {
        bx::mtxProj(view.GetProjectionMatrix().data(), 60.0f, 1.5f, 0.1f, 100.0f,
                    bgfx::getCaps()->homogeneousDepth);
    };
    for (int i = 0; i < 60; ++i) {
        float const x = -3.0f + 0.1f * static_cast<float>(i);
        float const behind = 0.02f + 0.15f * static_cast<float>(i % 20);
        lines.lines.push_back({{x, -0.9f, 4.0f}, {1.7f * x, -1.3f, -behind}, kWhite});
        lines.lines.push_back({{3.0f * x, 5.9f, 20.0f}, {1.7f * x + 0.3f, 1.3f, -behind}, kWhite});
    }
    return lines;
}

Lines Backwards(Lines lines) {
    lines.name += ", backwards";
    for (zx3D::Line& line : lines.lines)
        std::swap(line.start, line.end);
    return lines;
}

void Record(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer, Lines const& lines) {
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    zx3DQt::BGFXViewContext view = PixelView(QRect(QPoint(), kPictureSize));
    if (lines.setUpView)
        lines.setUpView(view);
    view.Submit(frameBuffer);
    renderer.SetModelTransform(QMatrix4x4());
    renderer.DrawLines(view, lines.lines, std::nullopt, std::nullopt, zx3D::LineStipplePattern{0xF0F0, 1});
}

QImage DrawOffscreen(Lines const& lines) {
    OffscreenTarget target(kPictureSize);
    zx3DQt::BGFXRenderer renderer;
    Record(renderer, target.GetFrameBuffer(), lines);
    return ReadBack(target.GetFrameBuffer());
}

class LineWindow : public zx3DQt::BGFXWindow {
public:
    LineWindow() { resize(kPictureSize); }

    /// What the screen shows after a frame.
    QImage Draw(Lines const& lines) {
        Record(GetRenderer(), GetFrameBuffer(), lines);
        GetRenderer().PresentSubmittedFrame(false);
        return screen()->grabWindow(winId()).toImage();
    }
};

bool IsDrawn(QImage const& image, QPoint pixel) {
    return image.rect().contains(pixel) && qRed(image.pixel(pixel)) > 128;
}

/// Pixels of one picture that are farther than a pixel from all of the other.
int CountFar(QImage const& image, QImage const& other) {
    auto const isNear = [&other](int x, int y) {
        for (int i = 0; i < 9; ++i) {
            if (IsDrawn(other, QPoint(x + i % 3 - 1, y + i / 3 - 1)))
                return true;
        }
        return false;
    };
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += IsDrawn(image, QPoint(x, y)) && !isNear(x, y);
    }
    return count;
}

} // namespace

using StippleTest = BackendTest;

TEST_P(StippleTest, DashesOfThinLinesEndWithinAPixelOfThoseOffscreen) {
    LineWindow window;
    window.show();
    ASSERT_TRUE(WaitUntil([&] { return window.isExposed(); }));
    for (Lines const& lines : {LinesBeyondTheEdge(), Backwards(LinesBeyondTheEdge()),
                               LinesToBehindTheCamera(), Backwards(LinesToBehindTheCamera())}) {
        QImage const expected = DrawOffscreen(lines);
        EXPECT_GT(CountFar(expected, QImage()), 5000) << lines.name;
        QImage actual;
        auto const isAlike = [&] {
            actual = window.Draw(lines);
            return CountFar(actual, expected) == 0 && CountFar(expected, actual) == 0;
        };
        EXPECT_TRUE(WaitUntil(isAlike)) << lines.name << ": " << CountFar(actual, expected)
                                        << " pixels too many, " << CountFar(expected, actual) << " too few";
    }
}

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
