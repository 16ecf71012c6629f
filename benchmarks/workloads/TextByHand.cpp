// A rectangle for each glyph, and one submission for each text.
#include "workloads/TextByHand.h"

#include <cstdint>

namespace zarvex::benchmarks {

namespace {

struct Vertex {
    float x, y;
    std::int16_t u, v; // sixteenths of a texel
    std::uint8_t color[4];
};
static_assert(4 * sizeof(Vertex) == TextByHand::kBytesPerGlyph);

/// What all texts share.
bgfx::IndexBufferHandle CreateIndices(std::size_t glyphs) {
    bgfx::Memory const* const memory =
        bgfx::alloc(static_cast<std::uint32_t>(6 * glyphs * sizeof(std::uint16_t)));
    auto* index = reinterpret_cast<std::uint16_t*>(memory->data);
    for (std::size_t first = 0; first < 4 * glyphs; first += 4) {
        for (std::size_t const corner : {0, 1, 2, 2, 3, 0})
            *index++ = static_cast<std::uint16_t>(first + corner);
    }
    return bgfx::createIndexBuffer(memory);
}

} // namespace

TextByHand::TextByHand(std::size_t mostGlyphs) : m_indices(CreateIndices(mostGlyphs)) {
    m_layout.begin()
        .add(bgfx::Attrib::Position, 2, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Int16, true)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, true)
        .end();
}

TextByHand::~TextByHand() {
    bgfx::destroy(m_indices);
    bgfx::destroy(m_sampler);
}

void TextByHand::Submit(bgfx::ViewId view, float x, float y, QColor const& color,
                        std::vector<PlacedGlyph> const& glyphs, bgfx::TextureHandle page) const {
    bgfx::TransientVertexBuffer buffer;
    auto const count = static_cast<std::uint32_t>(glyphs.size());
    bgfx::allocTransientVertexBuffer(&buffer, 4 * count, m_layout);
    QRgb const rgb = color.rgb();
    auto const red = static_cast<std::uint8_t>(qRed(rgb));
    auto const green = static_cast<std::uint8_t>(qGreen(rgb));
    auto const blue = static_cast<std::uint8_t>(qBlue(rgb));
    auto* vertices = reinterpret_cast<Vertex*>(buffer.data);
    for (PlacedGlyph const& glyph : glyphs) {
        auto const u0 = static_cast<std::int16_t>(glyph.u * 16);
        auto const v0 = static_cast<std::int16_t>(glyph.v * 16);
        auto const u1 = static_cast<std::int16_t>(u0 + static_cast<int>(glyph.right - glyph.left) * 16);
        auto const v1 = static_cast<std::int16_t>(v0 + static_cast<int>(glyph.bottom - glyph.top) * 16);
        vertices[0] = {x + glyph.left, y + glyph.top, u0, v0, {red, green, blue, 255}};
        vertices[1] = {x + glyph.right, y + glyph.top, u1, v0, {red, green, blue, 255}};
        vertices[2] = {x + glyph.right, y + glyph.bottom, u1, v1, {red, green, blue, 255}};
        vertices[3] = {x + glyph.left, y + glyph.bottom, u0, v1, {red, green, blue, 255}};
        vertices += 4;
    }
    bgfx::setState(BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                   BGFX_STATE_BLEND_FUNC(BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA));
    bgfx::setTexture(0, m_sampler, page);
    bgfx::setVertexBuffer(0, &buffer);
    bgfx::setIndexBuffer(m_indices, 0, 6 * count);
    bgfx::submit(view, m_program);
}

} // namespace zarvex::benchmarks
