// Smooth outlines that a fragment shader computes, in targets of several samples.
#pragma once

#include <zx3DQt/RenderTypes.h>

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// For states that do not blend: alpha is how much of a pixel is covered. What the target has of it grows to
/// 1, where it is not 1 anyway.
constexpr std::uint64_t kAlphaIsCoverage =
    BGFX_STATE_BLEND_ALPHA_TO_COVERAGE |
    BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_ZERO, BGFX_STATE_BLEND_ONE,
                                   BGFX_STATE_BLEND_INV_SRC_ALPHA);

inline bool Blends(BGFXRenderState state) {
    return (state.GetValue() & BGFX_STATE_BLEND_MASK) != 0;
}

} // namespace zarvex::zx3DQt
