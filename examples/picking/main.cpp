// A dome of bars, nodes and panels that tells what the pointer is over, and where. Drag to look from
// elsewhere; click to print what is there, and to keep it marked.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QExposeEvent>
#include <QLoggingCategory>
#include <QMouseEvent>

#include <cmath>
#include <numbers>
#include <vector>

using namespace zarvex;

// The dome stands in a country's coordinates, metres: its nodes are exact to less than a micrometre
// nonetheless.
constexpr zx3DQt::WorldPosition kSite{412'300.0, 5'655'100.0, 112.0};

constexpr std::uint32_t kRings = 7;
constexpr std::uint32_t kPerRing = 24;

// Draws in two bgfx views that nothing else uses.
constexpr bgfx::ViewId kPickView = 10;

class DomeWindow : public zx3DQt::BGFXWindow {
public:
    DomeWindow() {
        setTitle("zx3DQt: picking");
        resize(900, 600);
        MakeDome();
        connect(&m_camera, &zx3DQt::CameraController::cameraChanged, this, &QWindow::requestUpdate);
        m_camera.SetSceneBox(m_bars.GetBoundingBox());
        zx3DQt::OrbitCamera fromAbove;
        fromAbove.SetAzimuth(45.0);
        fromAbove.SetElevation(30.0);
        fromAbove.Fit(*m_bars.GetBoundingBox(), 1.5, 0.0);
        fromAbove.SetDistance(0.8 * fromAbove.GetDistance()); // the dome leaves the box's corners empty
        m_camera.SetCamera(fromAbove);
        for (std::uint64_t bar = 270; bar < 279; ++bar)
            m_marked.push_back({.batch = &m_bars, .element = bar});
        for (std::uint64_t node = 90; node < 94; ++node)
            m_marked.push_back({.batch = &m_nodes, .element = node});
        m_picker.Follow(
            this,
            [this](std::optional<zx3DQt::PickHit> const& hit) {
                m_hovered = hit ? hit->what : zx3DQt::PickElement();
                requestUpdate();
            },
            kReach);
    }

    // Records a frame. False when there is nothing to draw into.
    bool RecordFrame() {
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return false;
        zx3DQt::BGFXViewContext view(
            0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0xf2efe8ff, 1.0f, 0});
        view.SetViewport(GetViewport());
        m_camera.Apply(view, zx3DQt::ViewOrigin::Focus);
        view.Submit(GetFrameBuffer());
        m_panels.Draw(GetRenderer(), view);
        m_bars.Draw(GetRenderer(), view, Marked(kBarStyle, &m_bars));
        m_nodes.Draw(GetRenderer(), view, Marked(kNodeStyle, &m_nodes));
        m_picker.SetView(view, GetPixelRatio());
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

    void mousePressEvent(QMouseEvent* event) override { m_pressed = event->position(); }

    void mouseReleaseEvent(QMouseEvent* event) override {
        if ((event->position() - m_pressed).manhattanLength() > 4.0)
            return; // a drag, which is the camera's
        m_picker.Pick(
            event->position(), [this](std::optional<zx3DQt::PickHit> const& hit) { Tell(hit); }, kReach);
    }

private:
    // Nodes before bars, and both before the panels behind them.
    static constexpr zx3DQt::PickOptions kReach{.radius = 5.0, .order = zx3DQt::PickOrder::ThinFirst};

    void Show() {
        if (!RecordFrame())
            return;
        GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        if (!m_panels.IsUploaded() || !m_bars.IsUploaded() || !m_nodes.IsUploaded())
            requestUpdate();
    }

    void Tell(std::optional<zx3DQt::PickHit> const& hit) {
        m_marked.clear();
        if (hit) {
            m_marked.push_back(hit->what);
            char const* const kind = hit->what.batch == &m_nodes  ? "Node"
                                     : hit->what.batch == &m_bars ? "Bar"
                                                                  : "Panel";
            qInfo().noquote() << kind << hit->what.element << "at" << QString::number(hit->position.x, 'f', 3)
                              << QString::number(hit->position.y, 'f', 3)
                              << QString::number(hit->position.z, 'f', 3);
        }
        requestUpdate();
    }

    // A batch's style with what is marked of it, and what the pointer is over.
    template<typename Style>
    Style Marked(Style style, void const* batch) {
        m_indices.clear();
        for (zx3DQt::PickElement const& element : m_marked) {
            if (element.batch == batch)
                m_indices.push_back(element.element);
        }
        if (m_hovered.batch == batch)
            m_indices.push_back(m_hovered.element);
        style.highlight.elements = m_indices;
        return style;
    }
    void MakeDome() {
        std::vector<bx::Vec3> places;
        for (std::uint32_t ring = 0; ring < kRings; ++ring) {
            for (std::uint32_t i = 0; i < kPerRing; ++i) {
                float const up =
                    0.5f * std::numbers::pi_v<float> * static_cast<float>(ring) / (kRings - 0.5f);
                float const around = 2.0f * std::numbers::pi_v<float> *
                                     (static_cast<float>(i) + 0.5f * static_cast<float>(ring)) / kPerRing;
                float const radius = 20.0f * std::cos(up);
                places.push_back(
                    {radius * std::cos(around), radius * std::sin(around), 14.0f * std::sin(up)});
            }
        }
        std::vector<zx3DQt::LineSegment> bars;
        std::vector<std::uint32_t> panels;
        auto const addBar = [&](std::uint32_t a, std::uint32_t b) {
            bars.push_back({{places[a], 0x3d4c63ff}, {places[b], 0x3d4c63ff}});
        };
        for (std::uint32_t ring = 0; ring < kRings; ++ring) {
            for (std::uint32_t i = 0; i < kPerRing; ++i) {
                std::uint32_t const here = ring * kPerRing + i;
                std::uint32_t const beside = ring * kPerRing + (i + 1) % kPerRing;
                addBar(here, beside);
                if (ring + 1 == kRings)
                    continue;
                std::uint32_t const above = here + kPerRing;
                addBar(here, above);
                addBar(beside, above);
                if ((i / 3 + ring) % 2 == 0)
                    panels.insert(panels.end(), {here, beside, above});
            }
        }
        std::vector<zx3DQt::ColoredPoint> nodes;
        for (bx::Vec3 const& place : places)
            nodes.push_back({place, 0x8a97abff});
        std::vector<std::uint32_t> const glass(places.size(), 0xa9c8d9ff);
        m_nodes.SetOrigin(kSite);
        m_bars.SetOrigin(kSite);
        m_panels.SetOrigin(kSite);
        m_nodes.Set(nodes);
        m_bars.Set(bars);
        m_panels.Set({.positions = places, .colors = glass}, panels);
    }

    zx3DQt::PointStyle const kNodeStyle{
        .shape = zx3DQt::PointShape::Ball, .size = 0.8f, .sizeUnit = zx3DQt::SizeUnit::World};
    zx3DQt::LineStyle const kBarStyle{
        .width = 0.22f, .widthUnit = zx3DQt::SizeUnit::World, .cap = zx3DQt::LineCap::Round};

    zx3DQt::PointBatch m_nodes;
    zx3DQt::LineBatch m_bars;
    zx3DQt::MeshBatch m_panels;
    zx3DQt::CameraController m_camera{this};
    zx3DQt::Picker m_picker{kPickView, [this](zx3DQt::PickScene& scene) {
                                scene.Add(m_panels);
                                scene.Add(m_bars, kBarStyle);
                                scene.Add(m_nodes, kNodeStyle);
                            }};
    zx3DQt::PickElement m_hovered;
    std::vector<zx3DQt::PickElement> m_marked;
    std::vector<std::uint64_t> m_indices;
    QPointF m_pressed;
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
        DomeWindow window; // goes before Shutdown
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
