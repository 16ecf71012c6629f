// Drawing and recognising the marks.
#include "CornerWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPixmap>
#include <QScreen>

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace zarvex::testing {

namespace {

constexpr int kMarkExtent = 12; // pixels
constexpr int kPatienceSeconds = 20;

struct Mark {
    bool right;
    bool bottom;
    QRgb color;
};

constexpr std::array<Mark, 4> kMarks = {{
    {false, false, qRgb(255, 0, 0)},
    {true, false, qRgb(0, 255, 0)},
    {false, true, qRgb(0, 0, 255)},
    {true, true, qRgb(255, 255, 255)},
}};

zx3D::Color ToColor(QRgb color) {
    return {static_cast<float>(qRed(color)) / 255.0f, static_cast<float>(qGreen(color)) / 255.0f,
            static_cast<float>(qBlue(color)) / 255.0f, 1.0f};
}

QRect PlaceOf(Mark const& mark, QSize size) {
    return {mark.right ? size.width() - kMarkExtent : 0, mark.bottom ? size.height() - kMarkExtent : 0,
            kMarkExtent, kMarkExtent};
}

void DrawMark(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view, Mark const& mark) {
    QRectF const place = PlaceOf(mark, view.GetViewport().size());
    auto const left = static_cast<float>(place.left());
    auto const top = static_cast<float>(place.top());
    auto const right = static_cast<float>(place.right());
    auto const bottom = static_cast<float>(place.bottom());
    zx3D::Color const color = ToColor(mark.color);
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    Vertex const vertices[] = {Vertex({left, top, 0.0f}, color), Vertex({right, top, 0.0f}, color),
                               Vertex({right, bottom, 0.0f}, color), Vertex({left, bottom, 0.0f}, color)};
    std::uint16_t const indices[] = {0, 1, 2, 0, 2, 3};
    renderer.DrawTriangles(view, vertices, indices);
}

/// Empty when the image is the window's picture, else what differs.
std::string FindDifference(CornerWindow const& window, QImage const& image) {
    QSize const size = window.GetViewport().size();
    if (image.size() != size)
        return "the screen shows " + std::to_string(image.width()) + " x " + std::to_string(image.height()) +
               " pixels instead of " + std::to_string(size.width()) + " x " + std::to_string(size.height());
    auto const differs = [&image](QPoint point, QRgb expected) -> std::string {
        QRgb const actual = image.pixel(point);
        if (actual == expected)
            return {};
        return "pixel (" + std::to_string(point.x()) + ", " + std::to_string(point.y()) + ") is " +
               QColor(actual).name().toStdString() + " instead of " + QColor(expected).name().toStdString();
    };
    for (Mark const& mark : kMarks) {
        QRect const place = PlaceOf(mark, size);
        for (QPoint const point : {place.topLeft(), place.bottomRight()}) {
            if (std::string difference = differs(point, mark.color); !difference.empty())
                return difference;
        }
    }
    return differs(QRect(QPoint(), size).center(), window.GetColor().rgb());
}

} // namespace

CornerWindow::CornerWindow(QColor const& color, std::uint16_t viewId) : m_color(color), m_viewId(viewId) {
    resize(320, 240);
}

bool CornerWindow::RecordFrame() {
    zx3DQt::BGFXRenderer& renderer = GetRenderer();
    if (!renderer.StartFrame(GetFrameBuffer()))
        return false;
    zx3DQt::BGFXViewContext view(m_viewId, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH,
                                                                        m_color.rgb() << 8 | 0xff, 1.0f, 0});
    view.SetViewport(GetViewport());
    view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    view.Submit(GetFrameBuffer());
    renderer.SetModelTransform(QMatrix4x4());
    for (Mark const& mark : kMarks)
        DrawMark(renderer, view, mark);
    return true;
}

bool CornerWindow::PaintFrame() {
    if (!RecordFrame())
        return false;
    GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    return true;
}

bool WaitUntil(std::function<bool()> const& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > kPatienceSeconds * 1000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void ShowAndWait(CornerWindow& window) {
    window.show();
    EXPECT_TRUE(WaitUntil([&window] { return window.isExposed(); })) << "the window does not appear";
}

QImage GrabFromScreen(CornerWindow const& window) {
    QImage image =
        window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(1.0);
    return image;
}

void ExpectPicture(CornerWindow& window) {
    std::string difference = "nothing was painted";
    EXPECT_TRUE(WaitUntil([&] {
        if (!window.PaintFrame())
            return false;
        difference = FindDifference(window, GrabFromScreen(window));
        return difference.empty();
    })) << difference;
}

} // namespace zarvex::testing
