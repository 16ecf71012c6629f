// From the start of a frame to its presentation.
#include "RenderTest.h"

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class FrameTest : public RenderTest {};

} // namespace

TEST_P(FrameTest, CollapsedTargetsStartNoFrame) {
    for (QSize const& size : {QSize(0, 0), QSize(0, 100), QSize(100, 0)}) {
        OffscreenTarget target(size);
        EXPECT_FALSE(m_renderer.StartFrame(target.GetFrameBuffer()));
        EXPECT_FALSE(bgfx::isValid(target.GetFrameBuffer().GetHandle()));
        EXPECT_FALSE(bgfx::isValid(m_renderer.GetBasicProgram())) << "nothing should have been created";
    }
}

TEST_P(FrameTest, PresentingCountsFramesByOne) {
    StartFrame();
    std::uint32_t const first = m_renderer.PresentCurrentAndSubmitNextFrame(false);
    StartFrame();
    EXPECT_EQ(m_renderer.PresentCurrentAndSubmitNextFrame(false), first + 1);
    StartFrame();
    EXPECT_EQ(m_renderer.PresentSubmittedFrame(false), first + 3);
}

TEST_P(FrameTest, FramesAppearInTheOrderOfTheirRecording) {
    QColor const colors[] = {Qt::red, Qt::green, Qt::blue, Qt::yellow, Qt::cyan};
    for (QColor const& color : colors) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(m_target.GetViewport()), color);
        m_renderer.PresentCurrentAndSubmitNextFrame(false);
    }
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::cyan), kExact));
}

TEST_P(FrameTest, PresentWithoutStartSubmitsWhatIsRecorded) {
    StartFrame();
    m_renderer.PresentCurrentAndSubmitNextFrame(false);
    m_renderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::magenta);
    m_renderer.PresentSubmittedFrame(false);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::magenta), kExact));
}

TEST_P(FrameTest, AFrameRecordedInTwoStartsIsOneFrame) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, QRectF(0, 0, 32, 48), Qt::red);
    StartFrame(); // without a present in between
    DrawRect(view, QRectF(32, 0, 32, 48), Qt::green);
    QImage expected = Canvas(Qt::red);
    Fill(expected, QRect(32, 0, 32, 48), Qt::green);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(FrameTest, TwoRenderersDrawOnTheirTargetsInOneFrame) {
    OffscreenTarget otherTarget(QSize(20, 10));
    zx3DQt::BGFXRenderer otherRenderer;
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::red);
    ASSERT_TRUE(otherRenderer.StartFrame(otherTarget.GetFrameBuffer()));
    otherRenderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext const otherView = PixelView(otherTarget.GetViewport(), Qt::black, 1);
    otherView.Submit(otherTarget.GetFrameBuffer());
    zarvex::testing::DrawRect(otherRenderer, otherView, QRectF(0, 0, 20, 10), Qt::green);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::red), kExact));
    EXPECT_TRUE(
        Matches(ReadBack(otherTarget.GetFrameBuffer()), FilledImage(QSize(20, 10), Qt::green), kExact));
}

TEST_P(FrameTest, ACleanedUpRendererDrawsAgain) {
    for (QColor const& color : {QColor(Qt::red), QColor(Qt::green)}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(m_target.GetViewport()), color);
        EXPECT_TRUE(Matches(Present(), Canvas(color), kExact));
        m_renderer.CleanUp();
        EXPECT_FALSE(bgfx::isValid(m_renderer.GetFullscreenTextureSampler()));
    }
}

ZX3D_INSTANTIATE_BACKENDS(FrameTest);
