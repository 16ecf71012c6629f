// What a draw operation was told beside its data.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/RenderTypes.h>

#include <zx3D/Line.h>

#include <cstdint>

namespace zarvex::zx3DQt {

struct FadeUniforms;

/// The arguments that all draw operations have in common, with what was absent filled in.
struct DrawCall {
    BGFXViewContext const& view;
    std::uint32_t transform; ///< of the model, in bgfx's transform cache
    BGFXRenderState state;
    zx3D::LineStipplePattern stipple;   ///< of lines
    FadeUniforms const* fade = nullptr; ///< of lines that fade
};

} // namespace zarvex::zx3DQt
