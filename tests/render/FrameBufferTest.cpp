// Frame buffers without a window: size, shared state, and the bgfx object's comings and goings.
#include "RenderTest.h"

#include <harness/Trouble.h>

#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class FrameBufferTest : public RenderTest {
protected:
    /// Draws the whole of a frame buffer in one colour; its picture.
    QImage DrawOn(zx3D::FrameBuffer& frameBuffer, QColor const& color);
};

zx3D::FrameBuffer Unattached() {
    return zx3D::FrameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
}

QImage FrameBufferTest::DrawOn(zx3D::FrameBuffer& frameBuffer, QColor const& color) {
    EXPECT_TRUE(m_renderer.StartFrame(frameBuffer));
    m_renderer.SetModelTransform(QMatrix4x4());
    QRect const viewport(0, 0, frameBuffer.GetWidth(), frameBuffer.GetHeight());
    zx3DQt::BGFXViewContext const view = PixelView(viewport);
    view.Submit(frameBuffer);
    DrawRect(view, QRectF(viewport), color);
    return ReadBack(frameBuffer);
}

bool HasObject(zx3D::FrameBuffer const& frameBuffer) {
    return bgfx::isValid(frameBuffer.GetHandle());
}

} // namespace

TEST_P(FrameBufferTest, HasNoObjectBeforeASizeIsRequestedAndSubmitted) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    EXPECT_FALSE(frameBuffer.IsSized());
    frameBuffer.SubmitOnDemand();
    EXPECT_FALSE(HasObject(frameBuffer));
    frameBuffer.RequestResize(30, 20);
    EXPECT_TRUE(frameBuffer.IsSized());
    EXPECT_FALSE(HasObject(frameBuffer));
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(HasObject(frameBuffer));
    frameBuffer.Destroy();
    EXPECT_FALSE(HasObject(frameBuffer));
}

TEST_P(FrameBufferTest, ItsFirstTextureHoldsItsColors) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(30, 20);
    EXPECT_TRUE(Matches(DrawOn(frameBuffer, Qt::green), FilledImage(QSize(30, 20), Qt::green), kExact));
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, PicturesAreUpright) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    QImage expected = Canvas();
    for (int y = 0; y < expected.height(); ++y) {
        QColor const color(y * 5, 255 - y * 5, y, 255);
        DrawRect(view, QRectF(0, y, expected.width(), 1), color);
        Fill(expected, QRect(0, y, expected.width(), 1), color);
    }
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(FrameBufferTest, CopiesShareEverything) {
    zx3D::FrameBuffer first = Unattached();
    zx3D::FrameBuffer copy = first;
    copy.RequestResize(30, 20);
    EXPECT_EQ(first.GetWidth(), 30);
    EXPECT_EQ(first.GetHeight(), 20);
    EXPECT_TRUE(first.IsSized());
    first.SubmitOnDemand();
    EXPECT_TRUE(HasObject(copy));
    EXPECT_EQ(copy.GetHandle().idx, first.GetHandle().idx);
    first.RequestResize(10, 12);
    EXPECT_TRUE(Matches(DrawOn(copy, Qt::red), FilledImage(QSize(10, 12), Qt::red), kExact));
    EXPECT_EQ(copy.GetHandle().idx, first.GetHandle().idx);
    copy.Destroy();
    EXPECT_FALSE(HasObject(first));
    EXPECT_TRUE(Matches(DrawOn(first, Qt::green), FilledImage(QSize(10, 12), Qt::green), kExact));
    EXPECT_TRUE(HasObject(copy));
    first.Destroy();
}

TEST_P(FrameBufferTest, AssignmentJoinsTheOthersState) {
    zx3D::FrameBuffer first = Unattached();
    zx3D::FrameBuffer second = Unattached();
    first.RequestResize(30, 20);
    second = first;
    second.SubmitOnDemand();
    EXPECT_TRUE(HasObject(first));
    first.Destroy();
    EXPECT_FALSE(HasObject(second));
}

TEST_P(FrameBufferTest, FollowsEveryRequestedSize) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    for (QSize const& size : {QSize(30, 20), QSize(1, 1), QSize(257, 3), QSize(33, 129), QSize(30, 20)}) {
        frameBuffer.RequestResize(static_cast<std::uint16_t>(size.width()),
                                  static_cast<std::uint16_t>(size.height()));
        EXPECT_TRUE(Matches(DrawOn(frameBuffer, Qt::green), FilledImage(size, Qt::green), kExact));
    }
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, TheSameSizeAgainCostsNothing) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(30, 20);
    DrawOn(frameBuffer, Qt::red);
    bgfx::FrameBufferHandle const before = frameBuffer.GetHandle();
    bgfx::TextureHandle const textureBefore = bgfx::getTexture(before);
    frameBuffer.RequestResize(60, 40);
    frameBuffer.RequestResize(30, 20);
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(frameBuffer.GetHandle().idx, before.idx);
    EXPECT_EQ(bgfx::getTexture(frameBuffer.GetHandle()).idx, textureBefore.idx);
    EXPECT_TRUE(Matches(ReadBack(frameBuffer), FilledImage(QSize(30, 20), Qt::red), kExact)) << "not kept";
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, CollapsedKeepsItsObjectUntilItHasASizeAgain) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(30, 20);
    DrawOn(frameBuffer, Qt::red);
    frameBuffer.RequestResize(0, 20);
    EXPECT_FALSE(m_renderer.StartFrame(frameBuffer));
    frameBuffer.SubmitOnDemand();
    frameBuffer.RequestResize(40, 25);
    EXPECT_TRUE(Matches(DrawOn(frameBuffer, Qt::green), FilledImage(QSize(40, 25), Qt::green), kExact));
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, DestroyedAnyNumberOfTimesIsCreatedAgain) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(30, 20);
    DrawOn(frameBuffer, Qt::red);
    frameBuffer.Destroy();
    frameBuffer.Destroy();
    EXPECT_TRUE(frameBuffer.IsSized());
    EXPECT_TRUE(Matches(DrawOn(frameBuffer, Qt::green), FilledImage(QSize(30, 20), Qt::green), kExact));
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, ManyComeAndGo) {
    for (int i = 0; i < 200; ++i) {
        zx3D::FrameBuffer frameBuffer = Unattached();
        frameBuffer.RequestResize(16, 16);
        frameBuffer.SubmitOnDemand();
        ASSERT_TRUE(HasObject(frameBuffer)) << "number " << i;
        frameBuffer.Destroy();
        bgfx::frame(); // bgfx frees what was destroyed at the end of a frame
    }
}

TEST_P(FrameBufferTest, ManyResizesLeaveNothingBehind) {
    zx3D::FrameBuffer frameBuffer = Unattached();
    for (int i = 0; i < 200; ++i) {
        frameBuffer.RequestResize(static_cast<std::uint16_t>(16 + i % 7), 16);
        frameBuffer.SubmitOnDemand();
        ASSERT_TRUE(HasObject(frameBuffer)) << "number " << i;
        bgfx::frame();
    }
    EXPECT_TRUE(
        Matches(DrawOn(frameBuffer, Qt::green), FilledImage(QSize(16 + 199 % 7, 16), Qt::green), kExact));
    frameBuffer.Destroy();
}

TEST_P(FrameBufferTest, BeyondBgfxsNumberThereAreNoneUntilOthersGo) {
    ExpectWarning("surface.not-created");
    std::vector<zx3D::FrameBuffer> frameBuffers;
    for (std::uint32_t i = 0; i <= bgfx::getCaps()->limits.maxFrameBuffers; ++i) {
        frameBuffers.push_back(Unattached());
        frameBuffers.back().RequestResize(4, 4);
        frameBuffers.back().SubmitOnDemand();
    }
    EXPECT_TRUE(HasObject(frameBuffers.front()));
    EXPECT_FALSE(HasObject(frameBuffers.back()));
    zx3D::FrameBuffer const tooMany = frameBuffers.back();
    frameBuffers.pop_back();
    for (zx3D::FrameBuffer& frameBuffer : frameBuffers)
        frameBuffer.Destroy();
    m_renderer.PresentSubmittedFrame(false);
    zx3D::FrameBuffer again = tooMany;
    EXPECT_TRUE(Matches(DrawOn(again, Qt::green), FilledImage(QSize(4, 4), Qt::green), kExact));
    again.Destroy();
}

TEST_P(FrameBufferTest, BeyondTheLargestTextureThereIsNoneAndAMessage) {
    std::uint32_t const limit = bgfx::getCaps()->limits.maxTextureSize;
    ASSERT_LT(limit, 65535u) << "every size that can be requested exists on this GPU";
    zx3D::FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(static_cast<std::uint16_t>(limit + 1), 4);
    frameBuffer.SubmitOnDemand();
    EXPECT_FALSE(HasObject(frameBuffer));
    EXPECT_EQ(TakeWarnings("surface.too-large").size(), 1u);
    frameBuffer.RequestResize(30, 20);
    EXPECT_TRUE(Matches(DrawOn(frameBuffer, Qt::green), FilledImage(QSize(30, 20), Qt::green), kExact));
    frameBuffer.Destroy();
}

ZX3D_INSTANTIATE_BACKENDS(FrameBufferTest);
