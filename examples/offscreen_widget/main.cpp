// Ordinary Qt widgets, some of them translucent, over a view that bgfx draws: the view is an ordinary widget
// itself.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QLabel>
#include <QLoggingCategory>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>
#include <vector>

using namespace zarvex;

// A spiral of points whose number and size the sliders over it choose.
class SpiralView : public zx3DQt::BGFXOffscreenWidget {
public:
    void SetTurns(int turns) {
        m_turns = turns;
        update();
    }

    void SetSize(int size) {
        m_size = size;
        update();
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        BGFXOffscreenWidget::paintEvent(event);
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        if (!renderer.StartFrame(GetFrameBuffer()))
            return;
        // View 0 is the widget's own; 1 to 253 are free.
        zx3DQt::BGFXViewContext view(
            1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x171c26ff, 1.0f, 0});
        view.SetViewport(GetViewport());
        // From the widget's shape and not from the viewport's, which is smaller while Qt asks for a part.
        auto const halfWidth = static_cast<float>(width()) / static_cast<float>(std::max(height(), 1));
        view.SetOrthoProjectionFromRect(QRectF(-halfWidth, -1.0, 2.0 * halfWidth, 2.0), -1.0f, 1.0f, 0.0f);
        view.Submit(GetFrameBuffer());

        renderer.SetModelTransform(QMatrix4x4());
        auto const size = static_cast<std::uint16_t>(std::lround(m_size * GetPixelRatio()));
        renderer.DrawPoints(view, Points(), size);
        if (event != nullptr) // not while a picture is taken
            Flush();
    }

private:
    std::vector<zx3D::Vertex::Pos3fColorRGBA> Points() const {
        constexpr int count = 900;
        std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
        for (int i = 0; i < count; ++i) {
            float const t = (static_cast<float>(i) + 0.5f) / count;
            float const angle = 6.2831853f * static_cast<float>(m_turns) * t;
            float const radius = 0.95f * std::sqrt(t);
            points.push_back(
                {{radius * std::cos(angle), radius * std::sin(angle), 0.0f},
                 {std::lerp(0.25f, 1.0f, t), 0.55f + 0.17f * t, std::lerp(0.95f, 0.35f, t), 1.0f}});
        }
        return points;
    }

    int m_turns = 34;
    int m_size = 7;
};

// A label and a slider below it that calls `apply` with its value.
template<typename Apply>
void AddSlider(QVBoxLayout& layout, QString const& text, int lowest, int highest, int value, Apply apply) {
    auto* const slider = new QSlider(Qt::Horizontal);
    slider->setRange(lowest, highest);
    slider->setValue(value);
    QObject::connect(slider, &QSlider::valueChanged, slider, apply);
    layout.addWidget(new QLabel(text));
    layout.addWidget(slider);
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
    // The name of a picture as an argument: it is saved, with twice the pixels of the widget.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(false))
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        SpiralView view; // goes before Shutdown
        view.setWindowTitle("zx3DQt: off-screen widget");
        view.SetSampleCount(ChooseSampleCount(application.arguments()));
        view.SetDepthFormat(bgfx::TextureFormat::D32F);
        view.resize(640, 480);

        auto* const panel = new QWidget(&view);
        panel->setStyleSheet("QWidget { background: transparent; color: white; }"
                             "#panel { background: rgba(40, 50, 70, 190); border-radius: 10px; }");
        panel->setObjectName("panel");
        panel->setAttribute(Qt::WA_StyledBackground);
        auto* const layout = new QVBoxLayout(panel);
        AddSlider(*layout, "Turns", 1, 200, 34, [&view](int turns) { view.SetTurns(turns); });
        AddSlider(*layout, "Size of points", 2, 32, 7, [&view](int size) { view.SetSize(size); });
        panel->setGeometry(20, 20, 220, panel->sizeHint().height());

        if (picture.isEmpty()) {
            view.show();
            application.exec();
        } else { // nothing is shown
            isSaved = view.RenderPicture({.size = 2 * view.size(), .pixelRatio = 2.0}).save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
