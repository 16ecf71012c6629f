// What annotations consist of until they are drawn.
#pragma once

#include <zx3D/Annotations.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::zx3D {

/// A corner of a glyph or a shape, as it is uploaded.
struct AnnotationVertex {
    static constexpr float kSteps = 16.0f; ///< of texels and pixels; vs_annotation knows it too

    float x = 0.0f; ///< pixels of the target
    float y = 0.0f;
    float depth = 0.0f;
    /// Of a glyph: its texel, -32767 and 0. Of a shape: the place from its middle, and how far it reaches
    /// there, along and across. In steps.
    std::array<std::int16_t, 4> shape{};
    std::array<std::uint8_t, 4> color{};
};
static_assert(sizeof(AnnotationVertex) == 24, "uploaded as it stands");

using AnnotationQuad = std::array<AnnotationVertex, 4>;

/// A text with its place.
struct AnnotationText {
    TextLayout layout;
    PicturePlace topLeft;
    PictureDirection direction;
    float alignment = 0.0f;
    std::uint32_t rgba = 0;
    std::size_t shapesBefore = 0; ///< how many shapes were added before it
};

struct AnnotationItems {
    std::vector<AnnotationQuad> shapes;
    std::vector<AnnotationText> texts;
};

/// The colour as the GPU reads it.
inline std::array<std::uint8_t, 4> ToBytes(std::uint32_t rgba) {
    return {static_cast<std::uint8_t>(rgba >> 24), static_cast<std::uint8_t>(rgba >> 16),
            static_cast<std::uint8_t>(rgba >> 8), static_cast<std::uint8_t>(rgba)};
}

} // namespace zarvex::zx3D
