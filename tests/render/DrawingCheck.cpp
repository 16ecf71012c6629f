// A rectangle, drawn and read back.
#include "DrawingCheck.h"

#include "RenderTest.h"

namespace zarvex::testing {

void ExpectDrawingWorks(zx3DQt::BGFXRenderer& renderer, OffscreenTarget& target, QColor const& color) {
    ASSERT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
    renderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext const view = PixelView(target.GetViewport(), Qt::blue);
    view.Submit(target.GetFrameBuffer());
    DrawRect(renderer, view, QRectF(3, 2, 10, 7), color);
    QImage expected = FilledImage(target.GetViewport().size(), Qt::blue);
    Fill(expected, QRect(3, 2, 10, 7), color);
    ASSERT_TRUE(bgfx::isValid(target.GetFrameBuffer().GetHandle()));
    EXPECT_TRUE(Matches(ReadBack(target.GetFrameBuffer()), expected, kExact));
}

void ExpectDrawingWorks(QColor const& color) {
    OffscreenTarget target(QSize(24, 16));
    zx3DQt::BGFXRenderer renderer;
    ExpectDrawingWorks(renderer, target, color);
}

} // namespace zarvex::testing
