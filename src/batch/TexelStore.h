// Data of any length on the GPU, for vertex shaders that fetch it.
#pragma once

#include <zx3D/ContextListener.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace zarvex::zx3DQt {

/// 16 bytes, which a shader fetches at once: four floats, colours or numbers.
using Texel = std::array<std::uint32_t, 4>;

/// Which texels a shader needs together.
struct TexelGrouping {
    /// So many are one thing, which is uploaded as a whole, and all in one texture. A power of two.
    std::uint32_t groupSize = 1;
    /// With a texel, a shader also fetches so many of those before and after it. Each texture has them at
    /// its ends, too, though they belong to others.
    /// @{
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    /// @}
};

/// Texels in textures, as many as it takes. New ones wait in memory until `Upload` takes them over, and stay
/// there as well when the data are kept.
///
/// Textures, since every GPU lets its vertex shaders fetch from them, and takes new rows while it still draws
/// the frame before with the others: bgfx puts updates between the frames.
class TexelStore final : private zx3D::ContextListener {
public:
    explicit TexelStore(bool keepsData, TexelGrouping const& grouping = {})
        : m_keepsData(keepsData),
          m_grouping(grouping) {}

    /// Without texels, memory and textures.
    void Clear();

    /// Adds texels at the end. The result is to be filled before the next call.
    std::span<Texel> Append(std::uint64_t count);

    /// Replaces texels from `first` on, of those that there are; what is on the GPU at once.
    void Update(std::uint64_t first, std::span<Texel const> texels);

    std::uint64_t GetCount() const { return m_dropped + m_texels.size(); }
    std::uint64_t GetUploadedCount() const { return m_uploaded; }
    bool KeepsData() const { return m_keepsData; }
    /// Those that are in memory: of data that are kept, all.
    std::span<Texel const> GetTexels() const { return m_texels; }

    /// True when the context stopped, and took data along that were not kept. Until `Clear`.
    bool IsLost() const { return m_isLost; }

    /// Hands bgfx texels that it does not have, of at most so many bytes, but one row where it is any
    /// number. Returns false when it has no texture left for them.
    bool Upload(std::uint64_t maxBytes);

    /// Calls `draw(texture, first, count, rowLength)` for each texture with texels of the range that are
    /// uploaded. `first` counts from the texture's own first texel; rows have a power of two of them.
    template<typename Draw>
    void ForEachTexture(std::uint64_t first, std::uint64_t count, Draw draw) const {
        std::uint64_t const end = std::min(first + count, m_uploaded);
        for (Chunk const& chunk : m_chunks) {
            std::uint64_t const from = std::max(first, chunk.first);
            std::uint64_t const to = std::min(end, EndOf(chunk));
            if (from < to)
                draw(chunk.texture.Get(), static_cast<std::uint32_t>(from - chunk.begin),
                     static_cast<std::uint32_t>(to - from), chunk.width);
        }
    }

private:
    struct Chunk {
        zx3D::Owned<bgfx::TextureHandle> texture;
        std::uint64_t begin = 0; ///< index of the first texel that it has
        std::uint64_t first = 0; ///< index of the first one that belongs to it
        std::uint16_t width = 0;
        std::uint16_t height = 0;

        std::uint64_t Capacity() const { return std::uint64_t{width} * height; }
    };

    void OnContextStopping() override;

    /// Index of the first texel that belongs to no texture up to this one.
    std::uint64_t EndOf(Chunk const& chunk) const {
        return chunk.begin + chunk.Capacity() - m_grouping.after;
    }
    std::uint64_t Capacity() const { return m_chunks.empty() ? 0 : EndOf(m_chunks.back()); }
    bool AddChunk();
    void Write(std::uint64_t first, std::span<Texel const> texels) const;
    static void WriteTo(Chunk const& chunk, std::uint64_t first, std::span<Texel const> texels);
    void DropUploaded();

    bool m_keepsData;
    TexelGrouping m_grouping;
    bool m_isLost = false;
    bool m_hasDropped = false;   ///< texels that are only on the GPU
    std::uint64_t m_dropped = 0; ///< how many: the first ones
    std::vector<Texel> m_texels; ///< those after them
    std::uint64_t m_uploaded = 0;
    std::vector<Chunk> m_chunks;
};

} // namespace zarvex::zx3DQt
