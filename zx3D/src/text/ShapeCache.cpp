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

std::shared_ptr<CachedText> const& ShapeCache::Find(std::uint32_t font, std::string_view text) {
    static std::shared_ptr<CachedText> const nothing;
    Entries::iterator const entry = FindEntry({font, text});
    if (entry == m_entries.end())
        return nothing;
    m_next = entry == m_entries.begin() ? m_entries.end() : std::prev(entry);
    m_entries.splice(m_entries.begin(), m_entries, entry);
    return entry->value;
}

// Frame after frame mostly asks for the same texts in the same order: the next one is known by heart.
ShapeCache::Entries::iterator ShapeCache::FindEntry(Key const& key) {
    if (m_next != m_entries.end() && key == Key{m_next->font, m_next->text})
        return m_next;
    auto const found = m_index.find(key);
    return found != m_index.end() ? found->second : m_entries.end();
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
    if (entry == m_next)
        m_next = m_entries.end();
    m_index.erase(Key{entry->font, entry->text});
    m_size -= entry->size;
    m_entries.erase(entry);
}

} // namespace zarvex::zx3D
