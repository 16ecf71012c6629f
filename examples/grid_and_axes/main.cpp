// A coordinate grid with tick labels, and coordinate axes with arrow heads and letters, in a plan view and in
// a 3D view of the same tool path.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>
#include <vector>

using namespace zarvex;

using Renderer = zx3DQt::BGFXRenderer;
using View = zx3DQt::BGFXViewContext;

// World units are millimetres. Arrow heads and letters have their places and sizes in units, with the heads 2
// from the origin, so the axes are drawn with a unit of their own.
constexpr float kAxesUnit = 80.0f; // millimetres

// ---- What is looked at: the path of a cutter that goes up in turns around a cam.

std::vector<zx3D::Line> MakeToolPath() {
    constexpr int turns = 8;
    constexpr int steps = 96 * turns;
    std::vector<zx3D::Line> path;
    bx::Vec3 from(0.0f, 0.0f, 0.0f);
    for (int i = 0; i <= steps; ++i) {
        float const t = static_cast<float>(i) / steps;
        float const angle = 2.0f * std::numbers::pi_v<float> * turns * t;
        float const radius = (78.0f - 44.0f * t) * (1.0f + 0.13f * std::cos(3.0f * angle));
        bx::Vec3 const to(radius * std::cos(angle), radius * std::sin(angle), 60.0f * t);
        zx3D::Color const color{std::lerp(0.53f, 0.98f, t), std::lerp(0.47f, 0.52f, t),
                                std::lerp(0.99f, 0.66f, t), 1.0f};
        if (i > 0)
            path.push_back({from, to, color});
        from = to;
    }
    return path;
}

// ---- Sizes. Widths and fonts are pixels: more of them where there are more to the same length.

class Pixels {
public:
    // Of the window, or of a picture of it.
    void SetRatio(double ratio) { m_ratio = static_cast<float>(ratio); }

    float Scaled(float length) const { return length * m_ratio; }

    // Each size is a font of its own, which is loaded once.
    zx3D::FontHandle FontOfSize(float size) {
        auto const pixelSize = static_cast<std::uint16_t>(std::lround(Scaled(size)));
        auto const [font, isNew] = m_fonts.try_emplace(pixelSize);
        if (isNew)
            font->second = zx3D::LoadDefaultFont(pixelSize).value_or(zx3D::FontHandle());
        return font->second;
    }

private:
    float m_ratio = 1.0f;
    std::map<std::uint16_t, zx3D::FontHandle> m_fonts;
};

// ---- Grid and axes.

// Every 50 mm from -200 to 200. The rectangle reaches 10 mm further than the last line: a line at its very
// edge would not be drawn.
void DrawGrid(Renderer const& renderer, View const& scene, View const& labels, Pixels& pixels, bool isPlan) {
    constexpr float spacing = 50.0f; // millimetres
    zx3DQt::CoordinateGridStyle style;
    style.gridSpacing = QVector2D(spacing, spacing);
    style.gridMargins = QVector2D(0.0f, 0.0f);
    style.lineColor = QColor(62, 76, 96);
    style.lineWidth = pixels.Scaled(1.0f);
    style.lineStipplePattern = {0x5555, static_cast<std::uint8_t>(std::lround(pixels.Scaled(1.0f)))};
    style.frameTickLabels.emplace();
    style.frameTickLabels->font = pixels.FontOfSize(12.0f);
    style.frameTickLabels->color = QColor(150, 165, 186);
    auto const text = zx3DQt::CoordinateGridFrameTickLabelStyle::PlainTickLabelFunction(spacing);
    style.frameTickLabels->tickLabelFunctions = {text, text};
    style.frameTickLabels->minimumGap = pixels.Scaled(4.0f); // in the corner there is room for one number
    if (!isPlan)
        style.fade = zx3DQt::DistanceFade{1000.0f, 1600.0f, std::nullopt}; // from the eye
    zx3DQt::DrawCoordinateGrid(renderer, scene, labels, QRectF(-210.0, -210.0, 420.0, 420.0), style);
}

// The positive halves solid, the negative ones dashed.
void DrawAxes(Renderer const& renderer, View const& axes, View const& labels, Pixels& pixels) {
    zx3DQt::CoordinateAxesStyle style;
    style.lineWidths.fill(pixels.Scaled(2.0f));
    style.margins = QVector2D(0.1f, 0.1f); // the lines end within the arrow heads
    // Negative halves are dashed unless told otherwise, but y points down in the rectangle: its lesser side
    // is the positive one of the scene.
    std::swap(style.minSideLineStipplePatterns[zx3DQt::Y], style.maxSideLineStipplePatterns[zx3DQt::Y]);
    style.arrowHeads.emplace();
    style.arrowHeads->light.emplace();
    style.labels.emplace();
    style.labels->font = pixels.FontOfSize(15.0f);
    style.labels->placement = zx3DQt::CoordinateAxesLabelStyle::Placement::BeyondHeads;
    zx3DQt::DrawCoordinateAxes(renderer, axes, labels, QRectF(-2.0, -2.0, 4.0, 4.0), style);
}

// ---- The panes.

// Straight down, y upwards, as much of the world as the pane takes.
void SetPlan(View& view) {
    auto const aspect = static_cast<float>(view.ComputeViewportAspectRatio());
    float const halfHeight = 230.0f / std::min(aspect, 1.0f);
    float const halfWidth = halfHeight * aspect;
    // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
    bx::mtxOrtho(view.GetProjectionMatrix().data(), -halfWidth, halfWidth, -halfHeight, halfHeight, -500.0f,
                 500.0f, 0.0f, bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

// From a camera that swings to and fro.
void SetPerspective(View& view, float seconds) {
    auto const aspect = static_cast<float>(view.ComputeViewportAspectRatio());
    QMatrix4x4 camera;
    camera.translate(-18.0f, 10.0f, -1060.0f / std::min(aspect, 1.0f));
    camera.rotate(-50.0f, 1.0f, 0.0f, 0.0f);
    camera.rotate(24.0f + 4.0f * std::sin(0.3f * seconds), 0.0f, 0.0f, 1.0f);
    view.SetViewMatrix(camera);
    bx::mtxProj(view.GetProjectionMatrix().data(), 32.0f, aspect, 100.0f, 3000.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

// Draws into three bgfx views over the same pixels: the scene in millimetres, the axes in their own unit, and
// the text over both.
void DrawPane(zx3DQt::BGFXWindow& window, View scene, Pixels& pixels, bool isPlan) {
    static std::vector<zx3D::Line> const toolPath = MakeToolPath();
    View axes = scene;
    axes.SetViewId(scene.GetViewId() + 1);
    axes.SetViewClearOptions(std::nullopt); // the depth of the scene stays
    axes.GetViewMatrix().scale(kAxesUnit);
    View labels = axes;
    labels.SetViewId(scene.GetViewId() + 2);
    for (View const* view : {&scene, &axes, &labels})
        view->Submit(window.GetFrameBuffer());

    Renderer const& renderer = window.GetRenderer();
    DrawGrid(renderer, scene, labels, pixels, isPlan);
    renderer.DrawLines(scene, toolPath, pixels.Scaled(2.0f));
    DrawAxes(renderer, axes, labels, pixels);
    QPointF const corner =
        scene.GetViewport().topLeft() + QPointF(pixels.Scaled(14.0f), pixels.Scaled(10.0f));
    renderer.RenderText(labels, corner, isPlan ? "Plan, mm" : "3D, mm", pixels.FontOfSize(15.0f),
                        QColor(226, 233, 243), Qt::AlignLeft);
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, Pixels& pixels, float seconds) {
    Renderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false;                         // the window has no area now
    renderer.SetModelTransform(QMatrix4x4()); // transforms are those of one frame

    // Side by side on a darker sheet. bgfx draws its views in the order of their ids.
    View sheet(0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0e131aff, 1.0f, 0});
    sheet.SetViewport(window.GetViewport());
    sheet.Submit(window.GetFrameBuffer());
    bgfx::touch(sheet);

    pixels.SetRatio(window.GetPixelRatio());
    int const gap = static_cast<int>(std::lround(pixels.Scaled(12.0f)));
    QRect const area = window.GetViewport().adjusted(gap, gap, -gap, -gap);
    int const width = (area.width() - gap) / 2;
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161d28ff, 1.0f, 0};
    View plan(1, clear);
    plan.SetViewport(QRect(area.left(), area.top(), width, area.height()));
    SetPlan(plan);
    DrawPane(window, plan, pixels, true);
    View perspective(4, clear);
    perspective.SetViewport(plan.GetViewport().translated(width + gap, 0));
    SetPerspective(perspective, seconds);
    DrawPane(window, perspective, pixels, false);
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
        window.setTitle("zx3DQt: grid and axes");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(1100, 580);
        Pixels pixels;
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, pixels, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, pixels, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
