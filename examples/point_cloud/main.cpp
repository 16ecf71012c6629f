// Ten million points of a survey from the air, shown while they come in. --points=NUMBER makes it more or
// fewer.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QLoggingCategory>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

using namespace zarvex;

using Points = std::vector<zx3DQt::ScalarPoint>;

// ---- The survey: a town in a valley, a kilometre long and wide. Points are metres from its middle, the
// number of each is its height above the river.

// Where the middle is: easting, northing and height, metres. Floats would be half a metre off there.
constexpr zx3DQt::WorldPosition kMiddle{500'000.0, 5'400'000.0, 100.0};

// Random numbers that are the same everywhere (xorshift), 0 to 1.
class Random {
public:
    explicit Random(std::uint32_t seed) : m_state(seed) {}

    float operator()() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return static_cast<float>(m_state >> 8) / 16777216.0f;
    }

private:
    std::uint32_t m_state;
};

float RiverAt(float y) {
    return 90.0f * std::sin(0.006f * y);
}

float Ground(float x, float y) {
    float const fromRiver = std::abs(x - RiverAt(y));
    float const valley = 120.0f * (1.0f - std::exp(-fromRiver * fromRiver / 90'000.0f));
    float const hills =
        9.0f * std::sin(0.021f * x + 0.4f) * std::sin(0.017f * y) + 3.0f * std::sin(0.06f * (x + y));
    return fromRiver < 14.0f ? 0.0f : valley + hills * std::min(fromRiver / 200.0f, 1.0f) + 1.5f;
}

// The height of the roof over a place, of houses on a grid of streets along the river; 0 in between.
float Roof(float x, float y) {
    constexpr float pitch = 32.0f;
    float const across = x - RiverAt(y);
    if (std::abs(across) < 30.0f || std::abs(across) > 260.0f || std::abs(y) > 380.0f)
        return 0.0f;
    float const column = std::floor(x / pitch);
    float const row = std::floor(y / pitch);
    float const fromMiddleX = x - (column + 0.5f) * pitch;
    float const fromMiddleY = y - (row + 0.5f) * pitch;
    Random house(
        static_cast<std::uint32_t>(7919 * (static_cast<int>(column) + 100) + static_cast<int>(row) + 1000));
    house();
    float const halfLength = 5.0f + 7.0f * house();
    float const halfWidth = 4.0f + 5.0f * house();
    if (std::abs(fromMiddleX) > halfLength || std::abs(fromMiddleY) > halfWidth || house() < 0.2f)
        return 0.0f;
    float const walls = 5.0f + 25.0f * std::pow(house(), 4.0f);
    return walls + 4.0f * (1.0f - std::abs(fromMiddleY) / halfWidth); // a ridge along the house
}

// The crown of a tree, outside of the town.
float Crown(float x, float y, Random& random) {
    float const wood = std::sin(0.013f * x) + std::sin(0.011f * y + 1.0f) - 0.5f;
    return wood > 0.0f && random() < 0.6f ? (4.0f + 12.0f * random()) * std::min(4.0f * wood, 1.0f) : 0.0f;
}

// The strip that the aeroplane scans from one side to the other.
Points ScanStrip(int strip, int strips, std::size_t count) {
    Random random(static_cast<std::uint32_t>(strip) * 2'654'435'761u + 1);
    Points points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        float const x = 1000.0f * (random() - 0.5f);
        float const y =
            1000.0f * ((static_cast<float>(strip) + random()) / static_cast<float>(strips) - 0.5f);
        float const ground = Ground(x, y);
        float const roof = Roof(x, y);
        float const height = ground + (roof > 0.0f ? roof : Crown(x, y, random));
        points.push_back({{x, y, height}, height});
    }
    return points;
}

// Hands over the survey strip by strip, in a thread of its own.
class Survey : public QThread {
public:
    using Receiver = std::function<void(Points const&)>;

    // `receive` is called in the thread of `context`.
    Survey(std::size_t count, QObject* context, Receiver receive)
        : m_count(count),
          m_context(context),
          m_receive(std::move(receive)) {}

    ~Survey() override {
        requestInterruption();
        wait();
    }

private:
    void run() override {
        constexpr int strips = 100;
        for (int strip = 0; strip < strips && !isInterruptionRequested(); ++strip) {
            std::size_t const count = m_count * (strip + 1) / strips - m_count * strip / strips;
            auto const points = std::make_shared<Points>(ScanStrip(strip, strips, count));
            QMetaObject::invokeMethod(m_context, [receive = m_receive, points] { receive(*points); });
        }
    }

    std::size_t m_count;
    QObject* m_context;
    Receiver m_receive;
};

// ---- The window.

zx3DQt::PointStyle MakeStyle(double pixelRatio) {
    static QColor const colors[] = {{38, 92, 152},   {56, 212, 191}, {92, 150, 84},
                                    {172, 166, 104}, {255, 184, 97}, {246, 236, 222}};
    static zx3DQt::ColorMap const heights{colors};
    return {.size = static_cast<float>(pixelRatio), .colorMap = heights, .greatestValue = 150.0f};
}

// From a camera that circles the middle. Its matrices are relative to the middle, too.
zx3DQt::BGFXViewContext MakeView(zx3DQt::BGFXWindow const& window, float seconds) {
    zx3DQt::BGFXViewContext view(
        0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x10151dff, 1.0f, 0});
    view.SetViewport(window.GetViewport());
    view.SetOrigin(kMiddle);
    auto const aspectRatio = static_cast<float>(view.ComputeViewportAspectRatio());
    QMatrix4x4 camera;
    camera.translate(0.0f, 30.0f, -900.0f / std::min(aspectRatio, 1.0f));
    camera.rotate(-58.0f, 1.0f, 0.0f, 0.0f);
    camera.rotate(25.0f + 6.0f * seconds, 0.0f, 0.0f, 1.0f);
    view.SetViewMatrix(camera);
    // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
    bx::mtxProj(view.GetProjectionMatrix().data(), 45.0f, aspectRatio, 50.0f, 3000.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
    view.Submit(window.GetFrameBuffer());
    return view;
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, zx3DQt::PointBatch& cloud, zx3D::FontHandle font,
                 float seconds) {
    zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false; // the window has no area now
    zx3DQt::BGFXViewContext const view = MakeView(window, seconds);
    cloud.Draw(renderer, view, MakeStyle(window.GetPixelRatio())); // as many as are there by now
    double const margin = 12.0 * window.GetPixelRatio();
    QString const count =
        QLocale(QLocale::English).toString(static_cast<qulonglong>(cloud.GetUploadedCount()));
    renderer.RenderText(view, QPointF(margin, margin), count + " points", font, QColor(226, 233, 243),
                        Qt::AlignLeft | Qt::AlignTop);
    return true;
}

// The whole survey at once, and all of it on the GPU in one frame.
bool SavePicture(zx3DQt::BGFXWindow& window, std::size_t count, QString const& path) {
    zx3DQt::PointBatch cloud;
    cloud.SetOrigin(kMiddle);
    cloud.Set(ScanStrip(0, 1, count));
    window.GetRenderer().SetUploadBudget(std::numeric_limits<std::uint64_t>::max());
    auto const font = zx3D::LoadDefaultFont(26).value_or(zx3D::FontHandle());
    return window
        .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                       [&](double) { RecordFrame(window, cloud, font, 0.0f); })
        .save(path);
}

void Show(zx3DQt::BGFXWindow& window, std::size_t count) {
    zx3DQt::PointBatch cloud;
    cloud.SetOrigin(kMiddle);
    Survey survey(count, &window, [&](Points const& points) { cloud.Append(points); });
    auto const font =
        zx3D::LoadDefaultFont(static_cast<std::uint16_t>(std::lround(13.0 * window.GetPixelRatio())))
            .value_or(zx3D::FontHandle());
    QElapsedTimer clock;
    clock.start();
    QTimer timer;
    timer.callOnTimeout(&window, [&] {
        if (RecordFrame(window, cloud, font, 0.001f * clock.elapsed()))
            window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    });
    timer.start(16);
    window.show();
    survey.start();
    QApplication::exec();
}

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    QApplication application(argc, argv);
    QStringList const arguments = application.arguments();
    bool const openGL = arguments.contains("--opengl");
    // The name of a picture as an argument: it is saved, with twice the pixels of the window.
    QString const picture = arguments.filter(".png").value(0);
    QString const points = arguments.filter("--points=").value(0).section('=', 1);
    auto const count = static_cast<std::size_t>(points.isEmpty() ? 10'000'000 : points.toULongLong());
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(true)) // wait for the display's refresh
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: point cloud");
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(960, 640);
        if (picture.isEmpty())
            Show(window, count);
        else // nothing is shown
            isSaved = SavePicture(window, count, picture);
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
