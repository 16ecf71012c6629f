// Least recently used goes first.
#include "ShapeCache.h"

#include <algorithm>
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
    m_entries.splice(m_entries.begin(), m_entries, entry);
    Remember(entry);
    return entry->value;
}

// Frame after frame mostly asks for the same texts in the same order: the next one is known by heart. Whoever
// asks for another one replaces a text in that order, or is somewhere else in it: where the text was before.
ShapeCache::Entries::iterator ShapeCache::FindEntry(Key const& key) {
    Entries::iterator const expected = ExpectedEntry();
    ++m_expected;
    if (expected != m_entries.end() && key == Key{expected->font, expected->text})
        return expected;
    auto const found = m_index.find(key);
    if (found == m_index.end())
        return m_entries.end();
    m_expected = found->second->lastAsked + 1;
    return found->second;
}

ShapeCache::Entries::iterator ShapeCache::ExpectedEntry() {
    bool const isInHistory = m_expected < m_asked && m_asked - m_expected <= kHistory;
    return isInHistory ? m_history[m_expected % kHistory] : m_entries.end();
}

void ShapeCache::Remember(Entries::iterator entry) {
    m_history[m_asked % kHistory] = entry;
    entry->lastAsked = m_asked++;
}

std::shared_ptr<CachedText> ShapeCache::Add(std::uint32_t font, std::string_view text, ShapedText shaped) {
    std::size_t const size = SizeOf(text, shaped);
    auto const value = std::make_shared<CachedText>();
    value->shaped = std::move(shaped);
    if (size > m_capacity)
        return value;
    while (m_size + size > m_capacity)
        RemoveOldest();
    m_entries.push_front({font, std::string(text), size, value});
    m_index.emplace(Key{font, m_entries.front().text}, m_entries.begin());
    m_size += size;
    Remember(m_entries.begin());
    return value;
}

void ShapeCache::Forget(std::uint32_t font) {
    std::fill(m_history.begin(), m_history.end(), m_entries.end());
    for (auto entry = m_entries.begin(); entry != m_entries.end();) {
        auto const next = std::next(entry);
        if (entry->font == font)
            Remove(entry);
        entry = next;
    }
}

void ShapeCache::RemoveOldest() {
    auto const oldest = std::prev(m_entries.end());
    if (m_asked - oldest->lastAsked <= kHistory)
        std::replace(m_history.begin(), m_history.end(), oldest, m_entries.end());
    Remove(oldest);
}

// The entry is not in the history.
void ShapeCache::Remove(Entries::iterator entry) {
    m_index.erase(Key{entry->font, entry->text});
    m_size -= entry->size;
    m_entries.erase(entry);
}

} // namespace zarvex::zx3D
