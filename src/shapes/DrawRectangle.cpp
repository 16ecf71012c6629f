// A rectangle as two triangles.
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Shapes.h>

namespace zarvex::zx3DQt {

void DrawRectangle(BGFXRenderer const& renderer, BGFXViewContext const& view, QVector2D const& center,
                   QVector2D const& halfExtents, zx3D::Color const& color, float z, BGFXRenderState state) {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    static constexpr std::uint16_t indices[] = {0, 1, 2, 2, 3, 0};
    QVector2D const min = center - halfExtents;
    QVector2D const max = center + halfExtents;
    Vertex const vertices[] = {Vertex({min.x(), min.y(), z}, color), Vertex({min.x(), max.y(), z}, color),
                               Vertex({max.x(), max.y(), z}, color), Vertex({max.x(), min.y(), z}, color)};
    renderer.DrawTriangles(view, vertices, indices, std::nullopt, state);
}

void DrawRectangle(BGFXRenderer const& renderer, BGFXViewContext const& view,
                   BGFXRectangleModel2D const& model, float z, BGFXRenderState state) {
    DrawRectangle(renderer, view, model.center, model.halfExtents, model.color, z, state);
}

} // namespace zarvex::zx3DQt
