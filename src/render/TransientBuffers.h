// Vertex and index space that bgfx takes back after the frame.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>
#include <limits>

namespace zarvex::zx3DQt {

/// bgfx counts the bytes of a frame in 32 bits and does not notice when they wrap. Half of that, more than
/// any frame has, keeps every sum in range.
constexpr std::uint64_t kMaxTransientBytes = std::numeric_limits<std::int32_t>::max();

/// Allocates space for both, or says that it is not there and leaves the buffers as they are.
inline bool AllocateTransient(bgfx::VertexLayout const& layout, std::uint64_t vertexCount,
                              std::uint64_t indexCount, bgfx::TransientVertexBuffer& vertices,
                              bgfx::TransientIndexBuffer& indices) {
    // Counts first, so that neither product leaves 64 bits.
    if (vertexCount > kMaxTransientBytes || vertexCount * layout.getStride() > kMaxTransientBytes ||
        indexCount > kMaxTransientBytes / sizeof(std::uint16_t))
        return false;
    return bgfx::allocTransientBuffers(&vertices, layout, static_cast<std::uint32_t>(vertexCount), &indices,
                                       static_cast<std::uint32_t>(indexCount));
}

/// The same for vertices alone.
inline bool AllocateTransient(bgfx::VertexLayout const& layout, std::uint32_t vertexCount,
                              bgfx::TransientVertexBuffer& vertices) {
    // Full, bgfx offers less space than asked for; or pretends to have more, where the rest cannot hold a
    // vertex.
    if (bgfx::getAvailTransientVertexBuffer(vertexCount, layout) != vertexCount)
        return false;
    bgfx::allocTransientVertexBuffer(&vertices, vertexCount, layout);
    return true;
}

} // namespace zarvex::zx3DQt
