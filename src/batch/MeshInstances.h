// The places where a batch's mesh is drawn.
#pragma once

#include "PieceBounds.h"
#include "TexelStore.h"

#include <zx3DQt/MeshBatch.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// Four texels each: the rows of the transform, and a colour.
class MeshInstances {
public:
    static constexpr std::uint32_t kTexels = 4;

    explicit MeshInstances(bool keepsData) : m_texels(keepsData, {.groupSize = kTexels}) {}

    void Clear();
    void Set(zx3D::DataSpan<MeshInstance const> instances);
    void Update(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances);

    /// As `MeshStore` does.
    bool Upload(std::uint64_t& bytes);

    std::uint64_t GetCount() const { return m_texels.GetCount() / kTexels; }
    /// Of data that are kept.
    MeshInstance Get(std::uint64_t index) const;
    bool IsUploaded() const { return m_texels.GetUploadedCount() == m_texels.GetCount(); }
    bool IsLost() const { return m_texels.IsLost(); }

    /// Around the places that the mesh's origin has.
    Bounds GetBounds() const { return m_bounds.Total(); }
    /// By how much an instance stretches the mesh at most.
    float GetScale() const { return m_scale; }

    /// Calls `draw(texture, first texel, count, rowLength, first instance)` for each run of instances that
    /// are uploaded and that the volume may show.
    template<typename Draw>
    void ForEachVisible(ViewVolume const& volume, Draw draw) const {
        std::uint64_t instance = 0;
        auto const inTexels = [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count,
                                  std::uint32_t rowLength) {
            draw(texture, first, count / kTexels, rowLength, instance);
            instance += count / kTexels;
        };
        m_bounds.ForEachVisible(volume, m_texels.GetUploadedCount() / kTexels,
                                [&](std::uint64_t first, std::uint64_t count) {
                                    instance = first;
                                    m_texels.ForEachTexture(first * kTexels, count * kTexels, inTexels);
                                });
    }

private:
    /// Few enough that those outside the picture are worth leaving out, and so many that a run of them fills
    /// a draw call.
    static constexpr std::uint64_t kPieceSize = 1024;

    void Pack(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances, std::span<Texel> texels);

    TexelStore m_texels;
    PieceBounds m_bounds{kPieceSize};
    float m_scale = 0.0f;
};

} // namespace zarvex::zx3DQt
