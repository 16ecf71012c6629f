// The strong aliases of the renderer's interface.
#pragma once

#include <zx3D/TaggedValueType.h>

#include <cstdint>

namespace zarvex::zx3DQt {

struct ModelTransformCacheIdTag {};
struct BGFXRenderStateTag {};

/// Index of a model matrix in bgfx's transform cache. Means that matrix only in the frame in which
/// `BGFXRenderer::SetModelTransform` returned it.
using ModelTransformCacheId = zx3D::TaggedValueType<std::uint32_t, ModelTransformCacheIdTag>;

/// A bgfx render-state word made of `BGFX_STATE_*` flags.
using BGFXRenderState = zx3D::TaggedValueType<std::uint64_t, BGFXRenderStateTag>;

/// The state with further `BGFX_STATE_*` flags.
constexpr BGFXRenderState operator|(BGFXRenderState state, std::uint64_t flags) {
    return BGFXRenderState{state.GetValue() | flags};
}

} // namespace zarvex::zx3DQt
