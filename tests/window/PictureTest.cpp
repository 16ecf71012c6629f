// Pictures with options, from each kind of target: their alpha, their pixel ratio and their samples.
#include "CornerPicture.h"
#include "CornerWidget.h"
#include "CornerWindow.h"

#include "harness/Trouble.h"
#include "render/ExactCoverage.h"
#include "render/ImageComparison.h"
#include "render/SharedRun.h"

#include <zx3D/Text.h>
#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXWindow.h>

#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <utility>

namespace zarvex::testing {

namespace {

using zx3DQt::PictureOptions;
using Line = zx3D::Line;
using Renderer = zx3DQt::BGFXRenderer;
using View = zx3DQt::BGFXViewContext;

/// Draws in device-independent pixels, y down, in the order of the calls.
using Scene = std::function<void(Renderer& renderer, View const& view, double pixelRatio)>;

/// Records a frame of the scene on a ground of one colour, 0xRRGGBBAA. A scene writes in its view id.
template<typename Target>
bool RecordScene(Target& target, std::uint32_t ground, double pixelRatio, Scene const& scene) {
    Renderer& renderer = target.GetRenderer();
    if (!renderer.StartFrame(target.GetFrameBuffer()))
        return false;
    View view(1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, ground, 1.0f, 0},
              bgfx::ViewMode::Sequential);
    view.SetViewport(target.GetViewport());
    QSizeF const size = QSizeF(target.GetViewport().size()) / pixelRatio;
    view.SetOrthoProjectionFromRect(QRectF(QPointF(), size), -1.0f, 1.0f, 0.0f);
    view.Submit(target.GetFrameBuffer());
    bgfx::touch(view.GetViewId());
    renderer.SetModelTransform(QMatrix4x4());
    scene(renderer, view, pixelRatio);
    return true;
}

template<typename Base>
class SceneWidget final : public Base {
public:
    SceneWidget(std::uint32_t ground, Scene scene) : m_ground(ground), m_scene(std::move(scene)) {}

    void paintEvent(QPaintEvent* event) override {
        Base::paintEvent(event);
        RecordScene(*this, m_ground, Base::GetPixelRatio(), m_scene);
    }

private:
    std::uint32_t m_ground;
    Scene m_scene;
};

using NativeWidget = SceneWidget<zx3DQt::BGFXNativeWidget>;
using OffscreenWidget = SceneWidget<zx3DQt::BGFXOffscreenWidget>;

QImage TakeFromWindow(PictureOptions const& options, std::uint32_t ground, Scene const& scene) {
    zx3DQt::BGFXWindow window;
    return window.RenderPicture(options,
                                [&](double pixelRatio) { RecordScene(window, ground, pixelRatio, scene); });
}

/// The picture, which is the same from each kind of target.
QImage Take(PictureOptions const& options, std::uint32_t ground, Scene const& scene) {
    QImage const picture = TakeFromWindow(options, ground, scene);
    EXPECT_EQ(NativeWidget(ground, scene).RenderPicture(options), picture) << "of a native widget";
    EXPECT_EQ(OffscreenWidget(ground, scene).RenderPicture(options), picture) << "of an off-screen widget";
    return picture;
}

zx3D::Color ToColor(double red, double green, double blue, double alpha) {
    return {static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue),
            static_cast<float>(alpha)};
}

void DrawRect(Renderer& renderer, View const& view, QRectF const& rect, zx3D::Color const& color,
              zx3DQt::BGFXRenderState state = Renderer::STATE_TRANSPARENT) {
    auto const corner = [&](QPointF point) {
        return zx3D::Vertex::Pos3fColorRGBA(
            {static_cast<float>(point.x()), static_cast<float>(point.y()), 0.0f}, color);
    };
    zx3D::Vertex::Pos3fColorRGBA const corners[] = {corner(rect.topLeft()), corner(rect.topRight()),
                                                    corner(rect.bottomLeft()), corner(rect.bottomRight())};
    std::uint16_t const indices[] = {0, 1, 2, 1, 3, 2};
    renderer.DrawTriangles(view, corners, indices, std::nullopt, state);
}

Line LineOf(QPointF start, QPointF end, zx3D::Color const& color) {
    return {{static_cast<float>(start.x()), static_cast<float>(start.y()), 0.0f},
            {static_cast<float>(end.x()), static_cast<float>(end.y()), 0.0f},
            color};
}

/// The four bytes of a pixel as they are.
std::array<int, 4> Bytes(QImage const& image, int x, int y) {
    uchar const* const pixel = image.constScanLine(y) + 4 * x;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

/// The largest difference of two images of one size, in steps of the bytes as they are.
int LargestDifference(QImage const& a, QImage const& b) {
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int i = 0; i < 4 * a.width(); ++i)
            largest = std::max(largest, std::abs(a.constScanLine(y)[i] - b.constScanLine(y)[i]));
    }
    return largest;
}

// Blended layers: two that overlap, and an opaque one over part of both.

constexpr QSize kLayersSize(48, 16);

void DrawLayers(Renderer& renderer, View const& view, double) {
    DrawRect(renderer, view, QRectF(0, 0, 32, 8), ToColor(1.0, 0.4, 0.0, 0.5));
    DrawRect(renderer, view, QRectF(8, 0, 16, 16), ToColor(0.0, 0.2, 1.0, 0.25));
    DrawRect(renderer, view, QRectF(16, 0, 4, 16), ToColor(0.8, 0.8, 0.8, 1.0), Renderer::STATE_OPAQUE);
}

/// The red, green, blue and alpha, multiplied by their alpha, of the layers at a place over a ground.
std::array<double, 4> LayersAt(int x, int y, std::array<double, 4> premultiplied) {
    auto const blend = [&](std::array<double, 4> const& color) {
        for (int i = 0; i < 4; ++i)
            premultiplied[i] = (i < 3 ? color[i] * color[3] : color[3]) + premultiplied[i] * (1.0 - color[3]);
    };
    if (x < 32 && y < 8)
        blend({1.0, 0.4, 0.0, 0.5});
    if (x >= 8 && x < 24)
        blend({0.0, 0.2, 1.0, 0.25});
    if (x >= 16 && x < 20)
        blend({0.8, 0.8, 0.8, 1.0});
    return premultiplied;
}

void ExpectLayers(QImage const& picture, std::array<double, 4> const& ground, bool isOpaque) {
    ASSERT_EQ(picture.size(), kLayersSize);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            std::array<double, 4> expected = LayersAt(x, y, ground);
            if (isOpaque)
                expected[3] = 1.0;
            for (std::size_t i = 0; i < 4; ++i)
                ASSERT_NEAR(Bytes(picture, x, y)[i], 255.0 * expected[i], 2.0)
                    << "channel " << i << " at " << x << ", " << y;
        }
    }
}

/// Everything that can be translucent or has smooth edges.
void DrawManyThings(Renderer& renderer, View const& view, double ratio) {
    DrawRect(renderer, view, QRectF(10, 10, 60, 40), ToColor(0.9, 0.3, 0.1, 0.6));
    DrawRect(renderer, view, QRectF(40, 30, 70, 40), ToColor(0.1, 0.5, 0.9, 0.3));
    std::vector const lines{LineOf({5, 70}, {115, 12}, ToColor(0.2, 0.9, 0.4, 0.7))};
    renderer.DrawLines(view, lines, static_cast<float>(5.0 * ratio), std::nullopt, std::nullopt,
                       Renderer::STATE_TRANSPARENT);
    zx3D::FontHandle const font = zx3D::LoadDefaultFont(18).value();
    renderer.RenderText(view, QPointF(20, 50), "Ag 0,25°", font, QColor(250, 240, 200, 160), Qt::AlignLeft);
    zx3D::DestroyFont(font);
}

/// How much of an area is white, in device-independent pixels.
double Ink(QImage const& image, QRectF const& area, double ratio) {
    double ink = 0.0;
    QRect const pixels = QRectF(area.topLeft() * ratio, area.size() * ratio).toRect();
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x)
            ink += qRed(image.pixel(x, y)) / 255.0;
    }
    return ink / (ratio * ratio);
}

/// The pixels of a row that are white, in part counted as such.
double WhitePixels(QImage const& image, int y, int left, int right) {
    double white = 0.0;
    for (int x = left; x < right; ++x)
        white += qRed(image.pixel(x, y)) / 255.0;
    return white;
}

constexpr QSize kSheet(240, 160); // device-independent pixels
constexpr int kWidths[] = {1, 2, 3, 5, 8};

int PlaceOfLine(std::size_t i) {
    return 15 + 20 * static_cast<int>(i);
}

constexpr QRectF kText(10, 100, 220, 40);
constexpr QRectF kPoints(130, 5, 100, 80);

/// Lines of all widths, points and text, as an application draws them that multiplies by the pixel ratio.
void DrawSheet(Renderer& renderer, View const& view, double ratio) {
    zx3D::Color const white = ToColor(1, 1, 1, 1);
    for (std::size_t i = 0; i < std::size(kWidths); ++i) {
        double const x = PlaceOfLine(i) + 0.5 * (kWidths[i] % 2);
        std::vector const line{LineOf({x, 10}, {x, 80}, white)};
        renderer.DrawLines(view, line, static_cast<float>(kWidths[i] * ratio));
    }
    std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
    for (int i = 0; i < 4; ++i)
        points.push_back({{140.5f + 20.0f * static_cast<float>(i), 30.5f, 0.0f}, white});
    renderer.DrawPoints(view, points, static_cast<std::uint16_t>(std::lround(7.0 * ratio)));
    zx3D::FontHandle const font =
        zx3D::LoadDefaultFont(static_cast<std::uint16_t>(std::lround(20.0 * ratio))).value();
    renderer.RenderText(view, kText.center() * ratio, "Width 0,25 mm", font, Qt::white, Qt::AlignCenter);
    zx3D::DestroyFont(font);
}

/// The smallest rectangle around what is not black.
QRect InkRect(QImage const& image, QRect const& area) {
    QRect ink;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (qRed(image.pixel(x, y)) > 100)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

using PictureTest = SharedRunTest;

// Alpha.

TEST_P(PictureTest, OverATransparentGroundBlendedLayersHaveTheirColoursTimesTheirAlpha) {
    for (std::uint32_t const samples : {1u, 4u}) {
        QImage const picture =
            Take({.size = kLayersSize, .pixelRatio = 1.0, .sampleCount = samples, .hasAlpha = true},
                 0x00000000, DrawLayers);
        ASSERT_EQ(picture.format(), QImage::Format_RGBA8888_Premultiplied);
        ExpectLayers(picture, {0.0, 0.0, 0.0, 0.0}, false);
    }
}

TEST_P(PictureTest, OverATranslucentGroundTheyHaveTooAndOverAnOpaqueOneThereAreNoHoles) {
    PictureOptions const options{.size = kLayersSize, .pixelRatio = 1.0, .hasAlpha = true};
    ExpectLayers(Take(options, 0x33008080, DrawLayers), {0.2, 0.0, 128 / 255.0, 128 / 255.0}, false);
    ExpectLayers(Take(options, 0x336699ff, DrawLayers), {0.2, 0.4, 0.6, 1.0}, false);
}

TEST_P(PictureTest, WithoutAlphaEveryPixelIsOpaqueInTheColourOfAWindow) {
    PictureOptions const options{.size = kLayersSize, .pixelRatio = 1.0};
    QTemporaryDir const folder;
    for (int const alpha : {0, 128, 255}) {
        QImage const picture = Take(options, 0x33669900u | static_cast<std::uint32_t>(alpha), DrawLayers);
        EXPECT_FALSE(picture.hasAlphaChannel());
        ExpectLayers(picture, {0.2, 0.4, 0.6, alpha / 255.0}, true);
        QString const path = folder.filePath("picture.png");
        ASSERT_TRUE(picture.save(path));
        QImage const saved(path);
        EXPECT_FALSE(saved.hasAlphaChannel());
        EXPECT_TRUE(Matches(saved, picture, kExact));
    }
}

TEST_P(PictureTest, PixmapsHaveTheAlphaThatBgfxBlendsAsBefore) {
    OffscreenWidget widget(0x336699ff, DrawLayers);
    QImage const pixmap = widget.RenderPixmap(kLayersSize).toImage();
    EXPECT_NEAR(qAlpha(pixmap.pixel(2, 2)), 191, 1) << "0.5² + 1 · 0.5";
    EXPECT_EQ(qAlpha(pixmap.pixel(40, 2)), 255);
}

TEST_P(PictureTest, WhatIsTakenWithAlphaLooksOverAnotherPictureAsDrawnOverIt) {
    for (std::uint32_t const samples : {1u, 4u}) {
        PictureOptions options{.size = QSize(240, 160), .pixelRatio = 2.0, .sampleCount = samples};
        QImage const drawnOver = Take(options, 0x405060ff, DrawManyThings);
        options.hasAlpha = true;
        QImage const layer = Take(options, 0x00000000, DrawManyThings);
        QImage laidOver(options.size, QImage::Format_RGBX8888);
        laidOver.fill(QColor(0x40, 0x50, 0x60));
        QPainter painter(&laidOver);
        painter.drawImage(laidOver.rect(), layer, layer.rect());
        painter.end();
        EXPECT_LE(LargestDifference(laidOver, drawnOver), 4) << samples; // of rounding at each layer
        EXPECT_GT(CountDifferences(drawnOver, FilledImage(options.size, QColor(0x40, 0x50, 0x60))), 5000);
    }
}

// Pixel ratio.

TEST_P(PictureTest, WidthsPointsAndFontsFollowThePixelRatio) {
    constexpr double ratio = 6.25;
    QImage const small = Take({.size = kSheet, .pixelRatio = 1.0, .sampleCount = 4}, 0x000000ff, DrawSheet);
    QImage const large =
        Take({.size = kSheet * ratio, .pixelRatio = ratio, .sampleCount = 4}, 0x000000ff, DrawSheet);
    ASSERT_EQ(large.size(), QSize(1500, 1000));
    EXPECT_EQ(large.devicePixelRatio(), ratio);
    for (std::size_t i = 0; i < std::size(kWidths); ++i) {
        int const place = PlaceOfLine(i);
        EXPECT_NEAR(WhitePixels(small, 45, place - 9, place + 10), kWidths[i], 0.01);
        auto const left = static_cast<int>((place - 9) * ratio);
        auto const right = static_cast<int>((place + 10) * ratio);
        EXPECT_NEAR(WhitePixels(large, 281, left, right), std::round(kWidths[i] * ratio), 0.6);
    }
    EXPECT_NEAR(Ink(large, kPoints, ratio), Ink(small, kPoints, 1.0), 0.05 * Ink(small, kPoints, 1.0));
    EXPECT_NEAR(Ink(large, kText, ratio), Ink(small, kText, 1.0), 0.1 * Ink(small, kText, 1.0));
    QRect const smallText = InkRect(small, kText.toRect());
    QRect const largeText = InkRect(large, QRectF(kText.topLeft() * ratio, kText.size() * ratio).toRect());
    EXPECT_GT(smallText.width(), 100);
    EXPECT_NEAR(largeText.width() / ratio, smallText.width(), 3.0);
    EXPECT_NEAR(largeText.height() / ratio, smallText.height(), 1.5);

    QImage const scaled = large.scaled(kSheet, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    EXPECT_LE(Compare(scaled.convertToFormat(QImage::Format_RGB32), small).mean, 3.0);
}

// Samples.

TEST_P(PictureTest, EdgesAreAsSmoothAsThePictureAsksFor) {
    ConvexPolygon const triangle = {{10, 140}, {225, 100}, {80, 8}};
    Scene const scene = [&](Renderer& renderer, View const& view, double) {
        std::vector<zx3D::Vertex::Pos3fColorRGBA> corners;
        for (QPointF const& corner : triangle)
            corners.push_back({{static_cast<float>(corner.x()), static_cast<float>(corner.y()), 0.0f},
                               {1.0f, 1.0f, 1.0f, 1.0f}});
        std::uint16_t const indices[] = {0, 1, 2};
        renderer.DrawTriangles(view, corners, indices);
    };
    auto const errorWith = [&](std::uint32_t samples) {
        return CompareCoverage(
            Take({.size = kSheet, .pixelRatio = 1.0, .sampleCount = samples}, 0x000000ff, scene), {triangle});
    };
    EXPECT_LE(errorWith(4).meanOnEdges, 1.0 / 8.0);
    EXPECT_EQ(errorWith(4).wrongElsewhere, 0);
    EXPECT_GT(errorWith(1).meanOnEdges, 1.0 / 8.0);
}

// Whatever the target's state.

TEST_P(PictureTest, AWindowTakesThemNeverShownShownMinimisedHiddenAndClosed) {
    CornerWindow window(Qt::darkCyan);
    auto const expectPicture = [&window](char const* state) {
        QSize const size(123, 77);
        QImage const picture = window.RenderPicture({.size = size}, [&](double) { window.RecordFrame(); });
        EXPECT_EQ(FindDifference(picture, size, window.GetColor()), "") << state;
    };
    expectPicture("never shown");
    window.resize(320, 240);
    ShowAndWait(window);
    expectPicture("shown, before its first frame");
    ExpectPicture(window);
    expectPicture("shown");
    EXPECT_EQ(FindDifference(GrabFromScreen(window), QSize(320, 240) * window.devicePixelRatio(),
                             window.GetColor()),
              "")
        << "the screen shows what it showed";
    window.showMinimized();
    WaitUntil([&window] { return !window.isExposed(); });
    expectPicture("minimised");
    window.showNormal();
    ExpectPicture(window);
    window.hide();
    expectPicture("hidden");
    ShowAndWait(window);
    ExpectPicture(window);
    window.close();
    expectPicture("closed");
}

TEST_P(PictureTest, AWidgetTakesThemNeverShownShownAndHiddenAndPaintsNothingMore) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
        auto const expectPicture = [&widget](char const* state) {
            QSize const size(123, 77);
            int const paints = widget->CountPaints();
            EXPECT_EQ(FindDifference(widget->TakePicture({.size = size}), size, widget->GetColor()), "")
                << state;
            AwaitQuiet(*widget);
            EXPECT_EQ(widget->CountPaints(), paints + 1) << state;
        };
        expectPicture("never shown");
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
        AwaitQuiet(*widget);
        expectPicture("shown");
        ExpectShown(*widget);
        widget->AsQWidget().hide();
        expectPicture("hidden");
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
    });
}

TEST_P(PictureTest, WhatIsTooLargeIsAWarning) {
    zx3DQt::BGFXWindow window;
    auto const largest = static_cast<int>(bgfx::getCaps()->limits.maxTextureSize);
    for (QSize const size : {QSize(0, 10), QSize(10, -1), QSize(largest + 1, 10), QSize(10, 100'000)}) {
        bool isCalled = false;
        EXPECT_TRUE(window.RenderPicture({.size = size}, [&](double) { isCalled = true; }).isNull());
        EXPECT_FALSE(isCalled);
        std::vector<std::string> const troubles = Trouble::Take();
        ASSERT_EQ(troubles.size(), 1u);
        EXPECT_NE(troubles[0].find("cannot be rendered"), std::string::npos) << troubles[0];
    }
}

ZX3D_INSTANTIATE_BACKENDS(PictureTest);

} // namespace zarvex::testing
