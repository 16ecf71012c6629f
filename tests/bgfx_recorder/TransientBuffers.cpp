// Transient buffers: real memory for one frame, of the size that `init` was given.
#include "State.h"

namespace bgfx {

using recorder::Arguments;
using recorder::Recording;
using recorder::Running;
using recorder::State;
using recorder::TransientSpace;

namespace {

constexpr uint32_t IndexSize(bool index32) {
    return index32 ? 4 : 2;
}

uint32_t Available(TransientSpace Running::* space, uint32_t count, uint32_t stride) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    return state.running != nullptr ? (state.running.get()->*space).Available(count, stride) : 0;
}

void Take(TransientSpace& space, TransientIndexBuffer& buffer, uint32_t count, bool index32) {
    uint32_t const size = IndexSize(index32);
    uint32_t const offset = space.Take(count, size);
    buffer.data = reinterpret_cast<uint8_t*>(space.data.get() + offset);
    buffer.size = count * size;
    buffer.startIndex = offset / size;
    buffer.handle = {space.handle};
    buffer.isIndex16 = !index32;
}

void Take(Running& running, TransientVertexBuffer& buffer, uint32_t count, VertexLayout const& layout) {
    TransientSpace& space = running.transientVertices;
    uint16_t const stride = layout.getStride();
    uint32_t const offset = space.Take(count, stride);
    buffer.data = reinterpret_cast<uint8_t*>(space.data.get() + offset);
    buffer.size = count * stride;
    buffer.startVertex = offset / stride;
    buffer.stride = stride;
    buffer.handle = {space.handle};
    buffer.layoutHandle = BGFX_INVALID_HANDLE;
    running.transientLayouts[buffer.data] = recorder::Text(layout);
}

} // namespace

uint32_t getAvailTransientIndexBuffer(uint32_t count, bool index32) {
    return Available(&Running::transientIndices, count, IndexSize(index32));
}

uint32_t getAvailTransientVertexBuffer(uint32_t count, VertexLayout const& layout) {
    return Available(&Running::transientVertices, count, layout.getStride());
}

void allocTransientIndexBuffer(TransientIndexBuffer* buffer, uint32_t count, bool index32) {
    Recording call("allocTransientIndexBuffer", Arguments(count, index32));
    if (call.IsRunning()) {
        Take(call.Now().transientIndices, *buffer, count, index32);
    }
}

void allocTransientVertexBuffer(TransientVertexBuffer* buffer, uint32_t count, VertexLayout const& layout) {
    Recording call("allocTransientVertexBuffer", Arguments(count, layout.getStride()));
    if (call.IsRunning()) {
        Take(call.Now(), *buffer, count, layout);
    }
}

bool allocTransientBuffers(TransientVertexBuffer* vertices, VertexLayout const& layout, uint32_t vertexCount,
                           TransientIndexBuffer* indices, uint32_t indexCount, bool index32) {
    Recording call("allocTransientBuffers", Arguments(vertexCount, layout.getStride(), indexCount, index32));
    bool const fits =
        call.IsRunning() &&
        call.Now().transientVertices.Available(vertexCount, layout.getStride()) == vertexCount &&
        call.Now().transientIndices.Available(indexCount, IndexSize(index32)) == indexCount;
    if (fits) {
        Take(call.Now(), *vertices, vertexCount, layout);
        Take(call.Now().transientIndices, *indices, indexCount, index32);
    }
    return call.Result(fits);
}

} // namespace bgfx
