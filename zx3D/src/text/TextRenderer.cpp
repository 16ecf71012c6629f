// Quads in transient vertices, an index buffer that all share.
#include "TextRenderer.h"

#include "AnnotationItems.h"

#include <zx3D/ProgramFactory.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace zarvex::zx3D {

namespace {

struct TextVertex {
    float x; // pixels of the target
    float y;
    std::int16_t u; // 1/16 texels
    std::int16_t v;
    std::array<std::uint8_t, 4> color;
};
static_assert(sizeof(TextVertex) == 16, "uploaded as it stands");

constexpr std::uint32_t kVerticesPerQuad = 4;
constexpr std::uint32_t kIndicesPerQuad = 6;
constexpr std::uint32_t kQuadsPerDraw = 65536 / kVerticesPerQuad; // what 16-bit indices reach

// The fragment shader multiplies the colour by its alpha.
//
// In a view of the default mode bgfx orders draws by how they blend, then by program, then by depth. A source
// factor of one counts among the last to be drawn, like the usual blending by alpha. Among those the youngest
// program comes last: this one, created by the first text that is submitted, when a renderer has long created
// its own. (An alpha reference would seem to order draws even later, but bgfx's two bits for it overflow, and
// it would come first.)
constexpr std::uint64_t kState = BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                                 BGFX_STATE_BLEND_FUNC(BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA);

bgfx::VertexLayout MakeLayout() {
    constexpr bool isNormalized = true;
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::Position, 2, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Int16, isNormalized)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, isNormalized)
        .end();
    return layout;
}

Owned<bgfx::IndexBufferHandle> CreateIndices() {
    constexpr std::uint32_t corners[kIndicesPerQuad] = {0, 1, 2, 2, 3, 0};
    bgfx::Memory const* const memory = bgfx::alloc(kQuadsPerDraw * kIndicesPerQuad * sizeof(std::uint16_t));
    auto* index = reinterpret_cast<std::uint16_t*>(memory->data);
    for (std::uint32_t quad = 0; quad < kQuadsPerDraw; ++quad) {
        for (std::uint32_t const corner : corners)
            *index++ = static_cast<std::uint16_t>(quad * kVerticesPerQuad + corner);
    }
    return Owned(bgfx::createIndexBuffer(memory));
}

/// Of what is in sight, both summands are whole numbers within 2^24, which floats hold exactly.
void WriteQuad(TextQuad const& quad, float left, float top, std::array<std::uint8_t, 4> const& color,
               TextVertex* vertices) {
    for (std::size_t i = 0; i < kVerticesPerQuad; ++i) {
        TextQuad::Corner const& corner = quad.corners[i];
        vertices[i] = {left + corner.x, top + corner.y, corner.u, corner.v, color};
    }
}

/// Of a turned text: interpolation between a glyph's outer pixels and the blank ones around it reaches half a
/// pixel beyond.
void WriteTurnedQuad(TextQuad const& quad, float left, float top, TextTurn const& turn,
                     std::array<std::uint8_t, 4> const& color, TextVertex* vertices) {
    constexpr float signs[kVerticesPerQuad][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    constexpr int halfTexel = TextQuad::kTexelSteps / 2;
    float const dx = turn.direction.x;
    float const dy = turn.direction.y;
    for (std::size_t i = 0; i < kVerticesPerQuad; ++i) {
        TextQuad::Corner const& corner = quad.corners[i];
        auto const [right, down] = signs[i];
        float const x = left + corner.x - turn.x + 0.5f * right;
        float const y = top + corner.y - turn.y + 0.5f * down;
        vertices[i] = {turn.x + x * dx - y * dy, turn.y + x * dy + y * dx,
                       static_cast<std::int16_t>(corner.u + static_cast<int>(right) * halfTexel),
                       static_cast<std::int16_t>(corner.v + static_cast<int>(down) * halfTexel), color};
    }
}

std::size_t CountOnFirstPage(std::span<TextQuad const> quads) {
    std::uint16_t const page = quads.front().page;
    if (quads.back().page == page)
        return quads.size();
    auto const isOnPage = [page](TextQuad const& quad) { return quad.page == page; };
    return static_cast<std::size_t>(std::partition_point(quads.begin(), quads.end(), isOnPage) -
                                    quads.begin());
}

void WriteQuads(ShapedText const& text, std::span<TextQuad const> quads, TextAppearance const& appearance,
                TextVertex* vertices) {
    std::array<std::uint8_t, 4> const color = ToBytes(appearance.rgba);
    auto const top = static_cast<float>(appearance.top);
    while (!quads.empty()) {
        std::uint32_t const line = quads.front().line;
        auto const left = static_cast<float>(appearance.left + LineShift(text, line, appearance.horizontal));
        std::size_t count = 0;
        for (; count < quads.size() && quads[count].line == line; ++count) {
            if (appearance.turn)
                WriteTurnedQuad(quads[count], left, top, *appearance.turn, color, vertices);
            else
                WriteQuad(quads[count], left, top, color, vertices);
            vertices += kVerticesPerQuad;
        }
        quads = quads.subspan(count);
    }
}

} // namespace

std::int32_t LineShift(ShapedText const& text, std::uint32_t line, float horizontal) {
    if (text.lines.size() == 1)
        return 0; // as wide as the block
    std::int32_t const room = text.width - text.lines[line].width;
    double const shift = std::floor(double(horizontal) * room + 0.5);
    return static_cast<std::int32_t>(std::clamp<double>(shift, -kMaxTextExtent, kMaxTextExtent));
}

bool TextRenderer::Start() {
    if (!m_isTried) {
        m_isTried = true;
        m_program = ProgramFactory::Get()
                        .CreateProgram("vs_text", "fs_text")
                        .value_or(bgfx::ProgramHandle(BGFX_INVALID_HANDLE));
        m_sampler = Owned(bgfx::createUniform("s_glyph_atlas", bgfx::UniformType::Sampler));
        m_indices = CreateIndices();
        m_layout = MakeLayout();
        m_isReady = bgfx::isValid(m_program) && m_sampler && m_indices;
    }
    return m_isReady;
}

bool TextRenderer::Draw(ShapedText const& text, TextQuads const& quads, TextAppearance const& appearance,
                        GlyphAtlas& atlas, bgfx::ViewId view, std::uint32_t depth) const {
    std::span<TextQuad const> rest = quads.quads;
    while (!rest.empty()) {
        std::uint16_t const page = rest.front().page;
        std::size_t const count = std::min<std::size_t>(CountOnFirstPage(rest), kQuadsPerDraw);
        atlas.Use(page);
        if (!DrawQuads(text, rest.first(count), appearance, atlas.GetTexture(page), view, depth))
            return false;
        rest = rest.subspan(count);
    }
    return true;
}

bool TextRenderer::DrawQuads(ShapedText const& text, std::span<TextQuad const> quads,
                             TextAppearance const& appearance, bgfx::TextureHandle page, bgfx::ViewId view,
                             std::uint32_t depth) const {
    auto const count = static_cast<std::uint32_t>(quads.size());
    std::uint32_t const vertexCount = count * kVerticesPerQuad;
    if (bgfx::getAvailTransientVertexBuffer(vertexCount, m_layout) != vertexCount)
        return false;
    bgfx::TransientVertexBuffer buffer;
    bgfx::allocTransientVertexBuffer(&buffer, vertexCount, m_layout);
    WriteQuads(text, quads, appearance, reinterpret_cast<TextVertex*>(buffer.data));
    bgfx::setState(kState);
    if (appearance.turn)
        bgfx::setTexture(0, m_sampler.Get(), page, BGFX_SAMPLER_UVW_CLAMP); // interpolates
    else
        bgfx::setTexture(0, m_sampler.Get(), page);
    bgfx::setVertexBuffer(0, &buffer);
    bgfx::setIndexBuffer(m_indices.Get(), 0, count * kIndicesPerQuad);
    bgfx::submit(view, m_program, depth, BGFX_DISCARD_ALL);
    return true;
}

} // namespace zarvex::zx3D
