// Buffers that live longer than the draw call that creates them.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

/// A pair of index and vertex buffer with the data behind them; `IndexBuffer` and `VertexBuffer` are bgfx
/// handle types.
///
/// Owns the handles: the destructor destroys the index buffer, then the vertex buffer, each if it was
/// created; bgfx must still run. It is not copied, so keep it in a `std::any` behind a shared pointer.
template<typename IndexBuffer, typename VertexBuffer, typename V, typename I>
class BufferResource {
public:
    BufferResource() = default;
    ~BufferResource() {
        if (bgfx::isValid(indexBuffer))
            bgfx::destroy(indexBuffer);
        if (bgfx::isValid(vertexBuffer))
            bgfx::destroy(vertexBuffer);
    }

    BufferResource(BufferResource const&) = delete;
    BufferResource& operator=(BufferResource const&) = delete;

    IndexBuffer indexBuffer = BGFX_INVALID_HANDLE;
    VertexBuffer vertexBuffer = BGFX_INVALID_HANDLE;
    std::vector<I> indices;
    std::vector<V> vertices;
};

/// Buffers of one frame's sprites.
template<typename V>
using DynamicBufferResource =
    BufferResource<bgfx::DynamicIndexBufferHandle, bgfx::DynamicVertexBufferHandle, V, std::uint16_t>;

/// Buffers that are created once and kept.
template<typename V, typename I>
using StaticBufferResource = BufferResource<bgfx::IndexBufferHandle, bgfx::VertexBufferHandle, V, I>;

} // namespace zarvex::zx3DQt
