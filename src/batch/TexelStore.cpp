// Textures for texels: their sizes, and what is written to which.
#include "TexelStore.h"

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
    m_dropped = 0;
    m_texels = {};
    m_uploaded = 0;
    m_chunks.clear();
}

void TexelStore::OnContextStopping() {
    bool const loses = m_dropped > 0;
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

void TexelStore::DropUploaded() {
    m_dropped = m_uploaded;
    m_texels = {};
}

bool TexelStore::AddChunk() {
    // What waits fits exactly; what grows doubles, so that a stream of small pieces gets few textures.
    std::uint64_t const growth = m_uploaded == 0 ? 0 : std::max(m_uploaded, kLeastGrowth);
    std::uint64_t const wanted = std::min(std::max(GetCount() - m_uploaded, growth), kMaxWidth * kMaxHeight);
    Chunk chunk;
    chunk.first = m_uploaded;
    chunk.width = static_cast<std::uint16_t>(std::min(wanted, kMaxWidth));
    chunk.height = static_cast<std::uint16_t>((wanted + chunk.width - 1) / chunk.width);
    chunk.texture = zx3D::Owned(bgfx::createTexture2D(chunk.width, chunk.height, false, 1,
                                                      bgfx::TextureFormat::RGBA32U, kTextureFlags));
    if (!chunk.texture)
        return false;
    m_chunks.push_back(std::move(chunk));
    return true;
}

/// To textures that are there: the rest of a row, whole rows, and the beginning of one.
void TexelStore::Write(std::uint64_t first, std::span<Texel const> texels) {
    for (Chunk const& chunk : m_chunks) {
        std::uint64_t const end = chunk.first + chunk.Capacity();
        while (!texels.empty() && first < end) {
            std::uint64_t const place = first - chunk.first;
            std::uint64_t const x = place % chunk.width;
            std::uint64_t const inChunk = std::min<std::uint64_t>(texels.size(), end - first);
            bool const isPartOfRow = x != 0 || inChunk < chunk.width;
            std::uint64_t const width = isPartOfRow ? std::min(chunk.width - x, inChunk) : chunk.width;
            std::uint64_t const height = isPartOfRow ? 1 : inChunk / chunk.width;
            std::span<Texel const> const part = texels.first(width * height);
            bgfx::updateTexture2D(chunk.texture.Get(), 0, 0, static_cast<std::uint16_t>(x),
                                  static_cast<std::uint16_t>(place / chunk.width),
                                  static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
                                  bgfx::copy(part.data(), static_cast<std::uint32_t>(part.size_bytes())));
            first += part.size();
            texels = texels.subspan(part.size());
        }
    }
}

} // namespace zarvex::zx3DQt
