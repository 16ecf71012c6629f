// Three cameras on one survey, 5,400 km from the world's origin: one that circles it, a plan, and one that
// flies over it. Drag, turn the wheel or press arrows in each; double click to see all again.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QExposeEvent>
#include <QLoggingCategory>

#include <array>
#include <cmath>
#include <memory>
#include <vector>

using namespace zarvex;

// World units are metres, east, north and up.
constexpr zx3DQt::WorldPosition kSurvey{500'000.0, 5'400'000.0, 400.0};
constexpr float kExtent = 2000.0f;
constexpr float kHighest = 400.0f;

float HeightAt(float east, float north) {
    float const x = 0.004f * east;
    float const y = 0.004f * north;
    float const hills = std::sin(0.9f * x + 0.5f) * std::cos(0.7f * y) +
                        0.5f * std::sin(1.7f * x - 1.1f * y) + 0.15f * std::cos(4.1f * y + 2.3f * x);
    return kHighest * (0.5f + hills / 3.3f);
}

// Floats relative to the survey's origin: a millimetre stays a millimetre.
std::vector<zx3DQt::ScalarPoint> MakeSurvey() {
    constexpr int side = 180;
    std::vector<zx3DQt::ScalarPoint> points;
    for (int i = 0; i < side * side; ++i) {
        float const east = kExtent * static_cast<float>(i % side) / (side - 1);
        float const north = kExtent * static_cast<float>(i / side) / (side - 1);
        float const height = HeightAt(east, north);
        points.push_back({{east, north, height}, height});
    }
    return points;
}

class SurveyWindow : public zx3DQt::BGFXWindow {
public:
    SurveyWindow() {
        setTitle("zx3DQt: cameras");
        resize(1000, 620);
        m_cloud.SetOrigin(kSurvey);
        m_cloud.Set(MakeSurvey());
        Arrange();
        for (auto const& camera : m_cameras) {
            camera->SetSceneBox(m_cloud.GetBoundingBox());
            connect(camera.get(), &zx3DQt::CameraController::cameraChanged, this, &QWindow::requestUpdate);
        }
        m_cameras[0]->LookFrom(
            zx3DQt::StandardView::Isometric); // it has an orbit camera unless given another
        m_cameras[1]->SetCamera(zx3DQt::PlanarCamera());
        m_cameras[1]->Fit();
        zx3DQt::FlyCamera pilot;
        pilot.SetHeading(35.0);
        pilot.SetPitch(-14.0);
        pilot.SetPosition(kSurvey + zx3DQt::WorldVector{150.0, 100.0, 620.0});
        pilot.SetFocusDistance(900.0);
        m_cameras[2]->SetCamera(pilot);
    }

    // Records a frame. False when there is nothing to draw into.
    bool RecordFrame() {
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return false;
        Arrange();
        for (std::size_t i = 0; i < m_cameras.size(); ++i) {
            zx3DQt::CameraController const& camera = *m_cameras[i];
            zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161d28ff, 1.0f,
                                                     0};
            zx3DQt::BGFXViewContext view(static_cast<std::uint16_t>(i), clear);
            QRectF const part = camera.GetViewport(); // device-independent pixels
            view.SetViewport(
                QRectF(GetPixelRatio() * part.topLeft(), GetPixelRatio() * part.size()).toRect());
            camera.Apply(view, zx3DQt::ViewOrigin::Focus);
            view.Submit(GetFrameBuffer());
            m_cloud.Draw(GetRenderer(), view,
                         {.shape = zx3DQt::PointShape::Ball,
                          .size = 16.0f,
                          .sizeUnit = zx3DQt::SizeUnit::World,
                          .colorMap = m_colors,
                          .leastValue = 0.0f,
                          .greatestValue = kHighest});
        }
        return true;
    }

protected:
    void exposeEvent(QExposeEvent* event) override {
        BGFXWindow::exposeEvent(event);
        if (isExposed())
            Show();
    }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest)
            Show();
        return BGFXWindow::event(event);
    }

private:
    void Show() {
        if (!RecordFrame())
            return;
        GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        if (!m_cloud.IsUploaded())
            requestUpdate();
    }

    // Each camera has a part of the window, whose input it listens to.
    void Arrange() {
        double const half = std::floor(0.6 * width());
        double const middle = std::floor(0.5 * height());
        constexpr double gap = 2.0;
        m_cameras[0]->SetViewport(QRectF(0.0, 0.0, half - gap, height()));
        m_cameras[1]->SetViewport(QRectF(half, 0.0, width() - half, middle - gap));
        m_cameras[2]->SetViewport(QRectF(half, middle, width() - half, height() - middle));
    }

    zx3DQt::PointBatch m_cloud;
    zx3DQt::ColorMap m_colors = zx3DQt::ColorMap::Viridis();
    std::array<std::unique_ptr<zx3DQt::CameraController>, 3> m_cameras{
        std::make_unique<zx3DQt::CameraController>(this), std::make_unique<zx3DQt::CameraController>(this),
        std::make_unique<zx3DQt::CameraController>(this)};
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
    // The name of a picture as an argument: it is saved, with twice the pixels of the window.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(true)) // wait for the display's refresh
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        SurveyWindow window; // goes before Shutdown
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { window.RecordFrame(); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
