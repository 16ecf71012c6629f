// Least recently used goes first.
#include "ShapeCache.h"

#include <utility>

namespace zarvex::zx3D {

namespace {

/// About what an entry takes, with the quads that will join the glyphs.
std::size_t SizeOf(std::string_view text, ShapedText const& shaped) {
    constexpr std::size_t bookkeeping = 512;
    return bookkeeping + text.size() + shaped.lines.capacity() * sizeof(ShapedLine) +
           shaped.glyphs.capacity() * sizeof(ShapedGlyph) + shaped.glyphs.size() * sizeof(TextQuad);
}

} // namespace

std::shared_ptr<CachedText> ShapeCache::Find(std::uint32_t font, std::string_view text) {
    auto const found = m_index.find(Key{font, text});
    if (found == m_index.end())
        return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->value;
}

std::shared_ptr<CachedText> ShapeCache::Add(std::uint32_t font, std::string_view text, ShapedText shaped) {
    std::size_t const size = SizeOf(text, shaped);
    auto const value = std::make_shared<CachedText>();
    value->shaped = std::move(shaped);
    if (size > m_capacity)
        return value;
    while (m_size + size > m_capacity)
        Remove(std::prev(m_entries.end()));
    m_entries.push_front({font, std::string(text), size, value});
    m_index.emplace(Key{font, m_entries.front().text}, m_entries.begin());
    m_size += size;
    return value;
}

void ShapeCache::Forget(std::uint32_t font) {
    for (auto entry = m_entries.begin(); entry != m_entries.end();) {
        auto const next = std::next(entry);
        if (entry->font == font)
            Remove(entry);
        entry = next;
    }
}

void ShapeCache::Remove(Entries::iterator entry) {
    m_index.erase(Key{entry->font, entry->text});
    m_size -= entry->size;
    m_entries.erase(entry);
}

} // namespace zarvex::zx3D
