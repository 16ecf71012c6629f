// Which model transform a draw uses.
#include "RenderTest.h"

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class ModelTransformTest : public RenderTest {};

QMatrix4x4 Translation(float x, float y) {
    QMatrix4x4 matrix;
    matrix.translate(x, y);
    return matrix;
}

QRectF const kSquare(0.0, 0.0, 8.0, 8.0);

} // namespace

TEST_P(ModelTransformTest, WithoutOneModelCoordinatesAreWorldCoordinates) {
    ASSERT_TRUE(m_renderer.StartFrame(m_target.GetFrameBuffer()));
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, kSquare, Qt::white);
    QImage expected = Canvas();
    Fill(expected, kSquare.toRect(), Qt::white);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ModelTransformTest, TheCurrentOneAppliesByDefault) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    m_renderer.SetModelTransform(Translation(10.0f, 5.0f));
    DrawRect(view, kSquare, Qt::red);
    DrawRect(view, kSquare.translated(20.0, 0.0), Qt::green);
    m_renderer.SetModelTransform(Translation(40.0f, 30.0f));
    DrawRect(view, kSquare, Qt::blue);
    QImage expected = Canvas();
    Fill(expected, QRect(10, 5, 8, 8), Qt::red);
    Fill(expected, QRect(30, 5, 8, 8), Qt::green);
    Fill(expected, QRect(40, 30, 8, 8), Qt::blue);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ModelTransformTest, AnIdChoosesAnyOfTheFrame) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    zx3DQt::ModelTransformCacheId const first = m_renderer.SetModelTransform(Translation(3.0f, 4.0f));
    zx3DQt::ModelTransformCacheId const second = m_renderer.SetModelTransform(Translation(30.0f, 20.0f));
    EXPECT_NE(std::uint32_t{first}, std::uint32_t{second});
    m_renderer.SetModelTransform(Translation(50.0f, 38.0f));
    DrawRect(view, kSquare, Qt::green, 0.5f, second);
    DrawRect(view, kSquare, Qt::red, 0.5f, first);
    DrawRect(view, kSquare, Qt::blue);
    QImage expected = Canvas();
    Fill(expected, QRect(3, 4, 8, 8), Qt::red);
    Fill(expected, QRect(30, 20, 8, 8), Qt::green);
    Fill(expected, QRect(50, 38, 8, 8), Qt::blue);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ModelTransformTest, TheNextFrameCountsAnewAndSeesTheNewMatrix) {
    StartFrame();
    zx3DQt::BGFXViewContext view = SubmitPixelView();
    zx3DQt::ModelTransformCacheId const before = m_renderer.SetModelTransform(Translation(3.0f, 4.0f));
    DrawRect(view, kSquare, Qt::red, 0.5f, before);
    m_renderer.PresentCurrentAndSubmitNextFrame(false);

    StartFrame();
    view = SubmitPixelView();
    zx3DQt::ModelTransformCacheId const after = m_renderer.SetModelTransform(Translation(30.0f, 20.0f));
    EXPECT_EQ(std::uint32_t{before}, std::uint32_t{after});
    DrawRect(view, kSquare, Qt::red, 0.5f, after);
    QImage expected = Canvas();
    Fill(expected, QRect(30, 20, 8, 8), Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ModelTransformTest, IsAppliedBeforeTheViewMatrix) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    QMatrix4x4 doubled;
    doubled.scale(2.0f, 2.0f, 1.0f);
    view.SetViewMatrix(doubled);
    view.Submit(m_target.GetFrameBuffer());
    m_renderer.SetModelTransform(Translation(5.0f, 3.0f));
    DrawRect(view, kSquare, Qt::yellow);
    QImage expected = Canvas();
    Fill(expected, QRect(10, 6, 16, 16), Qt::yellow);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

ZX3D_INSTANTIATE_BACKENDS(ModelTransformTest);
