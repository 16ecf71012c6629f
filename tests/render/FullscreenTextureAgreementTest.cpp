// A texture that is stretched over a view is the same picture on both backends.
#include "RenderTest.h"

#include <harness/LibraryRun.h>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

QImage DrawStretched(bgfx::RendererType::Enum backend) {
    LibraryRun const run(backend);
    OffscreenTarget source(QSize(37, 23));
    OffscreenTarget target(QSize(200, 150));
    zx3DQt::BGFXRenderer renderer;
    EXPECT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
    renderer.SetModelTransform(QMatrix4x4());
    source.GetFrameBuffer().SubmitOnDemand();
    zx3DQt::BGFXViewContext const sourceView = PixelView(source.GetViewport(), QColor(20, 60, 120, 200));
    sourceView.Submit(source.GetFrameBuffer());
    DrawRect(renderer, sourceView, QRectF(3, 2, 9, 14), QColor(250, 130, 20));
    DrawRect(renderer, sourceView, QRectF(20, 15, 17, 3), Qt::white);
    PixelView(target.GetViewport(), Qt::black, 1).Submit(target.GetFrameBuffer());
    renderer.DrawFullscreenTexture(1, bgfx::getTexture(source.GetFrameBuffer().GetHandle()));
    return ReadBack(target.GetFrameBuffer());
}

} // namespace

TEST(FullscreenTextureAgreementTest, PicturesDifferByAStepAtMost) {
    QImage const openGL = DrawStretched(bgfx::RendererType::OpenGL);
    QImage const vulkan = DrawStretched(bgfx::RendererType::Vulkan);
    EXPECT_NE(openGL.pixelColor(40, 60), openGL.pixelColor(150, 60));
    EXPECT_TRUE(Matches(vulkan, openGL));
}
