// Textures for texels: their sizes, and what is written to which.
#include "TexelStore.h"

#include <bit>

namespace zarvex::zx3DQt {

namespace {

/// Every GPU that bgfx runs on has textures of this size.
constexpr std::uint64_t kMaxWidth = 4096;
constexpr std::uint64_t kMaxHeight = 1024; ///< 64 MiB

/// What grows gets at least so many texels more.
constexpr std::uint64_t kLeastGrowth = 256;

constexpr std::uint64_t kTextureFlags = BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP;

} // namespace

void TexelStore::Clear() {
    m_isLost = false;
    m_hasDropped = false;
    m_dropped = 0;
    m_texels = {};
    m_uploaded = 0;
    m_chunks.clear();
}

void TexelStore::OnContextStopping() {
    bool const loses = m_hasDropped;
    m_uploaded = 0;
    m_chunks.clear();
    if (!loses)
        return;
    Clear();
    m_isLost = true;
}

std::span<Texel> TexelStore::Append(std::uint64_t count) {
    m_isLost = false;
    std::size_t const before = m_texels.size();
    m_texels.resize(before + count);
    return std::span(m_texels).subspan(before);
}

void TexelStore::Update(std::uint64_t first, std::span<Texel const> texels) {
    std::uint64_t const end = first + texels.size();
    if (first < m_uploaded)
        Write(first, texels.first(std::min(end, m_uploaded) - first));
    if (end > m_dropped) {
        std::uint64_t const from = std::max(first, m_dropped);
        std::copy(texels.begin() + static_cast<std::ptrdiff_t>(from - first), texels.end(),
                  m_texels.begin() + static_cast<std::ptrdiff_t>(from - m_dropped));
    }
}

bool TexelStore::Upload(std::uint64_t maxBytes) {
    std::uint64_t left = maxBytes == 0 ? 0 : std::max(maxBytes / sizeof(Texel), kMaxWidth);
    left -= left % m_grouping.groupSize;
    while (m_uploaded < GetCount() && left > 0) {
        if (m_uploaded == Capacity() && !AddChunk())
            return false;
        std::uint64_t const count = std::min({left, GetCount() - m_uploaded, Capacity() - m_uploaded});
        Write(m_uploaded, std::span(m_texels).subspan(m_uploaded - m_dropped, count));
        m_uploaded += count;
        left -= count;
    }
    if (!m_keepsData && m_uploaded == GetCount())
        DropUploaded();
    return true;
}

/// All but those that the next texture begins with.
void TexelStore::DropUploaded() {
    std::uint64_t const kept = std::min<std::uint64_t>(m_grouping.before, m_uploaded);
    if (m_uploaded == 0 || (m_hasDropped && m_texels.size() == kept))
        return;
    std::vector<Texel> rest(m_texels.end() - static_cast<std::ptrdiff_t>(kept), m_texels.end());
    m_hasDropped = true;
    m_dropped = m_uploaded - kept;
    m_texels = std::move(rest);
}

bool TexelStore::AddChunk() {
    // What waits fits; what grows doubles, so that a stream of small pieces gets few textures.
    std::uint64_t const growth = m_uploaded == 0 ? 0 : std::max(m_uploaded, kLeastGrowth);
    std::uint64_t const before = std::min<std::uint64_t>(m_grouping.before, m_uploaded);
    std::uint64_t const wanted = std::min(
        before + std::max(GetCount() - m_uploaded, growth) + m_grouping.after, kMaxWidth * kMaxHeight);
    Chunk chunk;
    chunk.begin = m_uploaded - before;
    chunk.first = m_uploaded;
    // A power of two, by which shaders divide in no time.
    chunk.width = static_cast<std::uint16_t>(std::bit_ceil(std::min(wanted, kMaxWidth)));
    chunk.height = static_cast<std::uint16_t>((wanted + chunk.width - 1) / chunk.width);
    chunk.texture = zx3D::Owned(bgfx::createTexture2D(chunk.width, chunk.height, false, 1,
                                                      bgfx::TextureFormat::RGBA32U, kTextureFlags));
    if (!chunk.texture)
        return false;
    WriteTo(chunk, chunk.begin, std::span(m_texels).subspan(chunk.begin - m_dropped, before));
    m_chunks.push_back(std::move(chunk));
    return true;
}

/// To all textures that have some of them.
void TexelStore::Write(std::uint64_t first, std::span<Texel const> texels) const {
    for (Chunk const& chunk : m_chunks)
        WriteTo(chunk, first, texels);
}

/// Those that a texture has: the rest of a row, whole rows, and the beginning of one.
void TexelStore::WriteTo(Chunk const& chunk, std::uint64_t first, std::span<Texel const> texels) {
    std::uint64_t const from = std::max(first, chunk.begin);
    std::uint64_t const to = std::min(first + texels.size(), chunk.begin + chunk.Capacity());
    if (from >= to)
        return;
    texels = texels.subspan(from - first, to - from);
    std::uint64_t place = from - chunk.begin;
    while (!texels.empty()) {
        std::uint64_t const x = place % chunk.width;
        bool const isPartOfRow = x != 0 || texels.size() < chunk.width;
        std::uint64_t const width =
            isPartOfRow ? std::min<std::uint64_t>(chunk.width - x, texels.size()) : chunk.width;
        std::uint64_t const height = isPartOfRow ? 1 : texels.size() / chunk.width;
        std::span<Texel const> const part = texels.first(width * height);
        bgfx::updateTexture2D(chunk.texture.Get(), 0, 0, static_cast<std::uint16_t>(x),
                              static_cast<std::uint16_t>(place / chunk.width),
                              static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
                              bgfx::copy(part.data(), static_cast<std::uint32_t>(part.size_bytes())));
        place += part.size();
        texels = texels.subspan(part.size());
    }
}

} // namespace zarvex::zx3DQt
