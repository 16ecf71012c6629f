// Every kind of line and point in the panels of one window. Each panel is a view with a viewport of its own.
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
using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using zx3D::Color;
using zx3D::Line;

// Widths and sizes are pixels: more of them where there are more to the same length, on the screen or in a
// picture.
class Pixels {
public:
    explicit Pixels(double ratio) : m_ratio(ratio) {}

    int operator()(double length) const {
        return std::max(1, static_cast<int>(std::lround(length * m_ratio)));
    }

private:
    double m_ratio;
};

constexpr float kPi = std::numbers::pi_v<float>;
constexpr Color kFaint{0.20f, 0.26f, 0.34f, 1.0f};

// Teal, blue, violet, pink and amber, for t from 0 to 1; `shade` below 1 is darker.
Color Palette(float t, float shade = 1.0f) {
    static constexpr Color colors[] = {{0.22f, 0.83f, 0.75f, 1.0f},
                                       {0.29f, 0.62f, 0.98f, 1.0f},
                                       {0.61f, 0.49f, 0.98f, 1.0f},
                                       {0.97f, 0.45f, 0.62f, 1.0f},
                                       {1.00f, 0.72f, 0.38f, 1.0f}};
    float const position = std::clamp(t, 0.0f, 1.0f) * 4.0f;
    int const first = std::min(static_cast<int>(position), 3);
    Color const& a = colors[first];
    Color const& b = colors[first + 1];
    float const f = position - static_cast<float>(first);
    return {shade * std::lerp(a.red, b.red, f), shade * std::lerp(a.green, b.green, f),
            shade * std::lerp(a.blue, b.blue, f), 1.0f};
}

QColor ToQColor(Color const& color) {
    return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha);
}

// ---- A surface that was measured: thin lines, stippled lines, one-pixel points, wide lines, point sprites.

bx::Vec3 SurfacePoint(float x, float y) {
    float const radius = std::hypot(x, y);
    return {x, y, 0.34f * std::cos(9.5f * radius) * std::exp(-1.5f * radius)};
}

// Points of even density on a disc: each is turned by the golden angle against the one before.
std::vector<Vertex> MakePointCloud() {
    constexpr int count = 24000;
    std::vector<Vertex> points;
    for (int i = 0; i < count; ++i) {
        float const radius = std::sqrt((i + 0.5f) / count);
        float const angle = 2.39996323f * i;
        bx::Vec3 const position = SurfacePoint(radius * std::cos(angle), radius * std::sin(angle));
        points.push_back(Vertex(position, Palette(0.4f + 1.6f * position.z)));
    }
    return points;
}

// Straight sections through the surface, in short segments.
std::vector<Line> MakeSections() {
    constexpr int steps = 60;
    std::vector<Line> segments;
    for (int section = -2; section <= 2; ++section) {
        float const y = 0.36f * section;
        float const halfLength = std::sqrt(1.0f - y * y);
        bx::Vec3 from = SurfacePoint(-halfLength, y);
        for (int i = 1; i <= steps; ++i) {
            bx::Vec3 const to = SurfacePoint(halfLength * (2.0f * i / steps - 1.0f), y);
            segments.push_back({from, to, Palette(0.9f)});
            from = to;
        }
    }
    return segments;
}

// The points where a probe touched the surface: every sixth of the sections' ends.
std::vector<Vertex> MakeTouchedPoints(std::vector<Line> const& sections) {
    std::vector<Vertex> points;
    for (std::size_t i = 5; i < sections.size(); i += 6)
        points.push_back(Vertex(sections[i].end, Palette(1.0f)));
    return points;
}

// A floor below the surface, and the edges of the box around it.
constexpr float kFloor = -0.4f;
constexpr float kCeiling = 0.4f;

std::vector<Line> MakeFloor() {
    std::vector<Line> lines;
    for (int i = -6; i <= 6; ++i) {
        float const at = 0.19f * i;
        lines.push_back({{at, -1.14f, kFloor}, {at, 1.14f, kFloor}, kFaint});
        lines.push_back({{-1.14f, at, kFloor}, {1.14f, at, kFloor}, kFaint});
    }
    return lines;
}

std::vector<Line> MakeBox() {
    constexpr Color color{0.42f, 0.52f, 0.64f, 1.0f};
    constexpr float corners[][2] = {{-1.0f, -1.0f}, {1.0f, -1.0f}, {1.0f, 1.0f}, {-1.0f, 1.0f}};
    std::vector<Line> lines;
    for (int i = 0; i < 4; ++i) {
        auto const [x, y] = corners[i];
        auto const [nextX, nextY] = corners[(i + 1) % 4];
        lines.push_back({{x, y, kFloor}, {nextX, nextY, kFloor}, color});
        lines.push_back({{x, y, kCeiling}, {nextX, nextY, kCeiling}, color});
        lines.push_back({{x, y, kFloor}, {x, y, kCeiling}, color});
    }
    return lines;
}

void DrawMeasuredSurface(Renderer& renderer, View const& view, Pixels const& pixels) {
    static std::vector<Line> const floor = MakeFloor();
    static std::vector<Line> const box = MakeBox();
    static std::vector<Vertex> const cloud = MakePointCloud();
    static std::vector<Line> const sections = MakeSections();
    static std::vector<Vertex> const touched = MakeTouchedPoints(sections);

    zx3D::LineStipplePattern const dashes{0x0F0F, static_cast<std::uint8_t>(pixels(1.0))};
    renderer.DrawLines(view, floor, pixels(1.0));
    renderer.DrawLines(view, box, pixels(1.0), std::nullopt, dashes);
    renderer.DrawPoints(view, cloud, static_cast<std::uint16_t>(pixels(1.0)));
    renderer.DrawLines(view, sections, pixels(2.0));
    renderer.DrawPoints(view, touched, static_cast<std::uint16_t>(pixels(7.0)));
}

// ---- Flat panels. Their world units are pixels of the window, with y down.

// The part of the panel that is drawn in.
QRectF Inside(View const& view) {
    QRectF const area = view.GetViewport();
    double const margin = 0.09 * std::min(area.width(), area.height());
    return area.adjusted(margin, margin, -margin, -margin);
}

// The middle of `size` whole pixels near `at`: what is that wide there ends between pixels.
float MiddleOfPixels(double at, int size) {
    return static_cast<float>(std::round(at - 0.5 * size) + 0.5 * size);
}

// Lines 1 to 16 pixels wide, and what looks like their reflection: the same widths, stippled.
void DrawWidths(Renderer& renderer, View const& view, Pixels const& pixels) {
    QRectF const area = Inside(view);
    double const gap = (area.width() - pixels(136.0)) / 15.0; // 1 + 2 + ... + 16 = 136
    float const height = static_cast<float>(area.height());
    float const water = std::round(static_cast<float>(area.top()) + 0.66f * height);
    double left = area.left();
    for (int i = 1; i <= 16; ++i) {
        int const width = pixels(i);
        float const t = (i - 1) / 15.0f;
        float const length = (0.4f + 0.6f * std::sin(kPi * t)) * height;
        float const x = MiddleOfPixels(left + 0.5 * width, width);
        auto const shore = static_cast<float>(pixels(2.0));
        Line const above[] = {{{x, water - shore, 0.0f}, {x, water - 0.66f * length, 0.0f}, Palette(t)}};
        Line const below[] = {
            {{x, water + shore, 0.0f}, {x, water + 0.34f * length, 0.0f}, Palette(t, 0.6f)}};
        zx3D::LineStipplePattern const waves{0x7777, static_cast<std::uint8_t>(pixels(1.0))};
        renderer.DrawLines(view, above, width);
        renderer.DrawLines(view, below, width, std::nullopt, waves);
        left += width + gap;
    }
}

// A row for each pattern, thin above wide; from column to column a bit of the pattern covers more pixels.
void DrawStipples(Renderer& renderer, View const& view, Pixels const& pixels) {
    constexpr std::uint16_t patterns[] = {0x5555,  // fine dots
                                          0x1111,  // dots
                                          0x0F0F,  // dashes
                                          0x3FFF,  // long dashes
                                          0x18FF,  // centre line
                                          0x333F}; // phantom line
    QRectF const area = Inside(view);
    double const pitch = area.height() / 6.0;
    double const gap = 0.06 * area.width();
    double const length = (area.width() - 2.0 * gap) / 3.0;
    for (int row = 0; row < 6; ++row) {
        float const thinY = MiddleOfPixels(area.top() + (row + 0.3) * pitch, pixels(1.0));
        float const wideY = MiddleOfPixels(area.top() + (row + 0.7) * pitch, pixels(4.0));
        Color const color = Palette(row / 5.0f);
        for (int column = 0; column < 3; ++column) {
            float const left = static_cast<float>(std::round(area.left() + column * (length + gap)));
            float const right = left + static_cast<float>(length);
            zx3D::LineStipplePattern const stipple{patterns[row],
                                                   static_cast<std::uint8_t>(pixels(1 << column))};
            Line const thin[] = {{{left, thinY, 0.0f}, {right, thinY, 0.0f}, color}};
            Line const wide[] = {{{left, wideY, 0.0f}, {right, wideY, 0.0f}, color}};
            renderer.DrawLines(view, thin, pixels(1.0), std::nullopt, stipple);
            renderer.DrawLines(view, wide, pixels(4.0), std::nullopt, stipple);
        }
    }
}

// Point sprites of 1 to 32 pixels, four in a column.
void DrawPointSizes(Renderer& renderer, View const& view, Pixels const& pixels) {
    QRectF const area = Inside(view);
    double const gap = (area.width() - pixels(144.0)) / 7.0; // 4 + 8 + ... + 32 = 144
    double left = area.left();
    for (int i = 1; i <= 32; ++i) {
        int const size = pixels(i);
        int const columnWidth = pixels(4 * ((i + 3) / 4));
        int const row = (i - 1) % 4;
        float const x = MiddleOfPixels(left + 0.5 * columnWidth, size);
        float const y = MiddleOfPixels(area.top() + (row + 0.5) * area.height() / 4.0, size);
        Vertex const point[] = {Vertex({x, y, 0.0f}, Palette((i - 1) / 31.0f))};
        renderer.DrawPoints(view, point, static_cast<std::uint16_t>(size));
        if (row == 3)
            left += columnWidth + gap;
    }
}

// Positions on a circle: in their own order a ring, in the order of the indices a star.
void DrawStrips(Renderer& renderer, View const& view, Pixels const& pixels) {
    constexpr int count = 37;
    QRectF const area = Inside(view);
    auto const radius = static_cast<float>(0.5 * std::min(area.width(), area.height()));
    std::vector<QVector3D> positions;
    std::vector<Vertex> corners;
    std::vector<std::uint16_t> star;
    for (int i = 0; i <= count; ++i) {
        float const angle = 2.0f * kPi * i / count;
        positions.emplace_back(area.center().x() + radius * std::sin(angle),
                               area.center().y() - radius * std::cos(angle), 0.0f);
        corners.push_back(Vertex({positions[i].x(), positions[i].y(), 0.0f}, Palette(0.1f)));
        star.push_back(static_cast<std::uint16_t>(i * 14 % count));
    }
    renderer.DrawLines(view, positions, star, ToQColor(Palette(0.4f)), pixels(1.0));
    renderer.DrawLines(view, positions, {}, ToQColor(Palette(0.1f)), pixels(2.0));
    renderer.DrawPoints(view, corners, static_cast<std::uint16_t>(pixels(6.0)));
}

// The outline of a gear around the origin. Two of them mesh when they are 2 apart, one half a tooth ahead.
constexpr int kTeeth = 12;
std::vector<QVector3D> MakeGear() {
    struct Corner {
        float angle; // in teeth
        float radius;
    };
    constexpr Corner tooth[] = {{-0.29f, 0.88f}, {-0.15f, 1.09f}, {0.15f, 1.09f}, {0.29f, 0.88f}};
    std::vector<QVector3D> outline;
    for (int i = 0; i < kTeeth; ++i) {
        for (Corner const& corner : tooth) {
            float const angle = 2.0f * kPi * (i + corner.angle) / kTeeth;
            outline.emplace_back(corner.radius * std::cos(angle), corner.radius * std::sin(angle), 0.0f);
        }
    }
    outline.push_back(outline.front());
    return outline;
}

// One gear, six model transforms.
void DrawGears(Renderer& renderer, View const& view, Pixels const& pixels, float seconds) {
    static std::vector<QVector3D> const gear = MakeGear();
    QRectF const area = Inside(view);
    float const radius = static_cast<float>(std::min(area.width() / 6.2, area.height() / 4.2));
    for (int i = 0; i < 6; ++i) {
        int const column = i % 3;
        int const row = i / 3;
        float const angle = 15.0f * seconds;
        QMatrix4x4 matrix;
        matrix.translate(area.center().x(), area.center().y());
        matrix.scale(radius);
        matrix.translate(2.0f * (column - 1), 2.0f * row - 1.0f);
        matrix.rotate((column + row) % 2 ? 180.0f / kTeeth - angle : angle, 0.0f, 0.0f, 1.0f);
        // From here on draw operations take this transform, unless they are given another one's id.
        zx3DQt::ModelTransformCacheId const transform = renderer.SetModelTransform(matrix);
        Color const color = Palette((column + row) / 3.0f);
        Vertex const hub[] = {Vertex({0.0f, 0.0f, 0.0f}, color)};
        renderer.DrawLines(view, gear, {}, ToQColor(color), pixels(2.0));
        renderer.DrawPoints(view, hub, static_cast<std::uint16_t>(pixels(10.0)), transform);
    }
}

// ---- The window.

// The pixels of a panel in a grid of three by three.
QRect PanelRect(QRect const& window, QRect const& cells) {
    int const gap = std::max(4, window.height() / 60);
    auto const edge = [gap](int length, int cell) { return gap + (length - gap) * cell / 3; };
    QPoint const from(edge(window.width(), cells.x()), edge(window.height(), cells.y()));
    QPoint const to(edge(window.width(), cells.x() + cells.width()),
                    edge(window.height(), cells.y() + cells.height()));
    return QRect(from, QSize(to.x() - from.x() - gap, to.y() - from.y() - gap)).translated(window.topLeft());
}

// A view that clears its panel. Calls into it are drawn in their order.
View MakePanel(std::uint16_t viewId, QRect const& viewport) {
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161d28ff, 1.0f, 0};
    View view(viewId, clear, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    return view;
}

// Looks at the origin from a camera that circles it, from so far away that a narrow panel shows all of it.
void SetPerspective(View& view, float seconds) {
    auto const aspect = static_cast<float>(view.ComputeViewportAspectRatio());
    QMatrix4x4 camera;
    camera.translate(0.0f, 0.22f, -3.8f / std::min(aspect / 1.4f, 1.0f));
    camera.rotate(-62.0f, 1.0f, 0.0f, 0.0f);
    camera.rotate(25.0f + 6.0f * seconds, 0.0f, 0.0f, 1.0f);
    view.SetViewMatrix(camera);
    // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
    bx::mtxProj(view.GetProjectionMatrix().data(), 42.0f, aspect, 1.0f, 20.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, float seconds) {
    Renderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false;                         // the window has no area now
    renderer.SetModelTransform(QMatrix4x4()); // transforms are those of one frame

    Pixels const pixels(window.GetPixelRatio());

    // bgfx draws its views in the order of their ids: the sheet first, then the panels on it.
    View sheet(0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0e131aff, 1.0f, 0});
    sheet.SetViewport(window.GetViewport());
    sheet.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    sheet.Submit(window.GetFrameBuffer());

    QRect const cells[] = {{0, 0, 2, 2}, {2, 0, 1, 1}, {2, 1, 1, 1},
                           {0, 2, 1, 1}, {1, 2, 1, 1}, {2, 2, 1, 1}};
    std::vector<View> panels;
    for (QRect const& cell : cells) {
        auto const viewId = static_cast<std::uint16_t>(panels.size() + 1);
        panels.push_back(MakePanel(viewId, PanelRect(window.GetViewport(), cell)));
    }
    SetPerspective(panels[0], seconds);
    for (View const& panel : panels) {
        panel.Submit(window.GetFrameBuffer());
        double const outside = 0.5 * pixels(1.0);
        QRectF const r = QRectF(panel.GetViewport()).adjusted(-outside, -outside, outside, outside);
        QVector3D const corners[] = {QVector3D(r.topLeft()), QVector3D(r.topRight()),
                                     QVector3D(r.bottomRight()), QVector3D(r.bottomLeft())};
        std::uint16_t const frame[] = {0, 1, 2, 3, 0};
        renderer.DrawLines(sheet, corners, frame, ToQColor(kFaint), pixels(1.0));
    }
    DrawMeasuredSurface(renderer, panels[0], pixels);
    DrawWidths(renderer, panels[1], pixels);
    DrawStipples(renderer, panels[2], pixels);
    DrawPointSizes(renderer, panels[3], pixels);
    DrawStrips(renderer, panels[4], pixels);
    DrawGears(renderer, panels[5], pixels, seconds);
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
        window.setTitle("zx3DQt: lines and points");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(1100, 750);
        window.setMinimumSize(QSize(640, 480)); // below, large points and wide lines touch each other
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
