// A hundred thousand screws on a plate: one mesh on the GPU, and a transform and a colour for each place.
// Drag with the left button to look from elsewhere, use the wheel to come closer.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

using namespace zarvex;

constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

// What a batch takes, while it is put together.
struct Mesh {
    struct Ring {
        float radius;
        float height;
    };

    std::vector<bx::Vec3> positions;
    std::vector<std::uint32_t> triangles;

    // A body of so many sides around the z axis, from ring to ring upwards.
    void AddBody(std::uint32_t sides, std::vector<Ring> const& rings) {
        auto const first = static_cast<std::uint32_t>(positions.size());
        for (Ring const& ring : rings) {
            for (std::uint32_t side = 0; side < sides; ++side) {
                float const angle = kTurn * static_cast<float>(side) / static_cast<float>(sides);
                positions.push_back(
                    {ring.radius * std::cos(angle), ring.radius * std::sin(angle), ring.height});
            }
        }
        for (std::uint32_t ring = 0; ring + 1 < rings.size(); ++ring) {
            for (std::uint32_t side = 0; side < sides; ++side) {
                std::uint32_t const here = first + ring * sides + side;
                std::uint32_t const next = first + ring * sides + (side + 1) % sides;
                for (std::uint32_t const corner :
                     {here, next, here + sides, here + sides, next, next + sides})
                    triangles.push_back(corner); // counter-clockwise from outside
            }
        }
    }
};

// A screw with a hexagonal head that sticks in z = 0. A unit is a millimetre.
Mesh MakeScrew() {
    Mesh screw;
    screw.AddBody(8, {{1.5f, 0.0f}, {1.5f, 2.0f}});
    screw.AddBody(6, {{2.9f, 2.0f}, {2.9f, 4.0f}, {2.5f, 4.5f}, {0.0f, 4.5f}});
    return screw;
}

// Rows of screws on a wavy plate, each turned as it came to a stop. Squares of 32 by 32 follow each other, so
// that those outside the picture are left out together.
std::vector<zx3DQt::MeshInstance> MakePlaces(int count) {
    constexpr std::uint32_t colors[] = {0xC9D1DAFF, 0xAEB9C6FF, 0xE2C36BFF,
                                        0xD98F6CFF}; // steels, brass, copper
    constexpr int perSide = 32;
    constexpr int squares = 10; // in a row
    constexpr float pitch = 8.0f;
    std::vector<zx3DQt::MeshInstance> places;
    places.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        int const square = i / (perSide * perSide);
        int const column = square % squares * perSide + i % perSide;
        int const row = square / squares * perSide + i / perSide % perSide;
        float const x = pitch * (static_cast<float>(column) - 159.5f + 0.5f * static_cast<float>(row % 2));
        float const y = pitch * (static_cast<float>(row) - 159.5f);
        float const distance = std::hypot(x, y);
        float const wave = std::cos(0.018f * distance);
        QMatrix4x4 place;
        place.translate(x, y, 18.0f * wave);
        place.rotate(77.0f * static_cast<float>(i), 0.0f, 0.0f, 1.0f);
        float const band = 2.0f + 2.0f * std::sin(0.011f * x + 0.6f * wave) * std::cos(0.013f * y);
        places.emplace_back(place, colors[std::clamp(static_cast<int>(band), 0, 3)]);
    }
    return places;
}

// The screws, and what shines on them.
struct Plate {
    zx3DQt::MeshBatch screws;
    zx3DQt::BGFXLightingContext lights;
    zx3DQt::BGFXMaterial metal{"u_material",          QColor(90, 90, 96), Qt::white,
                               QColor(150, 150, 150), Qt::black,          40.0f};

    explicit Plate(int count) {
        Mesh const screw = MakeScrew();
        screws.Set({.positions = screw.positions}, screw.triangles);
        screws.SetInstances(MakePlaces(count));
        lights.Add(zx3DQt::BGFXPointLightSource("u_light0", QVector4D(-0.5f, -0.4f, 0.75f, 0.0f),
                                                QColor(88, 92, 102), QColor(160, 156, 148), Qt::white));
    }
};

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, Plate& plate, zx3DQt::CameraController const& camera,
                 float seconds) {
    zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false; // the window has no area now
    zx3DQt::BGFXViewContext view(
        0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x12161dff, 1.0f, 0});
    view.SetViewport(window.GetViewport());
    camera.Apply(view);
    view.Submit(window.GetFrameBuffer());
    QMatrix4x4 turn;
    turn.rotate(6.0f * seconds, 0.0f, 0.0f, 1.0f);
    // The insides of the screws are not seen.
    zx3DQt::BGFXRenderState const outside = zx3DQt::BGFXRenderer::STATE_OPAQUE | BGFX_STATE_CULL_CW;
    plate.screws.Draw(renderer, view,
                      {.shading = zx3DQt::MeshShading::Flat, // the corners have no normals
                       .lights = &plate.lights,
                       .material = &plate.metal,
                       .state = outside},
                      turn);
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
        Plate plate(100'000);
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: instances");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(800, 600);
        // Mouse, wheel, touch and keys move it.
        zx3DQt::CameraController camera(&window);
        zx3DQt::OrbitCamera fromAbove;
        fromAbove.SetElevation(32.0);
        fromAbove.SetDistance(260.0);
        camera.SetCamera(fromAbove);
        camera.SetSceneBox(plate.screws.GetBoundingBox());
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, plate, camera, 0.001f * static_cast<float>(clock.elapsed())))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, plate, camera, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
