// Packing and uploading.
#include "GlyphAtlas.h"

#include <zx3D/Owned.h>

#include <algorithm>
#include <cstring>

#define STBRP_STATIC
#define STB_RECT_PACK_IMPLEMENTATION
#include <stb_rect_pack.h>

namespace zarvex::zx3D {

namespace {

// Blank texels around each glyph: what samples at its very edge finds nothing of its neighbours.
constexpr std::uint16_t kPadding = 1;

static_assert(kMaxGlyphExtent + 2 * kPadding == GlyphAtlas::kPageSize);

Owned<bgfx::TextureHandle> CreatePageTexture() {
    constexpr std::uint64_t flags = BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP;
    return Owned(bgfx::createTexture2D(GlyphAtlas::kPageSize, GlyphAtlas::kPageSize, false, 1,
                                       bgfx::TextureFormat::R8, flags));
}

/// The bitmap with its padding.
bgfx::Memory const* PaddedCopy(GlyphBitmap const& bitmap) {
    std::size_t const stride = bitmap.width + 2u * kPadding;
    bgfx::Memory const* const memory =
        bgfx::alloc(static_cast<std::uint32_t>(stride * (bitmap.height + 2u * kPadding)));
    std::memset(memory->data, 0, memory->size);
    for (std::size_t y = 0; y < bitmap.height; ++y)
        std::memcpy(memory->data + (y + kPadding) * stride + kPadding,
                    bitmap.coverage.data() + y * bitmap.width, bitmap.width);
    return memory;
}

} // namespace

class GlyphAtlas::Page {
public:
    Page() { Reset(); }

    Page(Page const&) = delete;
    Page& operator=(Page const&) = delete;

    /// Makes it blank.
    void Reset() {
        m_texture.Reset();
        m_texture = CreatePageTexture();
        stbrp_init_target(&m_packing, kPageSize, kPageSize, m_nodes.data(), static_cast<int>(m_nodes.size()));
    }

    /// Finds room and uploads; sets the place. False when there is no room.
    bool Add(GlyphBitmap const& bitmap, AtlasGlyph& glyph) {
        stbrp_rect rect = {};
        rect.w = bitmap.width + 2 * kPadding;
        rect.h = bitmap.height + 2 * kPadding;
        if (!m_texture || stbrp_pack_rects(&m_packing, &rect, 1) == 0)
            return false;
        auto const x = static_cast<std::uint16_t>(rect.x);
        auto const y = static_cast<std::uint16_t>(rect.y);
        bgfx::updateTexture2D(m_texture.Get(), 0, 0, x, y, static_cast<std::uint16_t>(rect.w),
                              static_cast<std::uint16_t>(rect.h), PaddedCopy(bitmap));
        glyph.x = x + kPadding;
        glyph.y = y + kPadding;
        return true;
    }

    bgfx::TextureHandle GetTexture() const { return m_texture.Get(); }

    std::uint64_t lastUse = 0;

private:
    Owned<bgfx::TextureHandle> m_texture;
    stbrp_context m_packing;
    std::array<stbrp_node, kPageSize> m_nodes;
};

GlyphAtlas::GlyphAtlas() = default;
GlyphAtlas::~GlyphAtlas() = default;

void GlyphAtlas::Use(std::uint16_t page) {
    m_pages[page]->lastUse = m_now;
}

bgfx::TextureHandle GlyphAtlas::GetTexture(std::uint16_t page) const {
    return m_pages[page]->GetTexture();
}

bgfx::TextureHandle GlyphAtlas::GetAnyTexture() {
    if (m_pages.empty())
        m_pages.push_back(std::make_unique<Page>());
    return GetTexture(0);
}

std::optional<AtlasGlyph> GlyphAtlas::Find(GlyphKey key) {
    auto const found = m_glyphs.find(key);
    if (found == m_glyphs.end())
        return std::nullopt;
    if (found->second.width != 0)
        Use(found->second.page);
    return found->second;
}

std::optional<AtlasGlyph> GlyphAtlas::Add(GlyphKey key, GlyphBitmap const& bitmap) {
    std::optional<AtlasGlyph> const glyph = bitmap.width == 0 ? AtlasGlyph() : Place(bitmap);
    if (glyph)
        m_glyphs.emplace(key, *glyph);
    return glyph;
}

void GlyphAtlas::Forget(std::uint32_t face) {
    std::erase_if(m_glyphs, [face](auto const& entry) { return entry.first.face == face; });
}

void GlyphAtlas::Clear() {
    m_pages.clear();
    m_glyphs.clear();
    ++m_generation;
}

std::optional<AtlasGlyph> GlyphAtlas::Place(GlyphBitmap const& bitmap) {
    for (std::size_t page = m_pages.size(); page > 0; --page) { // the last one has most room
        if (std::optional<AtlasGlyph> glyph = PlaceOnPage(page - 1, bitmap))
            return glyph;
    }
    std::optional<std::size_t> const page = AddOrEmptyPage();
    return page ? PlaceOnPage(*page, bitmap) : std::nullopt;
}

std::optional<AtlasGlyph> GlyphAtlas::PlaceOnPage(std::size_t page, GlyphBitmap const& bitmap) {
    AtlasGlyph glyph;
    if (!m_pages[page]->Add(bitmap, glyph))
        return std::nullopt;
    glyph.page = static_cast<std::uint16_t>(page);
    glyph.width = bitmap.width;
    glyph.height = bitmap.height;
    glyph.left = bitmap.left;
    glyph.top = bitmap.top;
    Use(glyph.page);
    return glyph;
}

std::optional<std::size_t> GlyphAtlas::AddOrEmptyPage() {
    if (std::optional<std::size_t> const page = EmptyForgottenPage())
        return page;
    if (m_pages.size() == kMaxPages)
        return EmptyOldestPage();
    m_pages.push_back(std::make_unique<Page>());
    return m_pages.size() - 1;
}

// Fonts come and go: what they leave need not be kept until all pages are full.
std::optional<std::size_t> GlyphAtlas::EmptyForgottenPage() {
    std::array<bool, kMaxPages> isInUse{};
    for (auto const& [key, glyph] : m_glyphs)
        isInUse[glyph.page] |= glyph.width != 0;
    for (std::size_t page = 0; page < m_pages.size(); ++page) {
        if (isInUse[page] || m_pages[page]->lastUse == m_now)
            continue;
        if (!MayEmptyPage())
            return std::nullopt;
        m_pages[page]->Reset(); // no place that was given is on it
        return page;
    }
    return std::nullopt;
}

std::optional<std::size_t> GlyphAtlas::EmptyOldestPage() {
    auto const isOlder = [](auto const& a, auto const& b) { return a->lastUse < b->lastUse; };
    auto const oldest = std::min_element(m_pages.begin(), m_pages.end(), isOlder);
    if ((*oldest)->lastUse == m_now || !MayEmptyPage())
        return std::nullopt;
    (*oldest)->Reset();
    auto const page = static_cast<std::size_t>(oldest - m_pages.begin());
    std::erase_if(m_glyphs,
                  [page](auto const& entry) { return entry.second.width != 0 && entry.second.page == page; });
    ++m_generation;
    return page;
}

bool GlyphAtlas::MayEmptyPage() {
    Frame const frame = GetFrame();
    if (m_frame != frame) {
        m_frame = frame;
        m_emptiedInFrame = 0;
    }
    return ++m_emptiedInFrame <= kMaxPagesEmptiedInFrame;
}

// bgfx does not tell the number of the frame. With a render thread it alternates between two objects; without
// one, the time at which it began to execute the last frame differs.
GlyphAtlas::Frame GlyphAtlas::GetFrame() {
    bgfx::Stats const* const stats = bgfx::getStats();
    return {stats, stats->cpuTimeBegin};
}

} // namespace zarvex::zx3D
