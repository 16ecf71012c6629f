// A window that bgfx draws into: a clear colour and a triangle that turns.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>

using namespace zarvex;

// Records one frame, `seconds` since the start. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, float seconds) {
    zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false; // the window has no area now

    zx3DQt::BGFXViewContext view(
        0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x1b2230ff, 1.0f, 0});
    view.SetViewport(window.GetViewport());
    auto const halfWidth = static_cast<float>(view.ComputeViewportAspectRatio());
    view.SetOrthoProjectionFromRect(QRectF(-halfWidth, -1.0, 2.0 * halfWidth, 2.0), -1.0f, 1.0f, 0.0f);
    view.Submit(window.GetFrameBuffer());

    QMatrix4x4 turn;
    turn.rotate(45.0f * seconds, 0.0f, 0.0f, 1.0f);
    renderer.SetModelTransform(turn);

    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    Vertex const vertices[] = {
        Vertex({0.0f, 0.8f, 0.0f}, {0.95f, 0.35f, 0.30f, 1.0f}),
        Vertex({0.7f, -0.4f, 0.0f}, {0.30f, 0.85f, 0.45f, 1.0f}),
        Vertex({-0.7f, -0.4f, 0.0f}, {0.30f, 0.55f, 0.98f, 1.0f}),
    };
    std::uint16_t const indices[] = {0, 1, 2};
    renderer.DrawTriangles(view, vertices, indices);
    return true;
}

// Edges are smooth where a GPU draws; --samples=1, or another number, decides otherwise.
std::uint32_t ChooseSampleCount(QStringList const& arguments) {
    QString const asked = arguments.filter("--samples=").value(0).section('=', 1);
    if (!asked.isEmpty())
        return asked.toUInt();
    return zx3DQt::HasGpu(*bgfx::getCaps()) ? 4 : 1;
}

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    // The name of a picture as an argument: it is saved, with twice the pixels of the window.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(true)) // wait for the display's refresh
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: first window");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(640, 480);
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
