// A part as a drawing shows it: a plate with holes, filled from its outlines, with its dimensions, labels
// that keep clear of each other, and texts along its edges. Drag to turn it.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QExposeEvent>
#include <QLoggingCategory>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

using namespace zarvex;

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using zx3DQt::Label;
using zx3DQt::PolygonOutline;

// Millimetres. The plate lies around the origin, from z = 0 up.
constexpr float kLength = 120.0f;
constexpr float kBreadth = 80.0f;
constexpr float kHeight = 14.0f;
constexpr float kCornerRadius = 14.0f;
constexpr float kBoreRadius = 20.0f;
constexpr float kHoleRadius = 5.5f;
constexpr float kHoleX = 46.0f;
constexpr float kHoleY = 26.0f;

constexpr zx3D::Color kSteel{0.42f, 0.50f, 0.60f, 1.0f};
constexpr zx3D::Color kPaper{0.89f, 0.91f, 0.95f, 1.0f};
constexpr zx3D::Color kAmber{1.0f, 0.72f, 0.38f, 1.0f};
constexpr std::uint32_t kEdge = 0x0d1219ff;
constexpr std::uint32_t kBackground = 0x161d28ff;

// ---- The part: outlines at the top, with the area within the first and without the others.

void AddArc(PolygonOutline& outline, float x, float y, float radius, float from, float to) {
    constexpr int steps = 24;
    for (int i = 0; i <= steps; ++i) {
        float const angle =
            std::lerp(from, to, static_cast<float>(i) / steps) * std::numbers::pi_v<float> / 180.0f;
        outline.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle), kHeight});
    }
}

std::vector<PolygonOutline> MakeOutlines() {
    std::vector<PolygonOutline> outlines(1);
    float const x = 0.5f * kLength - kCornerRadius;
    float const y = 0.5f * kBreadth - kCornerRadius;
    AddArc(outlines[0], x, y, kCornerRadius, 0.0f, 90.0f);
    AddArc(outlines[0], -x, y, kCornerRadius, 90.0f, 180.0f);
    AddArc(outlines[0], -x, -y, kCornerRadius, 180.0f, 270.0f);
    AddArc(outlines[0], x, -y, kCornerRadius, 270.0f, 360.0f);
    outlines.emplace_back();
    AddArc(outlines.back(), 0.0f, 0.0f, kBoreRadius, 0.0f, 360.0f);
    for (float const signX : {-1.0f, 1.0f}) {
        for (float const signY : {-1.0f, 1.0f}) {
            outlines.emplace_back();
            AddArc(outlines.back(), signX * kHoleX, signY * kHoleY, kHoleRadius, 0.0f, 360.0f);
        }
    }
    return outlines;
}

// Steel in the light of a lamp over the left shoulder.
zx3D::Color Shade(QVector3D const& normal) {
    static QVector3D const light = QVector3D(-0.5f, -0.8f, 0.9f).normalized();
    float const level = 0.45f + 0.55f * std::abs(QVector3D::dotProduct(normal, light));
    return {level * kSteel.red, level * kSteel.green, level * kSteel.blue, 1.0f};
}

struct Walls {
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
};

Walls MakeWalls(std::vector<PolygonOutline> const& outlines) {
    Walls walls;
    for (PolygonOutline const& outline : outlines) {
        for (std::size_t i = 0; i < outline.size(); ++i) {
            QVector3D const& a = outline[i];
            QVector3D const& b = outline[(i + 1) % outline.size()];
            zx3D::Color const color =
                Shade(QVector3D::crossProduct(b - a, QVector3D(0.0f, 0.0f, 1.0f)).normalized());
            auto const first = static_cast<std::uint16_t>(walls.vertices.size());
            for (QVector3D const& corner : {a, b})
                walls.vertices.push_back({{corner.x(), corner.y(), corner.z()}, color});
            for (QVector3D const& corner : {b, a})
                walls.vertices.push_back({{corner.x(), corner.y(), 0.0f}, color});
            for (int const corner : {0, 1, 2, 2, 3, 0})
                walls.indices.push_back(static_cast<std::uint16_t>(first + corner));
        }
    }
    return walls;
}

void SetEdges(zx3DQt::LineBatch& batch, std::vector<PolygonOutline> const& outlines) {
    for (float const z : {kHeight, 0.0f}) {
        for (PolygonOutline const& outline : outlines) {
            std::vector<zx3DQt::LineVertex> vertices;
            for (QVector3D const& position : outline)
                vertices.push_back({{position.x(), position.y(), z}, kEdge});
            zx3DQt::Polyline const loop[] = {{vertices, zx3DQt::PolylineEnds::Closed}};
            batch.Append(loop);
        }
    }
}

// ---- What is written at it.

std::vector<Label> MakeNotes() {
    float const rim = 0.7071f;
    std::vector<Label> notes;
    auto const add = [&](float x, float y, char const* text, float priority) {
        Label note;
        note.position = {x, y, kHeight};
        note.text = QString::fromUtf8(text);
        note.priority = priority;
        notes.push_back(note);
    };
    add(rim * kBoreRadius, rim * kBoreRadius, "Ø 40 H7", 3.0f);
    add(kHoleX, -kHoleY + kHoleRadius, "4 × Ø 11", 2.0f);
    add(-kHoleX, kHoleY + kHoleRadius, "M10 from below", 1.0f);
    add(-0.5f * kLength + 0.29f * kCornerRadius, 0.5f * kBreadth - 0.29f * kCornerRadius, "R 14", 1.5f);
    add(-12.0f, -30.0f, "ground, Ra 0.8", 1.0f);
    return notes;
}

std::vector<Label> MakeEdgeNames() {
    Label front;
    front.position = {0.0f, -0.5f * kBreadth, 0.5f * kHeight};
    front.text = "datum A";
    front.direction = {1.0f, 0.0f, 0.0f};
    Label side;
    side.position = {0.5f * kLength, 0.0f, 0.5f * kHeight};
    side.text = "datum B";
    side.direction = {0.0f, 1.0f, 0.0f};
    return {front, side};
}

std::vector<zx3DQt::Dimension> MakeDimensions() {
    double const x = 0.5 * kLength, y = 0.5 * kBreadth, z = kHeight, cornerX = x - kCornerRadius;
    return {{{-x, -y + kCornerRadius, z}, {x, -y + kCornerRadius, z}, {0, -kCornerRadius - 22, 0}, "120"},
            {{cornerX, -y, z}, {cornerX, y, z}, {kCornerRadius + 20.0, 0, 0}, "80"},
            {{-kHoleX, kHoleY, z}, {kHoleX, kHoleY, z}, {0, 30, 0}, "92 ±0.1"},
            {{-x, -y + kCornerRadius, 0}, {-x, -y + kCornerRadius, z}, {-14, 0, 0}, "14"}};
}

class DrawingWindow : public zx3DQt::BGFXWindow {
public:
    DrawingWindow() {
        setTitle("zx3DQt: part drawing");
        resize(1000, 680);
        SetEdges(m_edges, m_outlines);
        m_notes.Set(MakeNotes());
        m_edgeNames.Set(MakeEdgeNames());
        zx3DQt::OrbitCamera camera;
        camera.LookFrom(zx3DQt::StandardView::Isometric);
        camera.SetElevation(42.0);
        camera.SetAzimuth(-20.0);
        zx3DQt::WorldBox const scene{{-85.0, -75.0, 0.0}, {85.0, 75.0, 20.0}};
        camera.Fit(scene, 1.5);
        camera.SetDistance(0.78 * camera.GetDistance());
        m_camera.SetCamera(camera);
        m_camera.SetSceneBox(scene);
        connect(&m_camera, &zx3DQt::CameraController::cameraChanged, this, &QWindow::requestUpdate);
    }
    ~DrawingWindow() override { zx3D::DestroyFont(m_font); }

    // Records a frame. False when there is nothing to draw into.
    bool RecordFrame() {
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return false;
        zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, kBackground, 1.0f, 0};
        // In the order of calls.
        zx3DQt::BGFXViewContext view(0, clear, bgfx::ViewMode::Sequential);
        view.SetViewport(GetViewport());
        m_camera.Apply(view);
        view.Submit(GetFrameBuffer());
        auto const ratio = static_cast<float>(GetPixelRatio());
        LoadFont(ratio);
        DrawPart(view, ratio);
        DrawNotes(view, ratio);
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
        if (RecordFrame())
            GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    }

    // Fonts have a size in physical pixels.
    void LoadFont(float ratio) {
        auto const size = static_cast<std::uint16_t>(std::lround(14.0f * ratio));
        if (zx3D::GetFontInfo(m_font).pixelSize == size)
            return;
        zx3D::DestroyFont(m_font);
        m_font = zx3D::LoadDefaultFont(size).value_or(zx3D::FontHandle());
    }

    void DrawPart(zx3DQt::BGFXViewContext const& view, float ratio) {
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        renderer.SetModelTransform({});
        renderer.DrawTriangles(view, m_walls.vertices, m_walls.indices);
        DrawPolygon(renderer, view, m_face, Shade({0.0f, 0.0f, 1.0f}));
        m_edges.Draw(renderer, view, {.width = 1.5f * ratio, .smoothEdges = true, .depthOffset = 2.0f});
    }

    void DrawNotes(zx3DQt::BGFXViewContext const& view, float ratio) {
        zx3DQt::DimensionStyle dimensions;
        dimensions.font = m_font;
        dimensions.color = kPaper;
        dimensions.lineWidth = ratio;
        dimensions.arrowLength *= ratio;
        dimensions.arrowBreadth *= ratio;
        dimensions.extensionGap *= ratio;
        dimensions.extensionOvershoot *= ratio;
        dimensions.textGap *= ratio;
        DrawDimensions(GetRenderer(), view, m_dimensions, dimensions);

        zx3DQt::LabelStyle names;
        names.font = m_font;
        names.color = zx3D::Color{0.06f, 0.08f, 0.11f, 1.0f};
        names.depthOffset = 10.0f * ratio;           // half the height of a name
        names.depth = zx3D::AnnotationDepth::Tested; // on the side that is turned away, they are hidden
        m_edgeNames.Draw(GetRenderer(), view, names);

        zx3DQt::LabelStyle notes;
        notes.font = m_font;
        notes.color = kPaper;
        notes.alignment = Qt::AlignLeft | Qt::AlignBottom;
        notes.offset = QPointF(26.0 * ratio, -22.0 * ratio);
        notes.boxColor = zx3D::Color{0.09f, 0.11f, 0.16f, 0.85f};
        notes.padding = 4.0f * ratio;
        notes.leaderColor = kAmber;
        notes.leaderWidth = ratio;
        m_notes.Draw(GetRenderer(), view, notes);
    }

    std::vector<PolygonOutline> m_outlines = MakeOutlines();
    zx3DQt::PolygonTriangles m_face = zx3DQt::TriangulatePolygon(m_outlines);
    Walls m_walls = MakeWalls(m_outlines);
    std::vector<zx3DQt::Dimension> m_dimensions = MakeDimensions();
    zx3DQt::LineBatch m_edges;
    zx3DQt::LabelBatch m_notes;
    zx3DQt::LabelBatch m_edgeNames;
    zx3D::FontHandle m_font;
    zx3DQt::CameraController m_camera{this};
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
        DrawingWindow window; // goes before Shutdown
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
