// Least recently used goes first.
#include "ShapeCache.h"

#include <iterator>
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

// Frame after frame mostly asks for the same texts in the same order. Every question moves a text to the
// front of the list; so the one just before a text is the one that was asked for after it the last time, and
// no hash is needed to find that one now. The one just behind it is next where the order is reversed, as that
// of the numbers along two sides of a grid.
std::shared_ptr<CachedText> const& ShapeCache::Find(std::uint32_t font, std::string_view text) {
    static std::shared_ptr<CachedText> const nothing;
    Entries::iterator const entry = FindEntry({font, text});
    if (entry == m_entries.end())
        return nothing;
    m_before = entry != m_entries.begin() ? std::prev(entry) : m_entries.end();
    m_behind = std::next(entry);
    m_entries.splice(m_entries.begin(), m_entries, entry);
    return entry->value;
}

ShapeCache::Entries::iterator ShapeCache::FindEntry(Key const& key) {
    for (Entries::iterator const expected : {m_before, m_behind}) {
        if (expected != m_entries.end() && key == Key{expected->font, expected->text})
            return expected;
    }
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
    for (Entries::iterator* const expected : {&m_before, &m_behind}) {
        if (*expected == entry)
            *expected = m_entries.end();
    }
    m_index.erase(Key{entry->font, entry->text});
    m_size -= entry->size;
    m_entries.erase(entry);
}

} // namespace zarvex::zx3D
