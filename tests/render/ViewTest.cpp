// Where a view draws on its target, and what it clears.
#include "RenderTest.h"

#include <zx3DQt/Library.h>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class ViewTest : public RenderTest {
protected:
    /// Presents a frame that leaves the whole target in one colour, at a depth.
    void PresentCover(QColor const& color, float depth = 0.5f) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(m_target.GetViewport()), color, depth);
        m_renderer.PresentSubmittedFrame(false);
    }

    /// Presents a frame in which a view with these clear options draws a red square at a depth; the picture.
    QImage PresentSquare(std::optional<zx3DQt::BGFXViewClearOptions> const& clear, float depth,
                         bgfx::ViewId id = 0) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), Qt::black, id);
        view.SetViewClearOptions(clear);
        view.Submit(m_target.GetFrameBuffer());
        DrawRect(view, QRectF(kSquare), Qt::red, depth);
        return Present();
    }

    QImage SquareOn(QColor const& background) const {
        QImage image = Canvas(background);
        Fill(image, kSquare, Qt::red);
        return image;
    }

    static constexpr QRect kSquare{20, 10, 8, 8};
};

} // namespace

TEST_P(ViewTest, DrawsAndClearsInsideItsViewportOnly) {
    PresentCover(Qt::white);
    StartFrame();
    QRect const viewport(11, 7, 30, 20);
    zx3DQt::BGFXViewContext const view = PixelView(viewport, Qt::blue);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(2, 3, 5, 4), Qt::red);
    DrawRect(view, QRectF(25, 15, 100, 100), Qt::green); // reaches beyond
    QImage expected = Canvas(Qt::white);
    Fill(expected, viewport, Qt::blue);
    Fill(expected, QRect(13, 10, 5, 4), Qt::red);
    Fill(expected, QRect(36, 22, 5, 5), Qt::green);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ViewTest, SubmitTakesAnotherRectangleThanTheViewport) {
    PresentCover(Qt::white);
    StartFrame();
    zx3DQt::BGFXViewContext const view = PixelView(m_target.GetViewport(), Qt::blue);
    view.Submit(m_target.GetFrameBuffer(), QRect(32, 24, 32, 24)); // half as large
    DrawRect(view, QRectF(4, 8, 20, 10), Qt::red);
    QImage expected = Canvas(Qt::white);
    Fill(expected, QRect(32, 24, 32, 24), Qt::blue);
    Fill(expected, QRect(34, 28, 10, 5), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
    EXPECT_EQ(view.GetViewport(), m_target.GetViewport());
}

TEST_P(ViewTest, RectangleOfFractionsIsRounded) {
    PresentCover(Qt::white);
    StartFrame();
    zx3DQt::BGFXViewContext const view = PixelView(m_target.GetViewport(), Qt::blue);
    QRectF const rect(3.6, 4.4, 20.0, 10.0);
    view.Submit(m_target.GetFrameBuffer(), rect);
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::red);
    QImage expected = Canvas(Qt::white);
    Fill(expected, QRect(4, 4, 20, 10), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

// Before, it begins at the target's edge, as large.
TEST_P(ViewTest, ARectangleThatBeginsOutsideOfTheTargetIsCutFrom152On) {
    PresentCover(Qt::white);
    StartFrame();
    zx3DQt::BGFXViewContext const view = PixelView(m_target.GetViewport(), Qt::blue);
    QRect const rect(-16, -12, 64, 48);
    view.Submit(m_target.GetFrameBuffer(), rect);
    DrawRect(view, QRectF(20, 20, 12, 4), Qt::red);
    QPoint const begin = BGFX_API_VERSION < 152 ? QPoint(0, 0) : rect.topLeft();
    QImage expected = Canvas(Qt::white);
    Fill(expected, QRect(begin, rect.size()) & m_target.GetViewport(), Qt::blue);
    Fill(expected, QRect(20, 20, 12, 4).translated(begin), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ViewTest, SeveralViewsShareATarget) {
    StartFrame();
    QColor const colors[] = {Qt::red, Qt::green, Qt::blue, Qt::yellow};
    QImage expected = Canvas();
    for (int i = 0; i < 4; ++i) {
        QRect const viewport(i % 2 * 32, i / 2 * 24, 32, 24);
        zx3DQt::BGFXViewContext const view = PixelView(viewport, colors[i], static_cast<bgfx::ViewId>(i));
        view.Submit(m_target.GetFrameBuffer());
        DrawRect(view, QRectF(1 + i, 2, 6, 6), Qt::white);
        Fill(expected, viewport, colors[i]);
        Fill(expected, QRect(viewport.x() + 1 + i, viewport.y() + 2, 6, 6), Qt::white);
    }
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ViewTest, ViewsAreDrawnInTheOrderOfTheirIds) {
    StartFrame();
    zx3DQt::BGFXViewContext second = PixelView(m_target.GetViewport(), Qt::black, 2);
    second.SetViewClearOptions(zx3DQt::BGFXViewClearOptions{}); // clears nothing
    zx3DQt::BGFXViewContext const first = PixelView(m_target.GetViewport(), Qt::black, 1);
    second.Submit(m_target.GetFrameBuffer());
    first.Submit(m_target.GetFrameBuffer());
    DrawRect(second, QRectF(m_target.GetViewport()), Qt::green);
    DrawRect(first, QRectF(m_target.GetViewport()), Qt::red);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::green), kExact));
}

TEST_P(ViewTest, ClearsColorAloneAndKeepsTheDepth) {
    PresentCover(Qt::white, 0.5f);
    zx3DQt::BGFXViewClearOptions const colorOnly{BGFX_CLEAR_COLOR, 0x10203040, 1.0f, 0};
    QColor const cleared(0x10, 0x20, 0x30, 0x40);
    EXPECT_TRUE(Matches(PresentSquare(colorOnly, 0.75f), Canvas(cleared), kExact)); // hidden
    EXPECT_TRUE(Matches(PresentSquare(colorOnly, 0.25f), SquareOn(cleared), kExact));
}

TEST_P(ViewTest, ClearsDepthAloneAndKeepsTheColor) {
    PresentCover(Qt::white, 0.25f);
    zx3DQt::BGFXViewClearOptions const depthOnly{BGFX_CLEAR_DEPTH, 0x10203040, 1.0f, 0};
    EXPECT_TRUE(Matches(PresentSquare(depthOnly, 0.75f), SquareOn(Qt::white), kExact));
}

TEST_P(ViewTest, ClearsDepthToTheGivenValue) {
    PresentCover(Qt::white, 0.25f);
    zx3DQt::BGFXViewClearOptions const toMiddle{BGFX_CLEAR_DEPTH, 0, 0.5f, 0};
    EXPECT_TRUE(Matches(PresentSquare(toMiddle, 0.75f), Canvas(Qt::white), kExact)); // hidden
    EXPECT_TRUE(Matches(PresentSquare(toMiddle, 0.4f), SquareOn(Qt::white), kExact));
}

TEST_P(ViewTest, ClearsNothingWhenToldSo) {
    PresentCover(Qt::white, 0.5f);
    zx3DQt::BGFXViewClearOptions const nothing;
    EXPECT_TRUE(Matches(PresentSquare(nothing, 0.75f), Canvas(Qt::white), kExact)); // hidden
    EXPECT_TRUE(Matches(PresentSquare(nothing, 0.25f), SquareOn(Qt::white), kExact));
}

TEST_P(ViewTest, WithoutClearOptionsKeepsTheClearThatItHad) {
    zx3DQt::BGFXViewClearOptions const toBlue{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0000ffff, 1.0f, 0};
    EXPECT_TRUE(Matches(PresentSquare(toBlue, 0.75f, 5), SquareOn(Qt::blue), kExact));
    PresentCover(Qt::white, 0.25f); // with view 0
    EXPECT_TRUE(Matches(PresentSquare(std::nullopt, 0.75f, 5), SquareOn(Qt::blue), kExact));
}

TEST_P(ViewTest, WithoutADrawClearsNothing) {
    PresentCover(Qt::white);
    StartFrame();
    SubmitPixelView(Qt::red);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::white), kExact));
}

TEST_P(ViewTest, ClearingTheBackBufferLeavesTheTargetAlone) {
    PresentCover(Qt::white);
    StartFrame();
    zx3DQt::ClearBackBufferWidget(QColor(1, 2, 3));
    zx3DQt::BGFXViewContext const view = PixelView(m_target.GetViewport(), Qt::blue, 1);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(kSquare), Qt::red);
    EXPECT_TRUE(Matches(Present(), SquareOn(Qt::blue), kExact));
}

TEST_P(ViewTest, View0DrawsOnItsTargetAgainAfterClearingTheBackBuffer) {
    PresentCover(Qt::white);
    zx3DQt::ClearBackBufferWidget(QColor(1, 2, 3));
    m_renderer.PresentSubmittedFrame(false);
    zx3DQt::BGFXViewClearOptions const toBlue{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0000ffff, 1.0f, 0};
    EXPECT_TRUE(Matches(PresentSquare(toBlue, 0.5f), SquareOn(Qt::blue), kExact));
}

ZX3D_INSTANTIATE_BACKENDS(ViewTest);
