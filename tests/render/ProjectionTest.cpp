// Projections, checked by where pixels appear.
#include "RenderTest.h"

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class ProjectionTest : public RenderTest {
protected:
    /// Presents a frame with a red square at a depth under the orthographic projection of this range; true
    /// when it appears.
    bool AppearsAt(float z, float near, float far);
};

bool ProjectionTest::AppearsAt(float z, float near, float far) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromViewport(near, far, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::red, z);
    return Present().pixelColor(5, 5) == QColor(Qt::red);
}

} // namespace

TEST_P(ProjectionTest, BackendsCoverBothDepthConventions) {
    EXPECT_EQ(bgfx::getCaps()->homogeneousDepth, GetParam() == bgfx::RendererType::OpenGL);
}

TEST_P(ProjectionTest, OrthoMapsRectangleAndDepthRangeToTheClipVolume) {
    QMatrix4x4 const matrix =
        zx3DQt::BGFXViewContext::ComputeOrthoProjection(QRectF(-3.0, 2.0, 8.0, 6.0), 2.0f, 12.0f, 0.25f);
    float const nearDepth = bgfx::getCaps()->homogeneousDepth ? -1.0f : 0.0f;
    QVector4D const topLeftNear = matrix * QVector4D(-3.0f, 2.0f, 2.0f, 1.0f);
    QVector4D const bottomRightFar = matrix * QVector4D(5.0f, 8.0f, 12.0f, 1.0f);
    EXPECT_LT((topLeftNear - QVector4D(-1.0f + 0.25f, 1.0f, nearDepth, 1.0f)).length(), 1e-6f);
    EXPECT_LT((bottomRightFar - QVector4D(1.0f + 0.25f, -1.0f, 1.0f, 1.0f)).length(), 1e-6f);
}

TEST_P(ProjectionTest, OrthoFromRectScalesExactly) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromRect(QRectF(-4.0, -3.0, 8.0, 6.0), 0.0f, 1.0f, 0.0f); // 8 pixels a unit
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(-2.0, -1.0, 1.0, 3.0), Qt::red);
    QImage expected = Canvas();
    Fill(expected, QRect(16, 16, 8, 24), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ProjectionTest, OrthoFromViewportCountsPixelsFromTheTargetsOrigin) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(QRect(12, 9, 40, 30), Qt::blue);
    view.SetOrthoProjectionFromViewport(0.0f, 1.0f, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(20, 15, 7, 5), Qt::red);
    QImage const image = Present();
    QImage expected = image; // outside of the viewport anything may be
    Fill(expected, QRect(12, 9, 40, 30), Qt::blue);
    Fill(expected, QRect(20, 15, 7, 5), Qt::red);
    EXPECT_TRUE(Matches(image, expected, kExact));
}

TEST_P(ProjectionTest, OrthoOffsetShiftsTheImage) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    float const pixels = 10.0f;
    view.SetOrthoProjectionFromViewport(0.0f, 1.0f, 2.0f * pixels / 64.0f);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(20, 15, 7, 5), Qt::red);
    QImage expected = Canvas();
    Fill(expected, QRect(30, 15, 7, 5), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ProjectionTest, OrthoShowsDepthsFromNearToFar) {
    EXPECT_FALSE(AppearsAt(-10.5f, -10.0f, 30.0f));
    EXPECT_TRUE(AppearsAt(-9.5f, -10.0f, 30.0f));
    EXPECT_TRUE(AppearsAt(0.0f, -10.0f, 30.0f));
    EXPECT_TRUE(AppearsAt(29.5f, -10.0f, 30.0f));
    EXPECT_FALSE(AppearsAt(30.5f, -10.0f, 30.0f));
}

TEST_P(ProjectionTest, SmallerZIsNearer) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromViewport(-10.0f, 30.0f, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::green, -5.0f);
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::red, 25.0f);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::green), kExact));
}

ZX3D_INSTANTIATE_BACKENDS(ProjectionTest);
