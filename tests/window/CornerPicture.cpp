// Drawing and recognising the picture.
#include "CornerPicture.h"

#include <zx3D/Vertex.h>

#include <QMatrix4x4>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

namespace zarvex::testing {

namespace {

constexpr int kMarkExtent = 12; // pixels

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

constexpr float kRampBlue = 0.2f; // red and green grow from 0 to 1, rightwards and downwards

QRect PlaceOf(Mark const& mark, QSize size) {
    return {mark.right ? size.width() - kMarkExtent : 0, mark.bottom ? size.height() - kMarkExtent : 0,
            kMarkExtent, kMarkExtent};
}

QRect RampPlace(QSize size) {
    return {size.width() / 8, size.height() / 4, size.width() / 4, size.height() / 8};
}

zx3D::Color ToColor(QRgb color) {
    return {static_cast<float>(qRed(color)) / 255.0f, static_cast<float>(qGreen(color)) / 255.0f,
            static_cast<float>(qBlue(color)) / 255.0f, 1.0f};
}

/// A rectangle, with the colours of its corners from the top left one clockwise.
void DrawRect(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view, QRectF const& place,
              std::array<zx3D::Color, 4> const& colors) {
    auto const left = static_cast<float>(place.left());
    auto const top = static_cast<float>(place.top());
    auto const right = static_cast<float>(place.right());
    auto const bottom = static_cast<float>(place.bottom());
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    Vertex const vertices[] = {Vertex({left, top, 0.0f}, colors[0]), Vertex({right, top, 0.0f}, colors[1]),
                               Vertex({right, bottom, 0.0f}, colors[2]),
                               Vertex({left, bottom, 0.0f}, colors[3])};
    std::uint16_t const indices[] = {0, 1, 2, 0, 2, 3};
    renderer.DrawTriangles(view, vertices, indices);
}

QRgb RampColor(QRect const& place, int x, int y) {
    auto const part = [](int begin, int extent, int position) {
        return static_cast<int>(255.0 * (position - begin + 0.5) / extent + 0.5);
    };
    return qRgb(part(place.left(), place.width(), x), part(place.top(), place.height(), y),
                static_cast<int>(255.0 * kRampBlue + 0.5));
}

template<typename Function>
void ForEachPixel(QImage& image, QRect const& rect, Function colorOf) {
    QRect const inside = rect & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = inside.left(); x <= inside.right(); ++x)
            line[x] = colorOf(x, y);
    }
}

bool AreClose(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= 1 && std::abs(qGreen(a) - qGreen(b)) <= 1 &&
           std::abs(qBlue(a) - qBlue(b)) <= 1;
}

std::string TextOf(QSize size) {
    return std::to_string(size.width()) + " x " + std::to_string(size.height());
}

std::string FindDifferenceIn(QRect const& rect, QImage const& actual, QImage const& expected) {
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            if (!AreClose(actual.pixel(x, y), expected.pixel(x, y)))
                return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") of " +
                       TextOf(actual.size()) + " is " + QColor(actual.pixel(x, y)).name().toStdString() +
                       " instead of " + QColor(expected.pixel(x, y)).name().toStdString();
        }
    }
    return {};
}

} // namespace

bool RecordCornerPicture(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer,
                         QRect const& viewport, QColor const& color, bgfx::ViewId viewId) {
    if (!renderer.StartFrame(frameBuffer))
        return false;
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, color.rgb() << 8 | 0xff,
                                             1.0f, 0};
    zx3DQt::BGFXViewContext view(viewId, clear, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    view.SetOrthoProjectionFromViewport(-1.0f, 1.0f, 0.0f);
    view.Submit(frameBuffer);
    renderer.SetModelTransform(QMatrix4x4());
    DrawRect(renderer, view, RampPlace(viewport.size()),
             {{{0.0f, 0.0f, kRampBlue, 1.0f},
               {1.0f, 0.0f, kRampBlue, 1.0f},
               {1.0f, 1.0f, kRampBlue, 1.0f},
               {0.0f, 1.0f, kRampBlue, 1.0f}}});
    for (Mark const& mark : kMarks) {
        zx3D::Color const markColor = ToColor(mark.color);
        DrawRect(renderer, view, PlaceOf(mark, viewport.size()),
                 {{markColor, markColor, markColor, markColor}});
    }
    return true;
}

QImage CornerPicture(QSize size, QColor const& color) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QRect const ramp = RampPlace(size);
    ForEachPixel(image, ramp, [&](int x, int y) { return RampColor(ramp, x, y); });
    for (Mark const& mark : kMarks)
        ForEachPixel(image, PlaceOf(mark, size), [&](int, int) { return mark.color; });
    return image;
}

std::string FindDifference(QImage const& image, QSize size, QColor const& color, QRegion const& region) {
    if (image.size() != size)
        return "the image has " + TextOf(image.size()) + " pixels instead of " + TextOf(size);
    QImage const expected = CornerPicture(size, color);
    for (QRect const& rect : region& image.rect()) {
        if (std::string difference = FindDifferenceIn(rect, image, expected); !difference.empty())
            return difference;
    }
    return {};
}

std::string FindDifference(QImage const& image, QSize size, QColor const& color) {
    return FindDifference(image, size, color, QRegion(image.rect()));
}

} // namespace zarvex::testing
