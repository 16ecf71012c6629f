// Submitting texts to bgfx.
#pragma once

#include "ShapedText.h"
#include "TextQuads.h"

#include <zx3D/Annotations.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <optional>
#include <span>

namespace zarvex::zx3D {

/// How a text is turned.
struct TextTurn {
    float x = 0.0f; ///< what it is turned about, pixels of the target
    float y = 0.0f;
    PictureDirection direction; ///< of its lines
};

/// Where a text goes and how it looks.
struct TextAppearance {
    std::int32_t left = 0; ///< of the block, pixels of the target
    std::int32_t top = 0;
    float horizontal = 0.0f; ///< each line's alignment within the block
    std::uint32_t rgba = 0;
    std::optional<TextTurn> turn{}; ///< afterwards
};

/// How far a line is moved within its block, whole pixels, when it is aligned: 0 at the left, 1 at the right.
std::int32_t LineShift(ShapedText const& text, std::uint32_t line, float horizontal);

/// Owns what all texts of a context's run are drawn with, from the first one on.
///
/// Needs a running context.
class TextRenderer {
public:
    /// Creates the resources, unless it was tried before. False when they are not there.
    bool Start();

    /// Once it was started.
    /// @{
    bgfx::UniformHandle GetSampler() const { return m_sampler.Get(); }
    bgfx::IndexBufferHandle GetIndices() const { return m_indices.Get(); }
    /// @}

    /// Submits a text and uses its pages. False when the frame's transient space is used up; what is left is
    /// then not drawn.
    bool Draw(ShapedText const& text, TextQuads const& quads, TextAppearance const& appearance,
              GlyphAtlas& atlas, bgfx::ViewId view, std::uint32_t depth) const;

private:
    bool DrawQuads(ShapedText const& text, std::span<TextQuad const> quads, TextAppearance const& appearance,
                   bgfx::TextureHandle page, bgfx::ViewId view, std::uint32_t depth) const;

    bool m_isTried = false;
    bool m_isReady = false;
    bgfx::ProgramHandle m_program = BGFX_INVALID_HANDLE; // the program factory's
    Owned<bgfx::UniformHandle> m_sampler;
    Owned<bgfx::IndexBufferHandle> m_indices;
    bgfx::VertexLayout m_layout;
};

} // namespace zarvex::zx3D
