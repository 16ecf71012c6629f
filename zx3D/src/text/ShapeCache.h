// The texts that were laid out lately.
#pragma once

#include "ShapedText.h"
#include "TextQuads.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zarvex::zx3D {

/// A text of a font, laid out, with its places in the atlas.
struct CachedText {
    ShapedText shaped;
    TextQuads quads;
};

/// Keeps texts by font and content up to a number of bytes; those not asked for the longest go first. Whoever
/// holds a text keeps it beyond that.
class ShapeCache {
public:
    static constexpr std::size_t kDefaultCapacity = std::size_t(16) << 20;

    explicit ShapeCache(std::size_t capacity = kDefaultCapacity) : m_capacity(capacity) {}

    ShapeCache(ShapeCache const&) = delete;
    ShapeCache& operator=(ShapeCache const&) = delete;

    /// Null when the text is not there. Allocates nothing. The reference is good until the next `Add` or
    /// `Forget`.
    std::shared_ptr<CachedText> const& Find(std::uint32_t font, std::string_view text);

    /// Adds a text that is not there, unless it is larger than the whole cache.
    std::shared_ptr<CachedText> Add(std::uint32_t font, std::string_view text, ShapedText shaped);

    void Forget(std::uint32_t font);

    std::size_t GetSize() const { return m_size; } ///< bytes, about

private:
    struct Entry {
        std::uint32_t font;
        std::string text;
        std::size_t size;
        std::shared_ptr<CachedText> value;
    };
    using Entries = std::list<Entry>;

    struct Key {
        std::uint32_t font;
        std::string_view text; // the entry's

        friend bool operator==(Key const&, Key const&) = default;
    };
    struct Hash {
        std::size_t operator()(Key const& key) const {
            return std::hash<std::string_view>()(key.text) ^ key.font * std::size_t(0x9E3779B97F4A7C15);
        }
    };

    Entries::iterator FindEntry(Key const& key);
    void Remove(Entries::iterator entry);

    std::size_t m_capacity;
    std::size_t m_size = 0;
    Entries m_entries; // the one asked for last at the front
    // Those that are likely to be asked for next: they stood beside the last one.
    Entries::iterator m_before = m_entries.end();
    Entries::iterator m_behind = m_entries.end();
    std::unordered_map<Key, Entries::iterator, Hash> m_index;
};

} // namespace zarvex::zx3D
