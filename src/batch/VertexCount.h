// Vertices without buffers.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// For the next submission: so many vertices, which a shader makes of their indices. Noop draws none, and a
/// debug build of bgfx stops when it is told of them.
inline void SetVertexCount(std::uint32_t count) {
    if (bgfx::getRendererType() != bgfx::RendererType::Noop)
        bgfx::setVertexCount(count);
}

} // namespace zarvex::zx3DQt
