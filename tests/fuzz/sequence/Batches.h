// Batches that sequences fill, change and draw.
#pragma once

#include "Random.h"

#include <zx3DQt/LineBatch.h>
#include <zx3DQt/MeshBatch.h>
#include <zx3DQt/PointBatch.h>

#include <array>

namespace zarvex::fuzz {

/// One batch that keeps its data and one that does not, of each kind.
class Batches {
public:
    /// Does something to the data of one of them, also what nobody should do.
    void Change(Random& random);

    /// Draws one of them in any style, meshes with the texture, if it is one.
    void Draw(Random& random, zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view,
              bgfx::TextureHandle texture);

private:
    using LineBatch = zx3DQt::LineBatch;
    using MeshBatch = zx3DQt::MeshBatch;
    using PointBatch = zx3DQt::PointBatch;

    void ChangeLines(Random& random);
    void ChangeMeshes(Random& random);
    void ChangePoints(Random& random);

    std::array<LineBatch, 2> m_lines{LineBatch(LineBatch::KeepData::No), LineBatch(LineBatch::KeepData::Yes)};

    std::array<MeshBatch, 2> m_meshes{MeshBatch(MeshBatch::KeepData::No),
                                      MeshBatch(MeshBatch::KeepData::Yes)};

    std::array<PointBatch, 2> m_points{PointBatch(PointBatch::KeepData::No),
                                       PointBatch(PointBatch::KeepData::Yes)};
};

} // namespace zarvex::fuzz
