// All quads in one piece of the frame's transient vertices, and a draw for each stretch of them on one page.
#include "AnnotationRenderer.h"

#include "ShapeCache.h"

#include <zx3D/ProgramFactory.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace zarvex::zx3D {

namespace {

constexpr std::uint32_t kVerticesPerQuad = 4;
constexpr std::uint32_t kIndicesPerQuad = 6;
constexpr std::uint32_t kQuadsPerDraw = 65536 / kVerticesPerQuad;
constexpr std::int16_t kIsGlyph = -std::numeric_limits<std::int16_t>::max();

// As texts are blended; the fragment shader multiplies the colour by its alpha.
constexpr std::uint64_t kState = BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                                 BGFX_STATE_BLEND_FUNC(BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA);

bgfx::VertexLayout MakeLayout() {
    constexpr bool isNormalized = true;
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord0, 4, bgfx::AttribType::Int16, isNormalized)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, isNormalized)
        .end();
    return layout;
}

/// A glyph's bitmap with half a pixel around it, which the interpolation reaches.
AnnotationQuad PlaceGlyph(TextQuad const& glyph, AnnotationText const& text, float lineShift,
                          std::array<std::uint8_t, 4> const& color) {
    constexpr float signs[kVerticesPerQuad][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    constexpr int halfTexel = TextQuad::kTexelSteps / 2;
    AnnotationQuad quad;
    for (std::size_t i = 0; i < kVerticesPerQuad; ++i) {
        TextQuad::Corner const& corner = glyph.corners[i];
        auto const [right, down] = signs[i];
        float const x = lineShift + corner.x + 0.5f * right;
        float const y = corner.y + 0.5f * down;
        quad[i] = {text.topLeft.x + x * text.direction.x - y * text.direction.y,
                   text.topLeft.y + x * text.direction.y + y * text.direction.x,
                   text.topLeft.depth + x * text.direction.depth,
                   {static_cast<std::int16_t>(corner.u + static_cast<int>(right) * halfTexel),
                    static_cast<std::int16_t>(corner.v + static_cast<int>(down) * halfTexel), kIsGlyph, 0},
                   color};
    }
    return quad;
}

/// Writes quads one after the other, as many as there is room for, and submits them in stretches.
class QuadStream {
public:
    /// What a stretch is drawn with.
    struct Setup {
        bgfx::ViewId view;
        bgfx::ProgramHandle program;
        bgfx::UniformHandle sampler;
        bgfx::IndexBufferHandle indices;
        std::uint64_t state;
        bgfx::TextureHandle anyTexture; ///< for shapes without glyphs
    };

    QuadStream(Setup const& setup, GlyphAtlas const& atlas, bgfx::VertexLayout const& layout,
               std::uint32_t count)
        : m_setup(setup),
          m_atlas(atlas) {
        std::uint32_t const vertices = bgfx::getAvailTransientVertexBuffer(count * kVerticesPerQuad, layout);
        m_room = vertices / kVerticesPerQuad;
        if (m_room > 0)
            bgfx::allocTransientVertexBuffer(&m_buffer, m_room * kVerticesPerQuad, layout);
        m_next = reinterpret_cast<AnnotationQuad*>(m_buffer.data);
    }

    /// A shape fits every page.
    bool Add(AnnotationQuad const& quad, std::optional<std::uint16_t> page = std::nullopt) {
        if (m_written == m_room)
            return false;
        bool const needsOtherPage = page && m_page && *page != *m_page;
        if (needsOtherPage || m_written - m_submitted == kQuadsPerDraw)
            Flush();
        if (page)
            m_page = page;
        m_next[m_written++] = quad;
        return true;
    }

    void Flush() {
        std::uint32_t const count = m_written - m_submitted;
        if (count == 0)
            return;
        bgfx::setState(m_setup.state);
        bgfx::setTexture(0, m_setup.sampler, m_page ? m_atlas.GetTexture(*m_page) : m_setup.anyTexture,
                         BGFX_SAMPLER_UVW_CLAMP); // interpolates
        bgfx::setVertexBuffer(0, &m_buffer, m_submitted * kVerticesPerQuad, count * kVerticesPerQuad);
        bgfx::setIndexBuffer(m_setup.indices, 0, count * kIndicesPerQuad);
        bgfx::submit(m_setup.view, m_setup.program, 0, BGFX_DISCARD_ALL);
        m_submitted = m_written;
        m_page.reset();
    }

    std::uint32_t GetWritten() const { return m_written; }

private:
    Setup m_setup;
    GlyphAtlas const& m_atlas;
    bgfx::TransientVertexBuffer m_buffer{};
    AnnotationQuad* m_next = nullptr;
    std::uint32_t m_room = 0;
    std::uint32_t m_written = 0;
    std::uint32_t m_submitted = 0;
    std::optional<std::uint16_t> m_page; // of the stretch that is being written
};

bool AddGlyphs(QuadStream& stream, ResolvedText const& text) {
    auto const color = ToBytes(text.text->rgba);
    return std::all_of(
        text.cached->quads.quads.begin(), text.cached->quads.quads.end(), [&](TextQuad const& glyph) {
            auto const shift =
                static_cast<float>(LineShift(text.cached->shaped, glyph.line, text.text->alignment));
            return stream.Add(PlaceGlyph(glyph, *text.text, shift, color), glyph.page);
        });
}

} // namespace

bool AnnotationRenderer::Start() {
    if (!m_isTried) {
        m_isTried = true;
        m_program = ProgramFactory::Get()
                        .CreateProgram("vs_annotation", "fs_annotation")
                        .value_or(bgfx::ProgramHandle(BGFX_INVALID_HANDLE));
        m_layout = MakeLayout();
    }
    return bgfx::isValid(m_program);
}

Annotations::Submitted AnnotationRenderer::Draw(std::span<AnnotationQuad const> shapes,
                                                std::span<ResolvedText const> texts, GlyphAtlas& atlas,
                                                TextRenderer const& renderer, bgfx::ViewId view,
                                                AnnotationDepth depth) const {
    std::size_t count = shapes.size();
    for (ResolvedText const& text : texts)
        count += text.cached->quads.quads.size();
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max() / kVerticesPerQuad;
    auto const wanted = static_cast<std::uint32_t>(std::min(count, most));
    if (wanted == 0)
        return {};

    std::uint64_t const test = depth == AnnotationDepth::Tested ? BGFX_STATE_DEPTH_TEST_LEQUAL : 0;
    QuadStream stream(
        {view, m_program, renderer.GetSampler(), renderer.GetIndices(), kState | test, atlas.GetAnyTexture()},
        atlas, m_layout, wanted);
    bool hasRoom = true;
    std::size_t nextShape = 0;
    auto const addShapesUpTo = [&](std::size_t end) {
        for (; hasRoom && nextShape < end; ++nextShape)
            hasRoom = stream.Add(shapes[nextShape]);
    };
    for (ResolvedText const& text : texts) {
        addShapesUpTo(text.text->shapesBefore);
        hasRoom = hasRoom && AddGlyphs(stream, text);
    }
    addShapesUpTo(shapes.size());
    stream.Flush();
    return {stream.GetWritten(), wanted - stream.GetWritten()};
}

} // namespace zarvex::zx3D
