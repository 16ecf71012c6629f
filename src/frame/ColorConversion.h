// From Qt's colours to the renderer's.
#pragma once

#include <zx3D/Color.h>

#include <QColor>

#include <bit>
#include <cstdint>

namespace zarvex::zx3DQt {

/// The colour with each 8-bit channel times 0.003921569 in 32-bit floats (a multiplication: not quite the
/// quotient by 255). Nothing is clamped.
inline zx3D::Color QColorToColor(QColor const& color) {
    constexpr float perStep = 0.003921569f;
    QRgb const rgba = color.rgba();
    return {static_cast<float>(qRed(rgba)) * perStep, static_cast<float>(qGreen(rgba)) * perStep,
            static_cast<float>(qBlue(rgba)) * perStep, static_cast<float>(qAlpha(rgba)) * perStep};
}

/// The colour as bgfx's clear colour, 0xRRGGBBAA.
inline std::uint32_t QColorToClearColor(QColor const& color) {
    return std::rotl(color.rgba(), 8);
}

} // namespace zarvex::zx3DQt
