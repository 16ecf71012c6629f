// Static and dynamic vertex and index buffers, and vertex layout handles.
#include "State.h"

#include <algorithm>
#include <utility>

namespace recorder {

namespace {

uint16_t IndexSize(uint16_t flags) {
    return (flags & BGFX_BUFFER_INDEX32) != 0 ? 4 : 2;
}

Resource Buffer(Bytes bytes, uint16_t stride, uint16_t flags, std::string layout) {
    Resource buffer;
    buffer.note = std::to_string(bytes.size()) + " bytes";
    buffer.bytes = std::move(bytes);
    buffer.stride = stride;
    buffer.layout = std::move(layout);
    buffer.canGrow = (flags & BGFX_BUFFER_ALLOW_RESIZE) != 0;
    return buffer;
}

void Write(Recording& call, Resource& buffer, uint32_t start, Bytes const& bytes) {
    std::size_t const offset = std::size_t(start) * buffer.stride;
    if (offset + bytes.size() > buffer.bytes.size()) {
        if (!buffer.canGrow) {
            call.Error(std::to_string(bytes.size()) + " bytes do not fit into " + buffer.note);
            return;
        }
        buffer.bytes.resize(offset + bytes.size());
    }
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.begin() + std::ptrdiff_t(offset));
}

template<typename Handle>
Handle CreateFromMemory(Recording& call, Table<Handle> Running::* table, bgfx::Memory const* memory,
                        char const* user, uint16_t stride, uint16_t flags, std::string layout = {}) {
    if (!call.IsRunning()) {
        return call.Result(Handle BGFX_INVALID_HANDLE);
    }
    Bytes bytes = call.Records().Consume(memory, user);
    call.Payload(bytes);
    return call.Result((call.Now().*table).Add(Buffer(std::move(bytes), stride, flags, std::move(layout))));
}

template<typename Handle>
Handle CreateEmpty(Recording& call, Table<Handle> Running::* table, uint32_t count, uint16_t stride,
                   uint16_t flags, std::string layout = {}) {
    if (!call.IsRunning()) {
        return call.Result(Handle BGFX_INVALID_HANDLE);
    }
    return call.Result(
        (call.Now().*table)
            .Add(Buffer(Bytes(std::size_t(count) * stride), stride, flags, std::move(layout))));
}

template<typename Handle>
void Update(Table<Handle> Running::* table, Handle handle, uint32_t start, bgfx::Memory const* memory) {
    Recording call("update", Arguments(handle, start, memory != nullptr ? memory->size : 0));
    if (!call.IsRunning()) {
        return;
    }
    Bytes const bytes = call.Records().Consume(memory, "update");
    call.Payload(bytes);
    if (Resource* const buffer = call.Require(call.Now().*table, handle)) {
        Write(call, *buffer, start, bytes);
    }
}

template<typename Handle>
void Destroy(Table<Handle> Running::* table, Handle handle) {
    Recording call("destroy", Arguments(handle));
    if (call.IsRunning() && call.Require(call.Now().*table, handle) != nullptr) {
        (call.Now().*table).Remove(handle);
    }
}

template<typename Handle>
void SetName(Table<Handle> Running::* table, Handle handle, char const* name, int32_t length) {
    std::string const text = Name(name, length);
    Recording call("setName", Arguments(handle, text));
    if (!call.IsRunning()) {
        return;
    }
    if (Resource* const resource = call.Require(call.Now().*table, handle)) {
        resource->note = text;
    }
}

} // namespace

} // namespace recorder

namespace bgfx {

using recorder::Arguments;
using recorder::Hexadecimal;
using recorder::Recording;
using recorder::Running;

IndexBufferHandle createIndexBuffer(Memory const* memory, uint16_t flags) {
    Recording call("createIndexBuffer", Arguments(memory->size, Hexadecimal(flags)));
    return recorder::CreateFromMemory(call, &Running::indexBuffers, memory, "createIndexBuffer",
                                      recorder::IndexSize(flags), flags);
}

VertexBufferHandle createVertexBuffer(Memory const* memory, VertexLayout const& layout, uint16_t flags) {
    Recording call("createVertexBuffer", Arguments(memory->size, layout.getStride(), Hexadecimal(flags)));
    return recorder::CreateFromMemory(call, &Running::vertexBuffers, memory, "createVertexBuffer",
                                      layout.getStride(), flags, recorder::Text(layout));
}

DynamicIndexBufferHandle createDynamicIndexBuffer(uint32_t count, uint16_t flags) {
    Recording call("createDynamicIndexBuffer", Arguments(count, Hexadecimal(flags)));
    return recorder::CreateEmpty(call, &Running::dynamicIndexBuffers, count, recorder::IndexSize(flags),
                                 flags);
}

DynamicIndexBufferHandle createDynamicIndexBuffer(Memory const* memory, uint16_t flags) {
    Recording call("createDynamicIndexBuffer", Arguments(memory->size, Hexadecimal(flags)));
    return recorder::CreateFromMemory(call, &Running::dynamicIndexBuffers, memory, "createDynamicIndexBuffer",
                                      recorder::IndexSize(flags), flags);
}

DynamicVertexBufferHandle createDynamicVertexBuffer(uint32_t count, VertexLayout const& layout,
                                                    uint16_t flags) {
    Recording call("createDynamicVertexBuffer", Arguments(count, layout.getStride(), Hexadecimal(flags)));
    return recorder::CreateEmpty(call, &Running::dynamicVertexBuffers, count, layout.getStride(), flags,
                                 recorder::Text(layout));
}

DynamicVertexBufferHandle createDynamicVertexBuffer(Memory const* memory, VertexLayout const& layout,
                                                    uint16_t flags) {
    Recording call("createDynamicVertexBuffer",
                   Arguments(memory->size, layout.getStride(), Hexadecimal(flags)));
    return recorder::CreateFromMemory(call, &Running::dynamicVertexBuffers, memory,
                                      "createDynamicVertexBuffer", layout.getStride(), flags,
                                      recorder::Text(layout));
}

VertexLayoutHandle createVertexLayout(VertexLayout const& layout) {
    Recording call("createVertexLayout", Arguments(layout.getStride()));
    return recorder::CreateEmpty(call, &Running::vertexLayouts, 0, layout.getStride(), 0);
}

void update(DynamicIndexBufferHandle handle, uint32_t startIndex, Memory const* memory) {
    recorder::Update(&Running::dynamicIndexBuffers, handle, startIndex, memory);
}

void update(DynamicVertexBufferHandle handle, uint32_t startVertex, Memory const* memory) {
    recorder::Update(&Running::dynamicVertexBuffers, handle, startVertex, memory);
}

void destroy(IndexBufferHandle handle) {
    recorder::Destroy(&Running::indexBuffers, handle);
}

void destroy(VertexBufferHandle handle) {
    recorder::Destroy(&Running::vertexBuffers, handle);
}

void destroy(DynamicIndexBufferHandle handle) {
    recorder::Destroy(&Running::dynamicIndexBuffers, handle);
}

void destroy(DynamicVertexBufferHandle handle) {
    recorder::Destroy(&Running::dynamicVertexBuffers, handle);
}

void destroy(VertexLayoutHandle handle) {
    recorder::Destroy(&Running::vertexLayouts, handle);
}

void setName(IndexBufferHandle handle, char const* name, int32_t length) {
    recorder::SetName(&Running::indexBuffers, handle, name, length);
}

void setName(VertexBufferHandle handle, char const* name, int32_t length) {
    recorder::SetName(&Running::vertexBuffers, handle, name, length);
}

} // namespace bgfx
