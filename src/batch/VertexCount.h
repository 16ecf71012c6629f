// Vertices without buffers.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// Whether shaders know the indices of vertices and instances. Noop has none, and a debug build of bgfx stops
/// there at their counts; it draws nothing anyway. OpenGL may have them without saying so.
inline bool HasVertexIndices() {
    bool const isKnown = (bgfx::getCaps()->supported & BGFX_CAPS_VERTEX_ID) != 0;
    return isKnown || bgfx::getRendererType() != bgfx::RendererType::Noop;
}

/// Whether shaders know the indices of triangles. OpenGL has them without saying so.
inline bool HasTriangleIndices() {
    bool const isKnown = (bgfx::getCaps()->supported & BGFX_CAPS_PRIMITIVE_ID) != 0;
    return isKnown || bgfx::getRendererType() == bgfx::RendererType::OpenGL;
}

/// For the next submission: so many vertices, which a shader makes of their indices.
inline void SetVertexCount(std::uint32_t count) {
    if (HasVertexIndices())
        bgfx::setVertexCount(count);
}

/// For the next submission: so many instances of its vertices.
inline void SetInstanceCount(std::uint32_t count) {
    if (HasVertexIndices())
        bgfx::setInstanceCount(count);
}

} // namespace zarvex::zx3DQt
