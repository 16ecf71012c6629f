// Vertices without buffers.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// For the next submission: so many vertices, which a shader makes of their indices. Noop does not have them,
/// and a debug build of bgfx stops there; it draws nothing anyway. OpenGL may have them without saying so.
inline void SetVertexCount(std::uint32_t count) {
    bool const isKnown = (bgfx::getCaps()->supported & BGFX_CAPS_VERTEX_ID) != 0;
    if (isKnown || bgfx::getRendererType() != bgfx::RendererType::Noop)
        bgfx::setVertexCount(count);
}

} // namespace zarvex::zx3DQt
