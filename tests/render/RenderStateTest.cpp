// The render states: depth, blending, and what is left in the depth buffer.
#include "RenderTest.h"

using namespace zarvex;
using namespace zarvex::testing;
using Renderer = zx3DQt::BGFXRenderer;

namespace {

class RenderStateTest : public RenderTest {
protected:
    /// Draws the whole target in one colour.
    void Cover(zx3DQt::BGFXViewContext const& view, QColor const& color, float depth,
               std::optional<zx3DQt::BGFXRenderState> state = std::nullopt) {
        DrawRect(view, QRectF(m_target.GetViewport()), color, depth, std::nullopt, state);
    }
};

/// `source` over `target`, all four channels by the source's alpha.
QColor Blend(QColor const& source, QColor const& target) {
    double const alpha = source.alpha() / 255.0;
    auto const mix = [alpha](int a, int b) {
        return static_cast<int>(std::lround(a * alpha + b * (1.0 - alpha)));
    };
    return QColor(mix(source.red(), target.red()), mix(source.green(), target.green()),
                  mix(source.blue(), target.blue()), mix(source.alpha(), target.alpha()));
}

} // namespace

TEST_P(RenderStateTest, OpaqueNearerWinsInEitherOrder) {
    for (bool const nearerFirst : {false, true}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        for (bool const nearer : {nearerFirst, !nearerFirst})
            Cover(view, nearer ? Qt::green : Qt::red, nearer ? 0.25f : 0.75f, Renderer::STATE_OPAQUE);
        EXPECT_TRUE(Matches(Present(), Canvas(Qt::green), kExact)) << "nearer first: " << nearerFirst;
    }
}

TEST_P(RenderStateTest, OpaqueIsTheDefault) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    QColor const halfTransparent(0, 255, 0, 128);
    Cover(view, halfTransparent, 0.25f);
    Cover(view, Qt::red, 0.75f);
    EXPECT_TRUE(Matches(Present(), Canvas(halfTransparent), kExact));
}

TEST_P(RenderStateTest, OpaqueLaterWinsAtEqualDepth) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    Cover(view, Qt::red, 0.5f, Renderer::STATE_OPAQUE);
    Cover(view, Qt::green, 0.5f, Renderer::STATE_OPAQUE);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::green), kExact));
}

TEST_P(RenderStateTest, DepthIsTestedByPixel) {
    // Two rectangles that lean against each other, crossing at half the width.
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    QMatrix4x4 leaning;
    leaning(2, 0) = 0.01f; // depth grows with x
    m_renderer.SetModelTransform(leaning);
    Cover(view, Qt::red, 0.2f, Renderer::STATE_OPAQUE);
    leaning(2, 0) = -0.01f;
    m_renderer.SetModelTransform(leaning);
    Cover(view, Qt::green, 0.84f, Renderer::STATE_OPAQUE);
    QImage expected = Canvas(Qt::red);
    Fill(expected, QRect(32, 0, 32, 48), Qt::green);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(RenderStateTest, TransparentBlendsBySourceAlpha) {
    QColor const background(200, 100, 20, 255);
    for (QColor const& color :
         {QColor(10, 250, 130, 128), QColor(255, 255, 255, 51), QColor(7, 7, 7, 255), QColor(255, 0, 0, 0)}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView(background);
        Cover(view, color, 0.5f, Renderer::STATE_TRANSPARENT);
        QImage const image = Present();
        // One step for the rounding of the blend, which is the GPU's.
        EXPECT_TRUE(Matches(image, Canvas(Blend(color, background)), Tolerance{1, 1}))
            << color.name().toStdString();
    }
}

TEST_P(RenderStateTest, TransparentHidesBehindNearerGeometry) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    Cover(view, Qt::green, 0.25f, Renderer::STATE_OPAQUE);
    Cover(view, QColor(255, 0, 0, 128), 0.75f, Renderer::STATE_TRANSPARENT);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::green), kExact));
}

TEST_P(RenderStateTest, TransparentWritesDepth) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView(QColor(0, 0, 0));
    Cover(view, QColor(255, 255, 255, 255), 0.25f, Renderer::STATE_TRANSPARENT);
    Cover(view, Qt::red, 0.75f, Renderer::STATE_OPAQUE);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::white), kExact));
}

TEST_P(RenderStateTest, MarkerOverlayIsDrawnOverNearerGeometry) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    Cover(view, Qt::green, 0.25f, Renderer::STATE_OPAQUE);
    DrawRect(view, QRectF(8, 8, 16, 16), Qt::red, 0.9f, std::nullopt, Renderer::STATE_MARKER_OVERLAY);
    QImage expected = Canvas(Qt::green);
    Fill(expected, QRect(8, 8, 16, 16), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(RenderStateTest, MarkerOverlayLeavesTheDepthAsItIs) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    Cover(view, Qt::green, 0.5f, Renderer::STATE_OPAQUE);
    // Nearer than what is there on the left, farther on the right: neither may be remembered.
    DrawRect(view, QRectF(0, 0, 32, 48), Qt::red, 0.1f, std::nullopt, Renderer::STATE_MARKER_OVERLAY);
    DrawRect(view, QRectF(32, 0, 32, 48), Qt::red, 0.9f, std::nullopt, Renderer::STATE_MARKER_OVERLAY);
    DrawRect(view, QRectF(0, 0, 64, 24), Qt::blue, 0.3f, std::nullopt, Renderer::STATE_OPAQUE);
    DrawRect(view, QRectF(0, 24, 64, 24), Qt::yellow, 0.7f, std::nullopt, Renderer::STATE_OPAQUE);
    QImage expected = Canvas(Qt::red);
    Fill(expected, QRect(0, 0, 64, 24), Qt::blue);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

ZX3D_INSTANTIATE_BACKENDS(RenderStateTest);
