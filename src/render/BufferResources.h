// Buffers that live longer than the draw call that creates them.
#pragma once

#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zarvex::zx3DQt {

/// A pair of index and vertex buffer with the data behind them; `IndexBuffer` and `VertexBuffer` are bgfx
/// handle types.
///
/// Its end destroys the index buffer, then the vertex buffer. The data are owned together with bgfx, see
/// `MakeSharedRef`. It is not copied, so keep it in a `std::any` behind a shared pointer.
template<typename IndexBuffer, typename VertexBuffer, typename V, typename I>
struct BufferResource {
    std::shared_ptr<I[]> indices;
    std::shared_ptr<V[]> vertices;
    zx3D::Owned<VertexBuffer> vertexBuffer;
    zx3D::Owned<IndexBuffer> indexBuffer;
};

/// Buffers of one frame's sprites.
template<typename V>
using DynamicBufferResource =
    BufferResource<bgfx::DynamicIndexBufferHandle, bgfx::DynamicVertexBufferHandle, V, std::uint16_t>;

/// Buffers that are created once and kept.
template<typename V, typename I>
using StaticBufferResource = BufferResource<bgfx::IndexBufferHandle, bgfx::VertexBufferHandle, V, I>;

/// The first `count` values for bgfx, by reference. bgfx shares their ownership until it has read them, which
/// its render thread may do only after the resource they belong to is gone.
template<typename T>
bgfx::Memory const* MakeSharedRef(std::shared_ptr<T[]> const& values, std::size_t count) {
    using Owner = std::shared_ptr<T[]>;
    auto const release = [](void*, void* owner) { delete static_cast<Owner*>(owner); };
    return bgfx::makeRef(values.get(), static_cast<std::uint32_t>(count * sizeof(T)), release,
                         new Owner(values));
}

} // namespace zarvex::zx3DQt
