// A toothed wheel with its edges: lines of a width in pixels over a lit mesh, in front of the faces that they
// bound and behind all others. Drag with the left button to look from elsewhere, use the wheel to come
// closer.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>

#include <cmath>
#include <numbers>
#include <vector>

using namespace zarvex;

constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

// What a batch takes, while it is put together.
struct Mesh {
    std::vector<bx::Vec3> positions;
    std::vector<std::uint32_t> triangles;
};

constexpr std::uint32_t kTeeth = 14;

// Where the outline of a tooth has its corners, in teeth, and how far out it is there.
struct Corner {
    float angle;
    float radius;
};
constexpr Corner kTooth[] = {{-0.30f, 0.86f}, {-0.17f, 1.07f}, {-0.06f, 1.09f}, {0.06f, 1.09f},
                             {0.17f, 1.07f},  {0.30f, 0.86f},  {0.42f, 0.85f},  {0.58f, 0.85f}};

// A wheel: loops around the z axis, at the corners' angles, and the faces from each to the next.
Mesh MakeWheel() {
    struct Loop {
        float radius; // of a circle; 0 for the teeth's outline
        float height;
    };
    constexpr Loop loops[] = {{0.26f, 0.32f},  {0.44f, 0.32f},  {0.48f, 0.28f},  {0.48f, 0.10f},
                              {0.70f, 0.10f},  {0.70f, 0.20f},  {0.0f, 0.20f},   {0.0f, -0.20f},
                              {0.70f, -0.20f}, {0.70f, -0.10f}, {0.48f, -0.10f}, {0.48f, -0.28f},
                              {0.44f, -0.32f}, {0.26f, -0.32f}};
    constexpr auto perLoop = static_cast<std::uint32_t>(kTeeth * std::size(kTooth));
    Mesh wheel;
    for (Loop const& loop : loops) {
        for (std::uint32_t tooth = 0; tooth < kTeeth; ++tooth) {
            for (Corner const& corner : kTooth) {
                float const angle = kTurn * (static_cast<float>(tooth) + corner.angle) / kTeeth;
                float const radius = loop.radius > 0.0f ? loop.radius : corner.radius;
                wheel.positions.push_back({radius * std::cos(angle), radius * std::sin(angle), loop.height});
            }
        }
    }
    for (std::uint32_t loop = 0; loop < std::size(loops); ++loop) {
        std::uint32_t const inner = loop * perLoop;
        std::uint32_t const outer = (loop + 1) % static_cast<std::uint32_t>(std::size(loops)) * perLoop;
        for (std::uint32_t i = 0; i < perLoop; ++i) {
            std::uint32_t const next = (i + 1) % perLoop;
            for (std::uint32_t const corner :
                 {inner + i, outer + i, outer + next, inner + i, outer + next, inner + next})
                wheel.triangles.push_back(corner); // counter-clockwise from outside
        }
    }
    return wheel;
}

// The wheel, and its edges where it bends by 30 degrees or more.
struct Wheel {
    zx3DQt::MeshBatch faces;
    zx3DQt::LineBatch edges;
    zx3DQt::BGFXLightingContext lights;
    zx3DQt::BGFXMaterial metal{"u_material", QColor(110, 110, 116), Qt::white, QColor(90, 90, 90), Qt::black,
                               30.0f};

    Wheel() {
        Mesh const wheel = MakeWheel();
        zx3DQt::MeshVertices const vertices{.positions = wheel.positions};
        faces.Set(vertices, wheel.triangles);
        edges.Set(zx3DQt::FindMeshEdges(vertices, wheel.triangles, 30.0f, 0x0B1018FF));
        lights.Add(zx3DQt::BGFXPointLightSource("u_light0", QVector4D(-0.45f, -0.5f, 0.75f, 0.0f),
                                                QColor(90, 94, 104), QColor(205, 200, 190), Qt::white));
    }
};

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, Wheel& wheel, zx3DQt::CameraController const& camera,
                 float seconds) {
    zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false; // the window has no area now
    // The edges come behind the faces.
    zx3DQt::BGFXViewContext view(
        0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0xdfe4eaff, 1.0f, 0},
        bgfx::ViewMode::Sequential);
    view.SetViewport(window.GetViewport());
    camera.Apply(view);
    view.Submit(window.GetFrameBuffer());
    QMatrix4x4 turn;
    turn.rotate(10.0f * seconds, 0.0f, 0.0f, 1.0f);
    wheel.faces.Draw(renderer, view,
                     {.shading = zx3DQt::MeshShading::Flat,
                      .color = QColor(126, 168, 214),
                      .lights = &wheel.lights,
                      .material = &wheel.metal},
                     turn);
    auto const width = static_cast<float>(1.6 * window.GetPixelRatio());
    wheel.edges.Draw(
        renderer, view,
        {.width = width, .cap = zx3DQt::LineCap::Round, .smoothEdges = true, .depthOffset = 1.0f}, turn);
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
        Wheel wheel;
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: edges over faces");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(800, 600);
        // Mouse, wheel, touch and keys move it.
        zx3DQt::CameraController camera(&window);
        zx3DQt::OrbitCamera fromAbove;
        fromAbove.SetElevation(40.0);
        camera.SetCamera(fromAbove);
        camera.SetSceneBox(wheel.faces.GetBoundingBox());
        camera.Fit();
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, wheel, camera, 0.001f * static_cast<float>(clock.elapsed())))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, wheel, camera, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
