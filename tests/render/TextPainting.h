// Labels, drawn by the library and painted by hand.
#pragma once

#include <ReferenceText.h>

#include <bgfx/bgfx.h>

#include <QColor>
#include <QImage>

#include <cstdint>
#include <string>

namespace zarvex::testing {

/// A text in the default font.
struct TextLabel {
    std::string text;
    float x = 0.0f; ///< pixels of the target
    float y = 0.0f;
    int pixelSize = 14;
    QColor color = Qt::white;
    float horizontal = 0.0f;
    float vertical = 0.0f;
    std::int32_t depth = 0;
    float angle = 0.0f; ///< degrees
};

/// Submits the label into a view.
void Draw(TextLabel const& label, bgfx::ViewId view = 0);

/// Blends a line over an image, its first pen on `left` and `baseline`.
void Paint(QImage& image, ReferenceLine const& line, int left, int baseline, QColor const& color);

} // namespace zarvex::testing
