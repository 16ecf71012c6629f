// The vertices that draw operations take, with the layouts that describe them to bgfx.
#pragma once

#include <zx3D/Color.h>
#include <zx3D/zx3DExport.h>

#include <bgfx/bgfx.h>
#include <bx/math.h>

/// The vertices that draw operations take.
namespace zarvex::zx3D::Vertex {

/// Position and colour: 28 bytes.
struct Pos3fColorRGBA {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< in the space of the model transform
    Color color;                         ///< interpolated between vertices

    /// At the origin, transparent black.
    Pos3fColorRGBA() = default;
    /// With the given position and colour.
    Pos3fColorRGBA(bx::Vec3 vertexPosition, Color vertexColor)
        : position(vertexPosition),
          color(vertexColor) {}

    /// Position 3 × Float, Color0 4 × Float. Owned by zx3D, valid for the life of the process.
    ZX3D_EXPORT static bgfx::VertexLayout const& Layout();
};

/// Position, normal and colour: 40 bytes. The normal need not have unit length.
struct Pos3fNormal3fColorRGBA {
    bx::Vec3 position{0.0f, 0.0f, 0.0f}; ///< in the space of the model transform
    bx::Vec3 normal{0.0f, 0.0f, 0.0f};   ///< likewise; (0, 0, 0) faces the viewer
    Color color;                         ///< interpolated between vertices

    /// At the origin, without a normal, transparent black.
    Pos3fNormal3fColorRGBA() = default;
    /// With the given position, normal and colour.
    Pos3fNormal3fColorRGBA(bx::Vec3 vertexPosition, bx::Vec3 vertexNormal, Color vertexColor)
        : position(vertexPosition),
          normal(vertexNormal),
          color(vertexColor) {}

    /// Position 3 × Float, Normal 3 × Float, Color0 4 × Float. Owned by zx3D, valid for the life of the
    /// process.
    ZX3D_EXPORT static bgfx::VertexLayout const& Layout();
};

static_assert(sizeof(Pos3fColorRGBA) == 28 && sizeof(Pos3fNormal3fColorRGBA) == 40,
              "copied to GPU buffers as they stand");

} // namespace zarvex::zx3D::Vertex
