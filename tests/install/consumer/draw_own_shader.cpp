// Draws a picture of four pixels over the right half of a widget, with a program of its own, looks at the
// colours, and saves what was drawn: draw_own_shader --opengl|--vulkan FILE
#include <zx3DQt/zx3DQt.h>

#include <draw_own_shader_shaders.h>

#include <QApplication>
#include <QColor>
#include <QImage>

#include <array>
#include <cstdint>
#include <cstdio>

using namespace zarvex;

namespace {

struct Corner {
    float x, y, z, u, v;
};

class PictureView : public zx3DQt::BGFXOffscreenWidget {
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
        DrawPicture(view);
        if (event != nullptr)
            Flush();
    }

private:
    static void DrawPicture(zx3DQt::BGFXViewContext const& view) {
        auto const program = zx3D::ProgramFactory::Get().CreateProgram(draw_own_shader_shaders::vs_picture,
                                                                       draw_own_shader_shaders::fs_picture);
        if (!program)
            return;
        bgfx::VertexLayout layout;
        layout.begin()
            .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
            .add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Float)
            .end();
        // The projection has y down, as the texture has.
        constexpr std::array<Corner, 4> corners{Corner{0.0f, -1.0f, 0.0f, 0.0f, 0.0f},
                                                {1.0f, -1.0f, 0.0f, 1.0f, 0.0f},
                                                {0.0f, 1.0f, 0.0f, 0.0f, 1.0f},
                                                {1.0f, 1.0f, 0.0f, 1.0f, 1.0f}};
        constexpr std::array<std::uint16_t, 6> indices{0, 1, 2, 1, 3, 2};
        constexpr std::array<std::uint32_t, 4> pixels{0xff0000ff, 0xff00ff00, 0xffff0000, 0xffffffff};
        constexpr float tint[] = {1.0f, 1.0f, 0.2f, 1.0f};
        zx3D::Owned const vertexBuffer(
            bgfx::createVertexBuffer(bgfx::copy(corners.data(), sizeof(corners)), layout));
        zx3D::Owned const indexBuffer(bgfx::createIndexBuffer(bgfx::copy(indices.data(), sizeof(indices))));
        zx3D::Owned const texture(bgfx::createTexture2D(2, 2, false, 1, bgfx::TextureFormat::RGBA8,
                                                        BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP,
                                                        bgfx::copy(pixels.data(), sizeof(pixels))));
        zx3D::Owned const sampler(bgfx::createUniform("s_picture", bgfx::UniformType::Sampler));
        zx3D::Owned const tintUniform(bgfx::createUniform("u_tint", bgfx::UniformType::Vec4));
        bgfx::setVertexBuffer(0, vertexBuffer.Get());
        bgfx::setIndexBuffer(indexBuffer.Get());
        bgfx::setTexture(1, sampler.Get(), texture.Get());
        bgfx::setUniform(tintUniform.Get(), tint);
        bgfx::setState(BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A);
        bgfx::submit(view.GetViewId(), *program);
    }
};

bool Draw(QString const& file) {
    PictureView view;
    QImage const image = view.RenderPixmap(64, 32).toImage();
    return image.save(file) && image.size() == QSize(64, 32) &&
           image.pixelColor(16, 16) == QColor(Qt::blue) && image.pixelColor(40, 8) == QColor(255, 0, 0) &&
           image.pixelColor(56, 8) == QColor(0, 255, 0) && image.pixelColor(40, 24) == QColor(0, 0, 51) &&
           image.pixelColor(56, 24) == QColor(255, 255, 51);
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(false))
        return 1;
    auto const wanted = openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan;
    bool const isRight = bgfx::getRendererType() == wanted && Draw(application.arguments().last());
    zx3DQt::Shutdown();
    std::puts(isRight ? "drawn" : "wrong colours");
    return isRight ? 0 : 1;
}
