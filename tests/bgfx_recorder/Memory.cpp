// Memory that callers hand to bgfx: copied, or only referred to until bgfx lets go.
#include "State.h"

namespace bgfx {

using recorder::Arguments;
using recorder::CopyBytes;
using recorder::MemoryBlock;
using recorder::Recording;

namespace {

Memory const* Describe(MemoryBlock& block, void const* data, uint32_t size) {
    Memory* const memory = block.Memory();
    memory->data = static_cast<uint8_t*>(const_cast<void*>(data));
    memory->size = size;
    return memory;
}

} // namespace

Memory const* alloc(uint32_t size) {
    Recording call("alloc", Arguments(size));
    MemoryBlock& block = call.Records().AddMemory();
    block.own.resize(size);
    return Describe(block, block.own.data(), size);
}

Memory const* copy(void const* data, uint32_t size) {
    Recording call("copy", Arguments(size));
    MemoryBlock& block = call.Records().AddMemory();
    block.own = CopyBytes(data, size);
    call.Payload(block.own);
    return Describe(block, block.own.data(), size);
}

Memory const* makeRef(void const* data, uint32_t size, ReleaseFn release, void* userData) {
    Recording call("makeRef", Arguments(size));
    call.Payload(CopyBytes(data, size));
    MemoryBlock& block = call.Records().AddMemory();
    block.release = release;
    block.userData = userData;
    return Describe(block, data, size);
}

} // namespace bgfx
