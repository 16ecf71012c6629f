// Rectangles without vertices: for shaders that make their corners, four each.
#pragma once

#include <zx3D/ContextListener.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>

namespace zarvex::zx3DQt {

/// Indices of two triangles for each rectangle, whose corners 0 to 3 are in order around it, so that a vertex
/// shader makes each corner once: rectangle i has the vertices 4 i to 4 i + 3. Made on first use in each run
/// of the context. Thread: the one that calls bgfx's API.
class QuadIndices final : private zx3D::ContextListener {
public:
    /// In one submission.
    static constexpr std::uint32_t kMaxQuads = 262'144;

    /// The same for all who have it: there as long as one of them is.
    static std::shared_ptr<QuadIndices> Share();

    /// Has indices for so many. False when bgfx has no buffer left.
    bool Fit(std::uint32_t quads);

    /// For the next submission, after `Fit` with no fewer.
    void Set(std::uint32_t quads) const;

private:
    void OnContextStopping() override;

    std::uint32_t m_quads = 0;
    zx3D::Owned<bgfx::IndexBufferHandle> m_indices;
    zx3D::Owned<bgfx::VertexBufferHandle> m_vertices; ///< not read; bgfx has no indices without
};

} // namespace zarvex::zx3DQt
