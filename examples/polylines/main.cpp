// Polylines that stay on the GPU: every join with every cap, stipples, smooth edges, and loops whose width is
// in world units. Each line is handed over once; a frame draws it again and again, with other styles and
// transforms.
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

using Renderer = zx3DQt::BGFXRenderer;
using View = zx3DQt::BGFXViewContext;
using zx3DQt::LineBatch;
using zx3DQt::LineCap;
using zx3DQt::LineJoin;
using zx3DQt::LineStyle;
using zx3DQt::LineVertex;

constexpr float kPi = std::numbers::pi_v<float>;

// Teal, blue, violet, pink and amber, for t from 0 to 1.
std::uint32_t Palette(float t, float alpha = 1.0f) {
    static constexpr zx3D::Color colors[] = {{0.22f, 0.83f, 0.75f, 1.0f},
                                             {0.29f, 0.62f, 0.98f, 1.0f},
                                             {0.61f, 0.49f, 0.98f, 1.0f},
                                             {0.97f, 0.45f, 0.62f, 1.0f},
                                             {1.00f, 0.72f, 0.38f, 1.0f}};
    float const position = std::clamp(t, 0.0f, 1.0f) * 4.0f;
    int const first = std::min(static_cast<int>(position), 3);
    zx3D::Color const& a = colors[first];
    zx3D::Color const& b = colors[first + 1];
    float const f = position - static_cast<float>(first);
    return zx3D::Color{std::lerp(a.red, b.red, f), std::lerp(a.green, b.green, f),
                       std::lerp(a.blue, b.blue, f), alpha}
        .ToRGBA();
}

LineBatch BatchOf(std::vector<LineVertex> const& vertices,
                  zx3DQt::PolylineEnds ends = zx3DQt::PolylineEnds::Open) {
    LineBatch batch;
    zx3DQt::Polyline const polylines[] = {{vertices, ends}};
    batch.Set(polylines);
    return batch;
}

// ---- What is drawn, in units of a panel: -1 to 1, y down.

// A blunt, a right and an acute corner.
std::vector<LineVertex> ZigZag() {
    constexpr float places[][2] = {
        {-0.75f, -0.35f}, {-0.3f, 0.45f}, {0.1f, -0.55f}, {0.4f, 0.6f}, {0.62f, -0.5f}};
    std::vector<LineVertex> vertices;
    for (auto const [x, y] : places)
        vertices.push_back(
            {{x, y, 0.0f}, Palette(0.5f * (x + 1.0f), 0.75f)}); // translucent: corners are no darker
    return vertices;
}

// A wave of many vertices, through which a stipple runs on.
std::vector<LineVertex> Wave() {
    constexpr int count = 200;
    std::vector<LineVertex> vertices;
    for (int i = 0; i <= count; ++i) {
        float const x = 2.0f * static_cast<float>(i) / count - 1.0f;
        vertices.push_back({{0.9f * x, 0.6f * std::sin(2.0f * kPi * x), 0.0f}, Palette(0.5f * (x + 1.0f))});
    }
    return vertices;
}

// Rays from the lower left, like a fan.
std::vector<zx3DQt::LineSegment> Fan() {
    std::vector<zx3DQt::LineSegment> segments;
    for (int i = 0; i <= 24; ++i) {
        float const angle = 0.5f * kPi * static_cast<float>(i) / 24.0f;
        std::uint32_t const color = Palette(static_cast<float>(i) / 24.0f);
        segments.push_back({{{-0.9f + 0.3f * std::cos(angle), 0.9f - 0.3f * std::sin(angle), 0.0f}, color},
                            {{-0.9f + 1.8f * std::cos(angle), 0.9f - 1.8f * std::sin(angle), 0.0f}, color}});
    }
    return segments;
}

// A closed curve in space.
std::vector<LineVertex> Knot() {
    constexpr int count = 300;
    std::vector<LineVertex> vertices;
    for (int i = 0; i < count; ++i) {
        float const angle = 2.0f * kPi * static_cast<float>(i) / count;
        float const radius = 1.0f + 0.42f * std::cos(3.0f * angle);
        vertices.push_back({{radius * std::cos(2.0f * angle), radius * std::sin(2.0f * angle),
                             0.42f * std::sin(3.0f * angle)},
                            Palette(0.5f + 0.5f * std::cos(angle))});
    }
    return vertices;
}

struct Lines {
    LineBatch zigZag = BatchOf(ZigZag());
    LineBatch wave = BatchOf(Wave());
    LineBatch fan;
    LineBatch knot = BatchOf(Knot(), zx3DQt::PolylineEnds::Closed);

    Lines() { fan.Set(Fan()); }
};

// ---- Where it is drawn.

// A cell of a table that fills a rectangle.
QRectF Cell(QRectF const& table, int columns, int rows, int column, int row) {
    QSizeF const size(table.width() / columns, table.height() / rows);
    return {table.topLeft() + QPointF(column * size.width(), row * size.height()), size};
}

// From the units of a panel to a rectangle of pixels.
QMatrix4x4 Into(QRectF const& rect) {
    QMatrix4x4 matrix;
    matrix.translate(static_cast<float>(rect.center().x()), static_cast<float>(rect.center().y()));
    matrix.scale(0.5f * static_cast<float>(rect.width()), 0.5f * static_cast<float>(rect.height()));
    return matrix;
}

void DrawJoinsAndCaps(Renderer& renderer, View const& view, QRectF const& rect, LineBatch& zigZag) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            LineStyle style;
            style.width = 0.055f * static_cast<float>(rect.width() / 3.0);
            style.join = static_cast<LineJoin>(row);
            style.cap = static_cast<LineCap>(column);
            style.miterLimit = 6.0f;
            style.smoothEdges = true;
            zigZag.Draw(renderer, view, style, Into(Cell(rect, 3, 3, column, row)));
        }
    }
}

void DrawStipples(Renderer& renderer, View const& view, QRectF const& rect, float ratio, LineBatch& wave) {
    constexpr std::uint16_t patterns[] = {0x5555, 0x1111, 0x0F0F, 0x3FFF, 0x18FF, 0x333F};
    for (int row = 0; row < 12; ++row) {
        LineStyle style;
        style.width = ratio * (row % 2 ? 4.0f : 1.0f);
        style.stipple = {patterns[row / 2], static_cast<std::uint8_t>(std::lround(2.0f * ratio))};
        wave.Draw(renderer, view, style, Into(Cell(rect, 1, 12, 0, row)));
    }
}

void DrawEdges(Renderer& renderer, View const& view, QRectF const& rect, float ratio, LineBatch& fan) {
    for (int column = 0; column < 2; ++column) {
        LineStyle style;
        style.width = 1.6f * ratio;
        style.smoothEdges = column == 1;
        QRectF const cell = Cell(rect, 2, 1, column, 0);
        double const side = std::min(cell.width(), cell.height());
        fan.Draw(renderer, view, style,
                 Into({cell.center() - QPointF(0.5 * side, 0.5 * side), QSizeF(side, side)}));
    }
}

// A ribbon: its width is told in the units of the knot, and shrinks with distance.
void DrawKnot(Renderer& renderer, View const& view, LineBatch& knot) {
    LineStyle style;
    style.width = 0.16f;
    style.widthUnit = zx3DQt::SizeUnit::World;
    style.join = LineJoin::Round;
    knot.Draw(renderer, view, style);
}

// Looks at the origin, which turns.
void SetPerspective(View& view, float seconds) {
    auto const aspect = static_cast<float>(view.ComputeViewportAspectRatio());
    QMatrix4x4 camera;
    camera.translate(0.0f, 0.0f, -4.2f / std::min(aspect, 1.0f));
    camera.rotate(-30.0f, 1.0f, 0.0f, 0.0f);
    camera.rotate(75.0f + 20.0f * seconds, 0.0f, 0.0f, 1.0f);
    view.SetViewMatrix(camera);
    bx::mtxProj(view.GetProjectionMatrix().data(), 42.0f, aspect, 1.0f, 20.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, Lines& lines, float seconds) {
    Renderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false; // the window has no area now
    auto const ratio = static_cast<float>(window.GetPixelRatio());

    // A world unit is a pixel, y down. Calls are drawn in their order.
    View sheet(0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161d28ff, 1.0f, 0},
               bgfx::ViewMode::Sequential);
    sheet.SetViewport(window.GetViewport());
    sheet.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    sheet.Submit(window.GetFrameBuffer());
    QRectF const all = window.GetViewport();
    double const gap = 0.03 * all.height();
    QRectF const inside = all.adjusted(gap, gap, -gap, -gap);
    QRectF const left(inside.topLeft(), QSizeF(0.6 * inside.width(), inside.height()));
    QRectF const right = inside.adjusted(left.width(), 0.0, 0.0, 0.0);
    DrawJoinsAndCaps(renderer, sheet, left, lines.zigZag);
    DrawStipples(renderer, sheet, Cell(right, 1, 3, 0, 0), ratio, lines.wave);
    DrawEdges(renderer, sheet, Cell(right, 1, 3, 0, 1), ratio, lines.fan);

    View space(1);
    space.SetViewport(Cell(right, 1, 3, 0, 2).toAlignedRect());
    SetPerspective(space, seconds);
    space.Submit(window.GetFrameBuffer());
    DrawKnot(renderer, space, lines.knot);
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
        Lines lines;
        zx3DQt::BGFXWindow window; // goes before Shutdown
        window.setTitle("zx3DQt: polylines");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(1100, 750);
        window.setMinimumSize(QSize(640, 480));
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, lines, 0.001f * static_cast<float>(clock.elapsed())))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, lines, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
