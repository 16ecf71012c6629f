// Texts drawn with the library's program for text, by hand.
#pragma once

#include "runner/Floor.h"
#include "workloads/ShortTextFont.h"

#include <QColor>

#include <cstddef>
#include <vector>

namespace zarvex::benchmarks {

class TextByHand {
public:
    /// Of texts with at most so many glyphs.
    explicit TextByHand(std::size_t mostGlyphs);
    ~TextByHand();

    TextByHand(TextByHand const&) = delete;
    TextByHand& operator=(TextByHand const&) = delete;

    /// `x` and `y`: the text's top left, pixels.
    void Submit(bgfx::ViewId view, float x, float y, QColor const& color,
                std::vector<PlacedGlyph> const& glyphs, bgfx::TextureHandle page) const;

    /// What a glyph takes of a vertex buffer.
    static constexpr std::size_t kBytesPerGlyph = 64;

private:
    bgfx::VertexLayout m_layout;
    bgfx::IndexBufferHandle m_indices;
    bgfx::UniformHandle m_sampler = bgfx::createUniform("s_glyph_atlas", bgfx::UniformType::Sampler);
    bgfx::ProgramHandle m_program = Program("vs_text", "fs_text");
};

} // namespace zarvex::benchmarks
