// Draws a triangle over the right half of a picture and looks at the colours of both halves.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QColor>
#include <QImage>

#include <array>
#include <cstdint>
#include <cstdio>

using namespace zarvex;

namespace {

class HalfView : public zx3DQt::BGFXOffscreenWidget {
protected:
    void paintEvent(QPaintEvent* event) override {
        BGFXOffscreenWidget::paintEvent(event);
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return;
        zx3DQt::BGFXViewContext view(
            1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0000ffff, 1.0f, 0});
        view.SetViewport(GetViewport());
        view.SetOrthoProjectionFromRect(QRectF(-1.0, -1.0, 2.0, 2.0), -1.0f, 1.0f, 0.0f);
        view.Submit(GetFrameBuffer());

        constexpr zx3D::Color kRed{1.0f, 0.0f, 0.0f, 1.0f};
        std::array<zx3D::Vertex::Pos3fColorRGBA, 3> const corners{
            {{{0.0f, -4.0f, 0.0f}, kRed}, {{8.0f, 0.0f, 0.0f}, kRed}, {{0.0f, 4.0f, 0.0f}, kRed}}};
        std::array<std::uint16_t, 3> const indices{0, 1, 2};
        GetRenderer().SetModelTransform(QMatrix4x4());
        GetRenderer().DrawTriangles(view, corners, indices);
        if (event != nullptr)
            Flush();
    }
};

bool DrawsBothHalves() {
    HalfView view;
    QImage const image = view.RenderPixmap(64, 32).toImage();
    return image.size() == QSize(64, 32) && image.pixelColor(8, 16) == QColor(Qt::blue) &&
           image.pixelColor(56, 16) == QColor(Qt::red);
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(false))
        return 1;
    bool const isRight = DrawsBothHalves();
    zx3DQt::Shutdown();
    std::puts(isRight ? "drawn" : "wrong colours");
    return isRight ? 0 : 1;
}
