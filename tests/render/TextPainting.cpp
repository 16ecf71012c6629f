// Blending coverage in the colour, channel by channel.
#include "TextPainting.h"

#include "RenderTest.h"

#include <zx3D/Text.h>

#include <cmath>

namespace zarvex::testing {

namespace {

int Blend(int below, int color, double alpha) {
    return static_cast<int>(std::floor(color * alpha + below * (1.0 - alpha) + 0.5));
}

void BlendPixel(QImage& image, QPoint const& place, QColor const& color, int coverage) {
    if (!image.valid(place))
        return;
    QColor const below = image.pixelColor(place);
    double const alpha = color.alpha() / 255.0 * coverage / 255.0;
    image.setPixelColor(
        place, QColor(Blend(below.red(), color.red(), alpha), Blend(below.green(), color.green(), alpha),
                      Blend(below.blue(), color.blue(), alpha), Blend(below.alpha(), 255, alpha)));
}

} // namespace

void Draw(TextLabel const& label, bgfx::ViewId view) {
    zx3D::FontHandle const font = zx3D::LoadDefaultFont(static_cast<std::uint16_t>(label.pixelSize)).value();
    zx3D::TextBufferHandle const text = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, font);
    zx3D::SetPenPosition(text, label.x, label.y);
    zx3D::SetTextColor(text, ToColor(label.color).ToRGBA());
    zx3D::AppendText(text, label.text.c_str());
    zx3D::AlignText(text, label.horizontal, label.vertical);
    zx3D::SetTextAngle(text, label.angle);
    zx3D::SubmitTextBuffer(text, view, label.depth);
    zx3D::DestroyTextBuffer(text);
    zx3D::DestroyFont(font);
}

void Paint(QImage& image, ReferenceLine const& line, int left, int baseline, QColor const& color) {
    for (ReferenceGlyph const& glyph : line.glyphs) {
        for (int y = 0; y < glyph.height; ++y) {
            for (int x = 0; x < glyph.width; ++x)
                BlendPixel(image, {left + glyph.x + x, baseline + glyph.y + y}, color,
                           glyph.coverage[static_cast<std::size_t>(y * glyph.width + x)]);
        }
    }
}

} // namespace zarvex::testing
