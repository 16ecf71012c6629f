// What draw operations keep until the next frame starts: a list of buffer resources for each kind.
#pragma once

#include "BufferResources.h"

#include <any>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace zarvex::zx3DQt {

/// Buffers of draw operations, by the tag of their kind.
using ResourceStore = std::map<std::uint8_t, std::vector<std::any>>;

/// The kinds of those that live for a frame.
enum class FrameResource : std::uint8_t {
    PointSpriteInput = 1,     ///< what the compute shader reads
    SpriteVertices = 2,       ///< of point sprites, and of rectangle sprites expanded on the CPU
    RectangleSpriteInput = 3, ///< what the compute shader reads
    RectangleSpriteOutput = 4 ///< vertices that the compute shader writes
};

/// Appends an empty resource of its kind and returns it. Throws `std::bad_any_cast` when the store's element
/// is not of the type asked for.
template<typename V>
DynamicBufferResource<V>& Append(ResourceStore& store, FrameResource kind) {
    using Resource = DynamicBufferResource<V>;
    std::vector<std::any>& resources = store[static_cast<std::uint8_t>(kind)];
    resources.emplace_back(std::make_shared<Resource>());
    return *std::any_cast<std::shared_ptr<Resource> const&>(resources.back());
}

} // namespace zarvex::zx3DQt
