// Views in a main window with a splitter, tabs and a dock that floats: four widgets that bgfx draws into
// directly. Drag in a view to look from elsewhere, double click to see all of it.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QDockWidget>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTabWidget>

#include <cmath>
#include <vector>

using namespace zarvex;

// A surface of wide and thin lines over a grid, seen by a camera that the mouse moves.
class SurfaceView : public zx3DQt::BGFXNativeWidget {
public:
    // Each view draws into a bgfx view of its own.
    SurfaceView(bgfx::ViewId viewId, double azimuth, double elevation, std::uint32_t sampleCount)
        : m_viewId(viewId) {
        zx3DQt::OrbitCamera camera;
        camera.SetAzimuth(azimuth);
        camera.SetElevation(elevation);
        m_controller.SetCamera(camera);
        m_controller.SetSceneBox(zx3DQt::WorldBox{{-2.0, -2.0, -0.5}, {2.0, 2.0, 0.75}});
        m_controller.Fit();
        connect(&m_controller, &zx3DQt::CameraController::cameraChanged, this, [this] { update(); });
        setMinimumSize(160, 120);
        SetSampleCount(sampleCount);
        SetDepthFormat(bgfx::TextureFormat::D32F);
    }

protected:
    // Qt calls it when something changed; nothing is drawn in between.
    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        if (!renderer.StartFrame(GetFrameBuffer()))
            return;
        zx3DQt::BGFXViewContext view(
            m_viewId, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x171c26ff, 1.0f, 0});
        view.SetViewport(GetViewport());
        m_controller.Apply(view);
        view.Submit(GetFrameBuffer());

        renderer.SetModelTransform(QMatrix4x4());
        auto const ratio = static_cast<float>(GetPixelRatio());
        renderer.DrawLines(view, Surface(false), ratio);
        renderer.DrawLines(view, Surface(true), 3.0f * ratio);
        if (event != nullptr) // not while a picture is taken
            renderer.PresentCurrentAndSubmitNextFrame(false);
    }

private:
    // Every fourth line of the surface is wide, the others are thin.
    static std::vector<zx3D::Line> Surface(bool wide) {
        constexpr int cells = 32;
        std::vector<zx3D::Line> lines;
        for (int i = 0; i <= cells; ++i) {
            if ((i % 4 == 0) != wide)
                continue;
            for (int k = 0; k < cells; ++k) {
                lines.push_back({Point(i, k), Point(i, k + 1), ColorAt(Point(i, k).z)});
                lines.push_back({Point(k, i), Point(k + 1, i), ColorAt(Point(k, i).z)});
            }
        }
        return lines;
    }

    static bx::Vec3 Point(int column, int row) {
        float const x = static_cast<float>(column - 16) / 8.0f;
        float const y = static_cast<float>(row - 16) / 8.0f;
        return {x, y, 0.75f * std::cos(2.2f * std::hypot(x, y)) * std::exp(-0.25f * (x * x + y * y))};
    }

    // From blue in the valleys to amber on the peaks.
    static zx3D::Color ColorAt(float height) {
        float const t = std::clamp(0.5f + 0.8f * height, 0.0f, 1.0f);
        return {std::lerp(0.25f, 1.0f, t), std::lerp(0.55f, 0.72f, t), std::lerp(0.95f, 0.35f, t), 1.0f};
    }

    bgfx::ViewId m_viewId;
    zx3DQt::CameraController m_controller{this}; // mouse, wheel, touch and keys move its camera
};

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
    // The name of a picture as an argument: it is saved, with twice the pixels of the widget.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(false))
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        QMainWindow window; // goes before Shutdown
        window.setWindowTitle("zx3DQt: native widget");

        std::uint32_t const samples = ChooseSampleCount(application.arguments());
        auto* const splitter = new QSplitter;
        auto* const surface = new SurfaceView(1, 30.0, 30.0, samples);
        splitter->addWidget(surface);
        auto* const tabs = new QTabWidget;
        tabs->addTab(new SurfaceView(2, 0.0, 90.0, samples), "Top");
        tabs->addTab(new SurfaceView(3, 0.0, 0.0, samples), "Front");
        tabs->addTab(new QPlainTextEdit("An ordinary widget."), "Notes");
        splitter->addWidget(tabs);
        splitter->setSizes({520, 380});
        window.setCentralWidget(splitter);

        auto* const dock = new QDockWidget("Side: drag it out, and back");
        dock->setWidget(new SurfaceView(4, 90.0, 12.0, samples));
        window.addDockWidget(Qt::BottomDockWidgetArea, dock);
        window.resizeDocks({dock}, {200}, Qt::Vertical);

        window.resize(900, 640);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = surface->RenderPicture({.size = QSize(1040, 860), .pixelRatio = 2.0}).save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
