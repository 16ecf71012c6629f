// Textures that hold the glyphs.
#pragma once

#include "Face.h"

#include <bgfx/bgfx.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace zarvex::zx3D {

/// Names a glyph among those of all faces.
struct GlyphKey {
    std::uint32_t face = 0; ///< `Face::GetId`
    std::uint32_t glyph = 0;

    friend bool operator==(GlyphKey const&, GlyphKey const&) = default;
};

/// Where a glyph is.
struct AtlasGlyph {
    std::uint16_t page = 0;
    std::uint16_t x = 0; ///< texel of the bitmap's top left
    std::uint16_t y = 0;
    std::uint16_t width = 0; ///< 0: nothing to draw
    std::uint16_t height = 0;
    std::int32_t left = 0; ///< as in GlyphBitmap
    std::int32_t top = 0;
};

/// Pages of 8-bit coverage, filled one after the other; when all are full, the one that was used least
/// recently is emptied as a whole.
///
/// A texel is written once in the life of a texture: emptying a page destroys its texture, which bgfx keeps
/// until the frame is drawn, and makes a new one. So nothing changes what was submitted before. To bound what
/// waits for the frame's end, a frame empties only so many pages.
///
/// Needs a running context, except for what says otherwise.
class GlyphAtlas {
public:
    static constexpr std::uint16_t kPageSize = 1024; ///< texels in each direction
    static constexpr std::size_t kMaxPages = 16;
    static constexpr std::size_t kMaxPagesEmptiedInFrame = kMaxPages;

    GlyphAtlas();
    ~GlyphAtlas();

    GlyphAtlas(GlyphAtlas const&) = delete;
    GlyphAtlas& operator=(GlyphAtlas const&) = delete;

    /// Changes whenever places that were given become wrong. Needs no context.
    std::uint64_t GetGeneration() const { return m_generation; }

    /// From here to the next call, pages that are used are not emptied.
    void BeginText() { ++m_now; }

    /// A page is drawn from.
    void Use(std::uint16_t page);

    bgfx::TextureHandle GetTexture(std::uint16_t page) const;

    /// Of any page, for what is drawn without glyphs by a program that has them.
    bgfx::TextureHandle GetAnyTexture();

    /// A glyph that is there; its page counts as used.
    std::optional<AtlasGlyph> Find(GlyphKey key);

    /// Adds a glyph that is not there; its page counts as used. Empty when there is no room for it in this
    /// text, or in this frame.
    std::optional<AtlasGlyph> Add(GlyphKey key, GlyphBitmap const& bitmap);

    /// Forgets the glyphs of a face. Their texels are won back when their page is emptied. Needs no context.
    void Forget(std::uint32_t face);

    /// Destroys all textures.
    void Clear();

private:
    class Page;
    struct Hash {
        std::size_t operator()(GlyphKey const& key) const {
            return std::hash<std::uint64_t>()(std::uint64_t(key.face) << 32 | key.glyph);
        }
    };

    std::optional<AtlasGlyph> Place(GlyphBitmap const& bitmap);
    std::optional<AtlasGlyph> PlaceOnPage(std::size_t page, GlyphBitmap const& bitmap);
    std::optional<std::size_t> AddOrEmptyPage();
    std::optional<std::size_t> EmptyForgottenPage();
    std::optional<std::size_t> EmptyOldestPage();
    bool MayEmptyPage();

    std::vector<std::unique_ptr<Page>> m_pages;
    std::unordered_map<GlyphKey, AtlasGlyph, Hash> m_glyphs;
    std::uint64_t m_generation = 0;
    std::uint64_t m_now = 0; // counts texts

    /// Tells one frame from the next.
    struct Frame {
        bgfx::Stats const* stats = nullptr;
        std::int64_t begin = 0;

        friend bool operator==(Frame const&, Frame const&) = default;
    };

    static Frame GetFrame();

    Frame m_frame;
    std::size_t m_emptiedInFrame = 0;
};

} // namespace zarvex::zx3D
