// Text: labels that follow places in the world, every alignment, sizes, and scripts of the world.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <vector>

using namespace zarvex;

using Renderer = zx3DQt::BGFXRenderer;
using View = zx3DQt::BGFXViewContext;
using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using zx3D::Color;
using zx3D::Line;

constexpr float kPi = std::numbers::pi_v<float>;
constexpr QColor kText(226, 233, 243);
constexpr QColor kFaintText(132, 149, 172);
constexpr Color kAmber{1.00f, 0.72f, 0.38f, 1.0f};

// The library's own font. Text and all distances around it are in pixels of the screen, so both grow with the
// screen's pixel ratio.
class Fonts {
public:
    // Of the window, or of a picture of it.
    void SetPixelRatio(double ratio) { m_pixelRatio = ratio; }

    double Pixels(double length) const { return length * m_pixelRatio; }

    // Each size is a font of its own, which is loaded once. Fonts live until `zx3D::DestroyFont`, or the end.
    zx3D::FontHandle OfSize(int size) {
        auto const pixelSize = static_cast<std::uint16_t>(std::lround(Pixels(size)));
        auto const [font, isNew] = m_fonts.try_emplace(pixelSize);
        if (isNew)
            font->second = zx3D::LoadDefaultFont(pixelSize).value_or(zx3D::FontHandle());
        return font->second;
    }

private:
    double m_pixelRatio = 1.0;
    std::map<std::uint16_t, zx3D::FontHandle> m_fonts;
};

// ---- Labels at places in the world: cities on a globe of radius 1.

struct City {
    char const* name; // UTF-8
    float latitude;   // degrees north
    float longitude;  // degrees east
    Qt::AlignmentFlag alignment = Qt::AlignLeft;
};

constexpr City kCities[] = {
    {"Reykjavík", 64.1f, -21.9f, Qt::AlignRight},
    {"Tromsø", 69.6f, 19.0f},
    {"Москва", 55.8f, 37.6f},
    {"Łódź", 51.8f, 19.5f, Qt::AlignRight},
    {"Київ", 50.5f, 30.5f},
    {"Zürich", 47.4f, 8.5f, Qt::AlignRight},
    {"თბილისი", 41.7f, 44.8f},
    {"Αθήνα", 38.0f, 23.7f, Qt::AlignRight},
    {"חיפה", 32.8f, 35.0f},
    {"ⴰⴳⴰⴷⵉⵔ", 30.4f, -9.6f, Qt::AlignRight},
    {"دبي", 25.2f, 55.3f},
    {"الخرطوم", 15.6f, 32.5f},
    {"Yaoundé", 3.9f, 11.5f, Qt::AlignRight},
    {"Nairobi", -1.3f, 36.8f},
    {"Улаанбаатар", 47.9f, 106.9f},
    {"東京", 35.7f, 139.7f},
    {"Hà Nội", 21.0f, 105.8f},
    {"ວຽງຈັນ", 18.0f, 102.6f, Qt::AlignRight},
    {"Perth", -32.0f, 115.9f},
    {"Whangārei", -35.7f, 174.3f, Qt::AlignRight},
    {"Nukuʻalofa", -21.1f, -175.2f},
    {"Utqiaġvik", 71.3f, -156.8f},
    {"ᐃᖃᓗᐃᑦ", 63.7f, -68.5f, Qt::AlignRight},
    {"Québec", 46.8f, -71.2f, Qt::AlignRight},
    {"Ciudad de México", 19.4f, -99.1f, Qt::AlignRight},
    {"Bogotá", 4.7f, -74.1f, Qt::AlignRight},
    {"São Paulo", -23.6f, -46.6f},
    {"Ushuaia", -54.8f, -68.3f},
};

QVector3D PlaceOnGlobe(float latitude, float longitude) {
    float const phi = latitude * kPi / 180.0f;
    float const lambda = longitude * kPi / 180.0f;
    return {std::cos(phi) * std::cos(lambda), std::cos(phi) * std::sin(lambda), std::sin(phi)};
}

bx::Vec3 ToVec3(QVector3D const& v) {
    return {v.x(), v.y(), v.z()};
}

// Above 0 where the camera sees the place, below 0 where the globe hides it.
float Visibility(QVector3D const& place, QVector3D const& camera) {
    return QVector3D::dotProduct(place, camera) - 1.0f;
}

// Meridians and parallels every 15 degrees, those behind the globe fainter.
std::vector<Line> MakeGraticule(QVector3D const& camera) {
    constexpr Color front{0.24f, 0.33f, 0.46f, 1.0f};
    constexpr Color back{0.12f, 0.155f, 0.21f, 1.0f};
    constexpr int step = 5;
    std::vector<Line> lines;
    auto const add = [&](QVector3D const& from, QVector3D const& to) {
        lines.push_back({ToVec3(from), ToVec3(to), Visibility(from, camera) > 0.0f ? front : back});
    };
    for (int longitude = 0; longitude < 360; longitude += 15) {
        for (int latitude = -75; latitude < 75; latitude += step)
            add(PlaceOnGlobe(latitude, longitude), PlaceOnGlobe(latitude + step, longitude));
    }
    for (int latitude = -75; latitude <= 75; latitude += 15) {
        for (int longitude = 0; longitude < 360; longitude += step)
            add(PlaceOnGlobe(latitude, longitude), PlaceOnGlobe(latitude, longitude + step));
    }
    // What is in front comes last.
    std::stable_partition(lines.begin(), lines.end(), [&](Line const& line) { return line.color == back; });
    return lines;
}

// Looks at the globe from a camera that circles it.
void SetPerspective(View& view, float seconds) {
    auto const aspect = static_cast<float>(view.ComputeViewportAspectRatio());
    float const longitude = 5.0f + 4.0f * seconds; // beneath the camera
    QMatrix4x4 camera;
    camera.translate(0.0f, 0.0f, -4.2f / std::min(aspect, 1.0f)); // far enough for a narrow panel
    camera.rotate(-62.0f, 1.0f, 0.0f, 0.0f);
    camera.rotate(-90.0f - longitude, 0.0f, 0.0f, 1.0f);
    view.SetViewMatrix(camera);
    // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
    bx::mtxProj(view.GetProjectionMatrix().data(), 30.0f, aspect, 1.0f, 20.0f,
                bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

void DrawGlobe(Renderer& renderer, View const& view, Fonts& fonts) {
    QVector3D const camera = view.ComputeViewPosition();
    renderer.DrawLines(view, MakeGraticule(camera), static_cast<float>(fonts.Pixels(1.0)));
    std::vector<Vertex> dots;
    for (City const& city : kCities) {
        QVector3D const place = PlaceOnGlobe(city.latitude, city.longitude);
        float const visibility = Visibility(place, camera);
        if (visibility <= 0.0f)
            continue;
        dots.push_back(Vertex(ToVec3(place), kAmber));

        // Beside the dot, and fading in where it comes over the horizon.
        double const gap = fonts.Pixels(city.alignment == Qt::AlignLeft ? 8.0 : -8.0);
        QPointF const pen = view.TransformToViewport(place) + QPointF(gap, 0.0);
        QColor color = kText;
        color.setAlphaF(std::min(visibility, 1.0f));
        renderer.RenderText(view, pen, city.name, fonts.OfSize(15), color, city.alignment | Qt::AlignVCenter);
    }
    renderer.DrawPoints(view, dots, static_cast<std::uint16_t>(fonts.Pixels(6.0)), std::nullopt,
                        Renderer::STATE_MARKER_OVERLAY);
    // Without a distance to the place, a label takes the place itself.
    renderer.RenderText(view, bx::Vec3(0.0f, 0.0f, 1.0f), "N", fonts.OfSize(13), kFaintText, Qt::AlignCenter);
}

// ---- Flat panels. Their world units are pixels of the window, with y down.

// The part of the panel that is drawn in.
QRectF Inside(View const& view) {
    QRectF const area = view.GetViewport();
    double const margin = 0.09 * std::min(area.width(), area.height());
    return area.adjusted(margin, margin, -margin, -margin);
}

// A cross at the middle of a pixel.
void DrawCross(Renderer& renderer, View const& view, QPointF const& at, double arm, double width) {
    auto const x = static_cast<float>(at.x());
    auto const y = static_cast<float>(at.y());
    auto const length = static_cast<float>(arm);
    Line const lines[] = {{{x - length, y, 0.0f}, {x + length, y, 0.0f}, kAmber},
                          {{x, y - length, 0.0f}, {x, y + length, 0.0f}, kAmber}};
    renderer.DrawLines(view, lines, static_cast<float>(width));
}

// A text for each pair of alignments. The crosses are where the pen is.
void DrawAlignments(Renderer& renderer, View const& view, Fonts& fonts) {
    struct Alignment {
        char const* name;
        Qt::AlignmentFlag flag;
    };
    constexpr Alignment columns[] = {
        {"Left", Qt::AlignLeft}, {"HCenter", Qt::AlignHCenter}, {"Right", Qt::AlignRight}};
    constexpr Alignment rows[] = {
        {"Top", Qt::AlignTop}, {"VCenter", Qt::AlignVCenter}, {"Bottom", Qt::AlignBottom}};
    QRectF const area = Inside(view);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            QPointF const pen(std::floor(area.left() + (0.07 + 0.43 * column) * area.width()) + 0.5,
                              std::floor(area.top() + (0.1 + 0.4 * row) * area.height()) + 0.5);
            DrawCross(renderer, view, pen, fonts.Pixels(14.0), fonts.Pixels(1.0));
            QString const text = QString("%1\n%2").arg(columns[column].name, rows[row].name);
            renderer.RenderText(view, pen, text, fonts.OfSize(14), kText,
                                columns[column].flag | rows[row].flag);
        }
    }
}

void DrawSizes(Renderer& renderer, View const& view, Fonts& fonts) {
    constexpr int sizes[] = {11, 12, 13, 14, 16, 18, 20, 24, 28, 32};
    QRectF const area = Inside(view);
    double textHeight = 0.0;
    for (int const size : sizes)
        textHeight += fonts.Pixels(size);
    double const gap = (area.height() - textHeight) / std::size(sizes);
    double y = area.top();
    for (int const size : sizes) {
        y += 0.5 * gap;
        QPointF const middle(area.left() + fonts.Pixels(44.0), y + 0.5 * fonts.Pixels(size));
        zx3D::FontHandle const font = fonts.OfSize(size);
        renderer.RenderText(view, middle, QString::number(size), font, kFaintText,
                            Qt::AlignRight | Qt::AlignVCenter);
        renderer.RenderText(view, middle + QPointF(fonts.Pixels(16.0), 0.0), "Δx = 0.25 mm", font, kText,
                            Qt::AlignLeft | Qt::AlignVCenter);
        y += fonts.Pixels(size) + 0.5 * gap;
    }
}

// The word distance in several scripts. Marks are joined to their letters, directions mix, and what the font
// lacks comes from the system's fonts.
void DrawScripts(Renderer& renderer, View const& view, Fonts& fonts) {
    struct Sample {
        char const* script;
        char const* text;
    };
    constexpr int rows = 6;
    constexpr Sample samples[2][rows] = {
        {{"Latin", "Khoa\u0309ng ca\u0301ch · odległość"},
         {"Greek", "Απόσταση"},
         {"Cyrillic", "Расстояние"},
         {"Arabic", "المسافة ٢٥ مم"},
         {"Hebrew", "מרחק"},
         {"Both directions", "Width (عرض) = 25 mm"}},
        {{"Armenian", "Հեռավորություն"},
         {"Georgian", "მანძილი"},
         {"Lao", "ໄລຍະຫ່າງ"},
         {"Japanese", "距離"},
         {"Drawing signs", "⌀ 25 ± 0.05  ∠ 45°"},
         {"Mathematics", "|x\u0304 − y\u0304| ≤ √2·σ"}},
    };
    QRectF const area = Inside(view);
    for (int column = 0; column < 2; ++column) {
        double const left = area.left() + column * 0.56 * area.width();
        for (int row = 0; row < rows; ++row) {
            Sample const& sample = samples[column][row];
            QPointF const pen(left, area.top() + (row + 0.5) * area.height() / rows);
            renderer.RenderText(view, pen, sample.script, fonts.OfSize(12), kFaintText, Qt::AlignVCenter);
            renderer.RenderText(view, pen + QPointF(fonts.Pixels(116.0), 0.0), sample.text, fonts.OfSize(18),
                                kText, Qt::AlignVCenter);
        }
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

// A view that clears its panel. Calls into it are drawn in their order, text as everything else.
View MakePanel(std::uint16_t viewId, QRect const& viewport) {
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161d28ff, 1.0f, 0};
    View view(viewId, clear, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    return view;
}

// Records a frame. False when there is nothing to draw into.
bool RecordFrame(zx3DQt::BGFXWindow& window, Fonts& fonts, float seconds) {
    Renderer& renderer = window.GetRenderer();
    if (!renderer.StartFrame(window.GetFrameBuffer()))
        return false;                         // the window has no area now
    renderer.SetModelTransform(QMatrix4x4()); // transforms are those of one frame
    fonts.SetPixelRatio(window.GetPixelRatio());

    // bgfx draws its views in the order of their ids: the sheet first, then the panels on it.
    View sheet(0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x0e131aff, 1.0f, 0});
    sheet.SetViewport(window.GetViewport());
    sheet.Submit(window.GetFrameBuffer());
    bgfx::touch(sheet);

    QRect const cells[] = {{0, 0, 2, 2}, {2, 0, 1, 1}, {2, 1, 1, 2}, {0, 2, 2, 1}};
    std::vector<View> panels;
    for (QRect const& cell : cells) {
        auto const viewId = static_cast<std::uint16_t>(panels.size() + 1);
        panels.push_back(MakePanel(viewId, PanelRect(window.GetViewport(), cell)));
    }
    SetPerspective(panels[0], seconds);
    for (View const& panel : panels)
        panel.Submit(window.GetFrameBuffer());
    DrawGlobe(renderer, panels[0], fonts);
    DrawAlignments(renderer, panels[1], fonts);
    DrawSizes(renderer, panels[2], fonts);
    DrawScripts(renderer, panels[3], fonts);
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
        window.setTitle("zx3DQt: labels");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(1100, 750);
        window.setMinimumSize(QSize(1060, 700)); // below, texts touch each other
        Fonts fonts;
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (RecordFrame(window, fonts, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { RecordFrame(window, fonts, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
