// How a call of any number of sprites is cut into submissions.
#pragma once

#include <zx3D/DataSpan.h>

#include <algorithm>
#include <cstdint>

namespace zarvex::zx3DQt {

/// Sprites that one thread group of the compute shaders expands.
constexpr std::uint32_t kSpritesPerGroup = 64;

/// Every driver lets a shader write 128 MiB of a buffer, and many no more. A wide line takes 384 bytes of
/// them.
constexpr std::uint64_t kMaxSpritesPerSubmission = 4096 * kSpritesPerGroup;

/// Calls `submit` with consecutive parts of the span that are small enough.
template<typename T, typename Submit>
void ForEachSubmission(zx3D::DataSpan<T> sprites, Submit submit) {
    for (std::uint64_t first = 0; first < sprites.count; first += kMaxSpritesPerSubmission)
        submit(zx3D::DataSpan<T>(sprites.data + first,
                                 std::min(sprites.count - first, kMaxSpritesPerSubmission)));
}

/// Groups that it takes to expand `count` sprites.
constexpr std::uint32_t GroupCount(std::uint32_t count) {
    return (count + kSpritesPerGroup - 1) / kSpritesPerGroup;
}

} // namespace zarvex::zx3DQt
