// A lit mesh that turns. Drag to look from elsewhere, use the wheel to come closer, F to see all of it again.
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

using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

// A piece of the mesh. Its indices have 16 bits, so it has at most 65,536 vertices.
struct Piece {
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
};

// The knot: twice around the z axis, three times around a ring. `u` counts turns of the whole, 0 to 1.
QVector3D KnotCentre(float u) {
    float const around = 2.0f * kTurn * u;
    float const wound = 3.0f * kTurn * u;
    float const radius = 1.0f + 0.46f * std::cos(wound);
    return {radius * std::cos(around), radius * std::sin(around), 0.46f * std::sin(wound)};
}

// A place on the fluted tube around that line; `v` counts turns around the tube.
QVector3D SurfacePoint(float u, float v) {
    QVector3D const centre = KnotCentre(u);
    QVector3D const along = (KnotCentre(u + 0.001f) - KnotCentre(u - 0.001f)).normalized();
    QVector3D const ring(std::cos(2.0f * kTurn * u), std::sin(2.0f * kTurn * u), 0.0f);
    QVector3D const side = QVector3D::crossProduct(along, centre - ring).normalized();
    QVector3D const up = QVector3D::crossProduct(side, along);
    float const flutes = 0.03f * std::cos(kTurn * (6.0f * v + 18.0f * u));
    return centre + (0.25f + flutes) * (std::cos(kTurn * v) * side + std::sin(kTurn * v) * up);
}

// Across the two directions of the surface; it need not have unit length.
QVector3D SurfaceNormal(float u, float v) {
    QVector3D const alongU = SurfacePoint(u + 0.0005f, v) - SurfacePoint(u - 0.0005f, v);
    QVector3D const alongV = SurfacePoint(u, v + 0.002f) - SurfacePoint(u, v - 0.002f);
    return QVector3D::crossProduct(alongU, alongV);
}

// From blue through violet to coral and back.
zx3D::Color SurfaceColor(float u) {
    float const t = 0.5f - 0.5f * std::cos(kTurn * u);
    return {std::lerp(0.22f, 1.0f, t), 0.64f - 0.26f * std::sin(0.5f * kTurn * t), std::lerp(1.0f, 0.42f, t),
            1.0f};
}

// The rings from `first` to `last` of `count`, and the triangles between them.
Piece MakePiece(int first, int last, int count) {
    constexpr int sides = 40;
    Piece piece;
    for (int ring = first; ring <= last; ++ring) {
        for (int side = 0; side < sides; ++side) {
            float const u = static_cast<float>(ring) / count;
            float const v = static_cast<float>(side) / sides;
            QVector3D const position = SurfacePoint(u, v);
            QVector3D const normal = SurfaceNormal(u, v);
            piece.vertices.push_back(Vertex({position.x(), position.y(), position.z()},
                                            {normal.x(), normal.y(), normal.z()}, SurfaceColor(u)));
        }
    }
    for (int ring = 0; ring < last - first; ++ring) {
        for (int side = 0; side < sides; ++side) {
            int const a = ring * sides + side;
            int const b = ring * sides + (side + 1) % sides;
            for (int index : {a, b, a + sides, b, b + sides, a + sides})
                piece.indices.push_back(static_cast<std::uint16_t>(index));
        }
    }
    return piece;
}

std::vector<Piece> MakeKnot() {
    constexpr int rings = 480;
    constexpr int ringsPerPiece = 120;
    std::vector<Piece> pieces;
    for (int ring = 0; ring < rings; ring += ringsPerPiece)
        pieces.push_back(MakePiece(ring, ring + ringsPerPiece, rings));
    return pieces;
}

// Two unlit triangles over the whole window, darker at the top.
void DrawBackground(zx3DQt::BGFXWindow& window) {
    zx3DQt::BGFXViewContext view(0);
    view.SetViewport(window.GetViewport());
    view.Submit(window.GetFrameBuffer());
    using Corner = zx3D::Vertex::Pos3fColorRGBA;
    zx3D::Color const top{0.05f, 0.07f, 0.10f, 1.0f};
    zx3D::Color const bottom{0.17f, 0.21f, 0.28f, 1.0f};
    Corner const corners[] = {Corner({-1.0f, 1.0f, 0.0f}, top), Corner({1.0f, 1.0f, 0.0f}, top),
                              Corner({-1.0f, -1.0f, 0.0f}, bottom), Corner({1.0f, -1.0f, 0.0f}, bottom)};
    std::uint16_t const indices[] = {0, 1, 2, 1, 3, 2};
    window.GetRenderer().DrawTriangles(view, corners, indices, std::nullopt,
                                       zx3DQt::BGFXRenderer::STATE_MARKER_OVERLAY);
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, std::vector<Piece> const& knot,
                 zx3DQt::CameraController const& camera, float seconds) {
    zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false;                         // the window has no area now
    renderer.SetModelTransform(QMatrix4x4()); // transforms are those of one frame
    DrawBackground(window);

    zx3DQt::BGFXViewContext view(1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_DEPTH, 0, 1.0f, 0});
    view.SetViewport(window.GetViewport());
    camera.Apply(view);
    view.Submit(window.GetFrameBuffer());

    QMatrix4x4 turn;
    turn.rotate(20.0f * seconds, 0.0f, 0.0f, 1.0f);
    renderer.SetModelTransform(turn);
    // Nothing sets lights or a material, so the viewer carries a light and the vertices have the surface's
    // colours. The program is told where the viewer is, in world space.
    renderer.UpdateViewPositionUniform(view.ComputeViewPosition());
    // Nobody sees the inside of the tube.
    zx3DQt::BGFXRenderState const outside{zx3DQt::BGFXRenderer::STATE_OPAQUE | BGFX_STATE_CULL_CCW};
    for (Piece const& piece : knot)
        renderer.DrawTriangles(view, piece.vertices, piece.indices, std::nullopt, outside);
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
        std::vector<Piece> const knot = MakeKnot();
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: lit mesh");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(800, 600);
        // Mouse, wheel, touch and keys turn it, and it is seen whole until they do.
        zx3DQt::CameraController camera(&window);
        zx3DQt::OrbitCamera fromAbove;
        fromAbove.SetElevation(50.0);
        camera.SetCamera(fromAbove);
        camera.SetSceneBox(zx3DQt::WorldBox{{-1.75, -1.75, -0.75}, {1.75, 1.75, 0.75}});
        camera.Fit();
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, knot, camera, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, knot, camera, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
