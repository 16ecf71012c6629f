// What is bound for the next draw, and the draws that take it over.
#include "State.h"
#include "Version.h"

#include <algorithm>

namespace recorder {

namespace {

constexpr std::size_t kFloatsPerMatrix = 16;

std::size_t FloatsPerElement(bgfx::UniformType::Enum type) {
    switch (type) {
    case bgfx::UniformType::Mat3:
        return 9;
    case bgfx::UniformType::Mat4:
        return 16;
    default:
        return 4;
    }
}

/// The part of a buffer that a range of elements covers; a range past the end is an error.
Binding Range(Recording& call, Binding whole, uint32_t first, uint32_t count) {
    std::size_t const offset = std::size_t(first) * whole.stride;
    std::size_t const size = std::size_t(count) * whole.stride;
    if (offset + size > whole.size) {
        call.Error("the range leaves " + whole.buffer);
        return whole;
    }
    whole.data += offset;
    whole.size = size;
    return whole;
}

template<typename Handle>
Binding Bind(Recording& call, Table<Handle>& table, Handle handle) {
    Resource const* const buffer = call.Require(table, handle);
    if (buffer == nullptr) {
        return {};
    }
    return {Text(handle), buffer->bytes.data(), buffer->bytes.size(), buffer->stride, buffer->layout};
}

Binding Bind(Recording& call, bgfx::TransientVertexBuffer const& buffer) {
    if (buffer.handle.idx != call.Now().transientVertices.handle) {
        call.Error("not a transient vertex buffer of this run");
        return {};
    }
    return {"transient", reinterpret_cast<std::byte const*>(buffer.data), buffer.size, buffer.stride,
            call.Now().transientLayouts[buffer.data]};
}

Binding Bind(Recording& call, bgfx::TransientIndexBuffer const& buffer) {
    if (buffer.handle.idx != call.Now().transientIndices.handle) {
        call.Error("not a transient index buffer of this run");
        return {};
    }
    uint16_t const size = buffer.isIndex16 ? 2 : 4;
    return {"transient", reinterpret_cast<std::byte const*>(buffer.data), buffer.size, size, {}};
}

void SetVertices(Recording& call, uint8_t stream, Binding const& binding) {
    call.Payload(CopyBytes(binding.data, binding.size));
    if (stream == 0) {
        call.Now().bound.vertices = binding;
    }
}

void SetIndices(Recording& call, Binding const& binding) {
    call.Payload(CopyBytes(binding.data, binding.size));
    call.Now().bound.indices = binding;
}

template<typename Handle>
void SetBuffer(Table<Handle> Running::* table, uint8_t stage, Handle handle, bgfx::Access::Enum access) {
    Recording call("setBuffer", Arguments(stage, handle, access));
    if (!call.IsRunning()) {
        return;
    }
    if (Resource const* const buffer = call.Require(call.Now().*table, handle)) {
        call.Now().bound.buffers[stage] = {Text(handle), access, buffer->layout};
    }
}

Draw Take(Running const& now, bgfx::ViewId view, bgfx::ProgramHandle program, uint8_t flags) {
    Bound const& bound = now.bound;
    Draw draw;
    draw.view = view;
    draw.program = program;
    draw.flags = flags;
    draw.transform = bound.transform;
    draw.uniforms = bound.uniforms;
    draw.textures = bound.textures;
    draw.samplerFlags = bound.samplerFlags;
    draw.buffers = bound.buffers;
    std::size_t const first = bound.transform.value_or(0) * kFloatsPerMatrix;
    if (first + kFloatsPerMatrix <= now.transforms.size()) {
        auto const begin = now.transforms.begin() + std::ptrdiff_t(first);
        draw.matrix.assign(begin, begin + kFloatsPerMatrix);
    }
    return draw;
}

/// What a draw additionally takes over from the graphics side.
void TakeGeometry(Draw& draw, Bound const& bound) {
    draw.state = bound.state;
    draw.vertexBuffer = bound.vertices.buffer;
    draw.indexBuffer = bound.indices.buffer;
    draw.stride = bound.vertices.stride;
    draw.layout = bound.vertices.layout;
    draw.vertices = CopyBytes(bound.vertices.data, bound.vertices.size);
    draw.indices = CopyBytes(bound.indices.data, bound.indices.size);
    draw.instances = bound.instances;
}

void DiscardBindings(Bound& bound, uint8_t flags) {
    if ((flags & BGFX_DISCARD_BINDINGS) != 0) {
        bound.textures.clear();
        bound.samplerFlags.clear();
        bound.buffers.clear();
    }
}

void Discard(Bound& bound, uint8_t flags) {
    bound.uniforms.clear();
    DiscardBindings(bound, flags);
    if ((flags & BGFX_DISCARD_STATE) != 0) {
        bound.state.reset();
    }
    if ((flags & BGFX_DISCARD_TRANSFORM) != 0) {
        bound.transform.reset();
    }
    if ((flags & BGFX_DISCARD_VERTEX_STREAMS) != 0) {
        bound.vertices = {};
    }
    if ((flags & BGFX_DISCARD_INDEX_BUFFER) != 0) {
        bound.indices = {};
    }
    if ((flags & BGFX_DISCARD_INSTANCE_DATA) != 0) {
        bound.instances = 1;
    }
}

} // namespace

} // namespace recorder

namespace bgfx {

using recorder::Arguments;
using recorder::CopyBytes;
using recorder::Hexadecimal;
using recorder::Recording;
using recorder::Resource;
using recorder::Running;

void setMarker(char const* marker RECORDER_NAME_LENGTH) {
    Recording call("setMarker", Arguments(marker));
}

void setState(uint64_t state, uint32_t rgba) {
    Recording call("setState", Arguments(Hexadecimal(state), Hexadecimal(rgba)));
    if (call.IsRunning()) {
        call.Now().bound.state = state;
    }
}

void setStencil(uint32_t front, uint32_t back) {
    Recording call("setStencil", Arguments(Hexadecimal(front), Hexadecimal(back)));
}

uint16_t setScissor(uint16_t x, uint16_t y, uint16_t width, uint16_t height) {
    Recording call("setScissor", Arguments(x, y, width, height));
    return call.Result(uint16_t(0));
}

void setScissor(uint16_t cache) {
    Recording call("setScissor", Arguments(cache));
}

uint32_t setTransform(void const* matrices, uint16_t count) {
    Recording call("setTransform", Arguments("matrix", count));
    std::size_t const floats = recorder::kFloatsPerMatrix * count;
    call.Payload(CopyBytes(matrices, floats * sizeof(float)));
    if (!call.IsRunning()) {
        return call.Result(uint32_t(0));
    }
    auto& transforms = call.Now().transforms;
    auto const index = uint32_t(transforms.size() / recorder::kFloatsPerMatrix);
    auto const* const values = static_cast<float const*>(matrices);
    transforms.insert(transforms.end(), values, values + floats);
    call.Now().bound.transform = index;
    return call.Result(index);
}

void setTransform(uint32_t cache, uint16_t count) {
    Recording call("setTransform", Arguments("cache#" + std::to_string(cache), count));
    if (call.IsRunning()) {
        call.Now().bound.transform = cache;
    }
}

void setUniform(UniformHandle handle, void const* value, uint16_t count) {
    Recording call("setUniform", Arguments(handle));
    if (!call.IsRunning()) {
        return;
    }
    Resource const* const uniform = call.Require(call.Now().uniforms, handle);
    if (uniform == nullptr) {
        return;
    }
    std::size_t const elements = count == UINT16_MAX ? uniform->count : count;
    auto const* const floats = static_cast<float const*>(value);
    std::vector<float> values(floats, floats + elements * recorder::FloatsPerElement(uniform->uniformType));
    call.Payload(CopyBytes(value, values.size() * sizeof(float)));
    call.DescribeUniform(uniform->note, values);
    call.Now().bound.uniforms[uniform->note] = std::move(values);
}

void setIndexBuffer(IndexBufferHandle handle) {
    Recording call("setIndexBuffer", Arguments(handle));
    if (call.IsRunning()) {
        recorder::SetIndices(call, recorder::Bind(call, call.Now().indexBuffers, handle));
    }
}

void setIndexBuffer(IndexBufferHandle handle, uint32_t first, uint32_t count) {
    Recording call("setIndexBuffer", Arguments(handle, first, count));
    if (call.IsRunning()) {
        recorder::SetIndices(
            call, recorder::Range(call, recorder::Bind(call, call.Now().indexBuffers, handle), first, count));
    }
}

void setIndexBuffer(DynamicIndexBufferHandle handle) {
    Recording call("setIndexBuffer", Arguments(handle));
    if (call.IsRunning()) {
        recorder::SetIndices(call, recorder::Bind(call, call.Now().dynamicIndexBuffers, handle));
    }
}

void setIndexBuffer(DynamicIndexBufferHandle handle, uint32_t first, uint32_t count) {
    Recording call("setIndexBuffer", Arguments(handle, first, count));
    if (call.IsRunning()) {
        recorder::SetIndices(
            call, recorder::Range(call, recorder::Bind(call, call.Now().dynamicIndexBuffers, handle), first,
                                  count));
    }
}

void setIndexBuffer(TransientIndexBuffer const* buffer) {
    Recording call("setIndexBuffer", Arguments("transient"));
    if (call.IsRunning()) {
        recorder::SetIndices(call, recorder::Bind(call, *buffer));
    }
}

void setIndexBuffer(TransientIndexBuffer const* buffer, uint32_t first, uint32_t count) {
    Recording call("setIndexBuffer", Arguments("transient", first, count));
    if (call.IsRunning()) {
        recorder::SetIndices(call, recorder::Range(call, recorder::Bind(call, *buffer), first, count));
    }
}

void setVertexBuffer(uint8_t stream, VertexBufferHandle handle) {
    Recording call("setVertexBuffer", Arguments(stream, handle));
    if (call.IsRunning()) {
        recorder::SetVertices(call, stream, recorder::Bind(call, call.Now().vertexBuffers, handle));
    }
}

void setVertexBuffer(uint8_t stream, VertexBufferHandle handle, uint32_t first, uint32_t count,
                     VertexLayoutHandle layout) {
    Recording call("setVertexBuffer", Arguments(stream, handle, first, count, layout));
    if (call.IsRunning()) {
        recorder::SetVertices(
            call, stream,
            recorder::Range(call, recorder::Bind(call, call.Now().vertexBuffers, handle), first, count));
    }
}

void setVertexBuffer(uint8_t stream, DynamicVertexBufferHandle handle) {
    Recording call("setVertexBuffer", Arguments(stream, handle));
    if (call.IsRunning()) {
        recorder::SetVertices(call, stream, recorder::Bind(call, call.Now().dynamicVertexBuffers, handle));
    }
}

void setVertexBuffer(uint8_t stream, DynamicVertexBufferHandle handle, uint32_t first, uint32_t count,
                     VertexLayoutHandle layout) {
    Recording call("setVertexBuffer", Arguments(stream, handle, first, count, layout));
    if (call.IsRunning()) {
        recorder::SetVertices(call, stream,
                              recorder::Range(call,
                                              recorder::Bind(call, call.Now().dynamicVertexBuffers, handle),
                                              first, count));
    }
}

void setVertexBuffer(uint8_t stream, TransientVertexBuffer const* buffer) {
    Recording call("setVertexBuffer", Arguments(stream, "transient"));
    if (call.IsRunning()) {
        recorder::SetVertices(call, stream, recorder::Bind(call, *buffer));
    }
}

void setVertexBuffer(uint8_t stream, TransientVertexBuffer const* buffer, uint32_t first, uint32_t count,
                     VertexLayoutHandle layout) {
    Recording call("setVertexBuffer", Arguments(stream, "transient", first, count, layout));
    if (call.IsRunning()) {
        recorder::SetVertices(call, stream,
                              recorder::Range(call, recorder::Bind(call, *buffer), first, count));
    }
}

void setVertexCount(uint32_t count) {
    Recording call("setVertexCount", Arguments(count));
}

void setInstanceCount(uint32_t count) {
    Recording call("setInstanceCount", Arguments(count));
    if (call.IsRunning()) {
        call.Now().bound.instances = count;
    }
}

void setTexture(uint8_t stage, UniformHandle sampler, TextureHandle texture, uint32_t flags) {
    Recording call("setTexture", Arguments(stage, sampler, texture, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return;
    }
    call.Require(call.Now().uniforms, sampler);
    call.RequireUnlessInvalid(call.Now().textures, texture);
    call.Now().bound.textures[stage] = texture;
    call.Now().bound.samplerFlags[stage] = flags;
}

void setBuffer(uint8_t stage, IndexBufferHandle handle, Access::Enum access) {
    recorder::SetBuffer(&Running::indexBuffers, stage, handle, access);
}

void setBuffer(uint8_t stage, VertexBufferHandle handle, Access::Enum access) {
    recorder::SetBuffer(&Running::vertexBuffers, stage, handle, access);
}

void setBuffer(uint8_t stage, DynamicIndexBufferHandle handle, Access::Enum access) {
    recorder::SetBuffer(&Running::dynamicIndexBuffers, stage, handle, access);
}

void setBuffer(uint8_t stage, DynamicVertexBufferHandle handle, Access::Enum access) {
    recorder::SetBuffer(&Running::dynamicVertexBuffers, stage, handle, access);
}

void setImage(uint8_t stage, TextureHandle texture, uint8_t mip, Access::Enum access,
              TextureFormat::Enum format) {
    Recording call("setImage", Arguments(stage, texture, mip, access, format));
    if (call.IsRunning()) {
        call.RequireUnlessInvalid(call.Now().textures, texture);
    }
}

void touch(ViewId view) {
    Recording call("touch", Arguments(view));
    if (call.IsRunning()) {
        recorder::Discard(call.Now().bound, BGFX_DISCARD_ALL);
    }
}

void submit(ViewId view, ProgramHandle program, uint32_t depth, uint8_t flags) {
    Recording call("submit", Arguments(view, program, depth, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return;
    }
    Running& now = call.Now();
    call.RequireUnlessInvalid(now.programs, program);
    recorder::Draw draw = recorder::Take(now, view, program, flags);
    recorder::TakeGeometry(draw, now.bound);
    draw.depth = depth;
    call.Records().draws.push_back(std::move(draw));
    recorder::Discard(now.bound, flags);
    ++now.numDraws;
}

void dispatch(ViewId view, ProgramHandle program, uint32_t x, uint32_t y, uint32_t z, uint8_t flags) {
    Recording call("dispatch", Arguments(view, program, x, y, z, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return;
    }
    Running& now = call.Now();
    call.RequireUnlessInvalid(now.programs, program);
    recorder::Draw draw = recorder::Take(now, view, program, flags);
    draw.isDispatch = true;
    draw.groups[0] = x;
    draw.groups[1] = y;
    draw.groups[2] = z;
    call.Records().draws.push_back(std::move(draw));
    // As in bgfx: a dispatch leaves transform, state and vertex streams bound.
    now.bound.uniforms.clear();
    recorder::DiscardBindings(now.bound, flags);
    ++now.numDispatches;
}

void discard(uint8_t flags) {
    Recording call("discard", Arguments(Hexadecimal(flags)));
    if (call.IsRunning()) {
        recorder::Discard(call.Now().bound, flags);
    }
}

} // namespace bgfx
