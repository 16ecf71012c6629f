// From Qt's colours to the renderer's.
#pragma once

#include <zx3D/Color.h>

#include <QColor>

#include <cstdint>

namespace zarvex::zx3DQt {

/// The colour with each 8-bit channel times 0.003921569 in 32-bit floats (a multiplication: not quite the
/// quotient by 255). Nothing is clamped.
inline zx3D::Color QColorToColor(QColor const& color) {
    constexpr float perStep = 0.003921569f;
    // The three at once. Of an extended RGB colour, alpha() and rgba() round alpha differently.
    QRgb const rgb = color.rgba();
    return {static_cast<float>(qRed(rgb)) * perStep, static_cast<float>(qGreen(rgb)) * perStep,
            static_cast<float>(qBlue(rgb)) * perStep, static_cast<float>(color.alpha()) * perStep};
}

/// The colour as bgfx's clear colour, 0xRRGGBBAA.
inline std::uint32_t QColorToClearColor(QColor const& color) {
    return static_cast<std::uint32_t>(color.red()) << 24 | static_cast<std::uint32_t>(color.green()) << 16 |
           static_cast<std::uint32_t>(color.blue()) << 8 | static_cast<std::uint32_t>(color.alpha());
}

} // namespace zarvex::zx3DQt
