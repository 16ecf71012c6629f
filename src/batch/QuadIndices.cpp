// The buffers of rectangles.
#include "QuadIndices.h"

#include <zx3D/Vertex.h>

#include <algorithm>
#include <bit>

namespace zarvex::zx3DQt {

namespace {

constexpr std::uint32_t kLeastQuads = 1024;

bgfx::Memory const* MakeIndices(std::uint32_t quads) {
    bgfx::Memory const* const memory = bgfx::alloc(6 * quads * sizeof(std::uint32_t));
    auto* index = reinterpret_cast<std::uint32_t*>(memory->data);
    for (std::uint32_t first = 0; first < 4 * quads; first += 4) {
        for (std::uint32_t const corner : {0u, 1u, 2u, 2u, 3u, 0u})
            *index++ = first + corner;
    }
    return memory;
}

} // namespace

std::shared_ptr<QuadIndices> QuadIndices::Share() {
    static std::weak_ptr<QuadIndices> shared;
    std::shared_ptr<QuadIndices> indices = shared.lock();
    if (indices == nullptr)
        shared = indices = std::make_shared<QuadIndices>();
    return indices;
}

bool QuadIndices::Fit(std::uint32_t quads) {
    if (quads <= m_quads)
        return true;
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    if (!m_vertices) {
        Vertex const vertex;
        m_vertices =
            zx3D::Owned(bgfx::createVertexBuffer(bgfx::copy(&vertex, sizeof(vertex)), Vertex::Layout()));
    }
    std::uint32_t const wanted = std::bit_ceil(std::max(quads, kLeastQuads));
    m_quads = 0;
    m_indices = zx3D::Owned(bgfx::createIndexBuffer(MakeIndices(wanted), BGFX_BUFFER_INDEX32));
    if (!m_vertices || !m_indices)
        return false;
    m_quads = wanted;
    return true;
}

void QuadIndices::Set(std::uint32_t quads) const {
    bgfx::setVertexBuffer(0, m_vertices.Get());
    bgfx::setIndexBuffer(m_indices.Get(), 0, 6 * quads);
}

void QuadIndices::OnContextStopping() {
    m_quads = 0;
    m_indices.Reset();
    m_vertices.Reset();
}

} // namespace zarvex::zx3DQt
