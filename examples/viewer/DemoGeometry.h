// The exhibits of the built-in scene, as the draw operations take them.
#pragma once

#include "MeshContent.h"

#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <QVector2D>

#include <cstdint>
#include <vector>

namespace viewer {

/// From blue through teal and amber to coral; `t` is 0 to 1.
zarvex::zx3D::Color DemoColor(float t);

/// Where the exhibits stand, on the ground.
namespace Stand {

inline constexpr QVector2D kThinLines(-4.6f, 4.6f);
inline constexpr QVector2D kWideLines(0.0f, 4.6f);
inline constexpr QVector2D kStipples(4.6f, 4.6f);
inline constexpr QVector2D kPoints(-4.6f, 0.0f);
inline constexpr QVector2D kSprites(4.6f, 0.0f);
inline constexpr QVector2D kTriangles(-4.6f, -4.6f);
inline constexpr QVector2D kLitTriangles(0.0f, -4.6f);
inline constexpr QVector2D kShapes(4.6f, -4.6f);

} // namespace Stand

/// Made once; each exhibit is where its stand is, but for the knot, which lies around the origin.
struct DemoGeometry {
    using Vertex = zarvex::zx3D::Vertex::Pos3fColorRGBA;
    using Lines = std::vector<zarvex::zx3D::Line>;

    /// Lines that are drawn alike.
    struct Arch {
        float width = 1.0f; ///< device-independent pixels
        Lines lines;
    };
    struct StippledLine {
        float width = 1.0f;
        zarvex::zx3D::LineStipplePattern pattern;
        Lines lines;
    };
    struct Sprite {
        float size = 1.0f;
        Vertex point;
    };
    template<typename V>
    struct Triangles {
        std::vector<V> vertices;
        std::vector<std::uint16_t> indices;
    };

    DemoGeometry();

    Lines hyperboloid;
    std::vector<Arch> arches;
    std::vector<StippledLine> fan;
    std::vector<Vertex> sphere;
    std::vector<Sprite> spiral;
    Triangles<Vertex> cube;
    Triangles<MeshVertex> knot;
};

} // namespace viewer
