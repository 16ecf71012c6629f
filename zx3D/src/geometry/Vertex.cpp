// The bgfx layouts of the vertex types.
#include <zx3D/Vertex.h>

namespace zarvex::zx3D::Vertex {

bgfx::VertexLayout const& Pos3fColorRGBA::Layout() {
    static bgfx::VertexLayout const layout = [] {
        bgfx::VertexLayout l;
        l.begin()
            .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
            .end();
        return l;
    }();
    return layout;
}

bgfx::VertexLayout const& Pos3fNormal3fColorRGBA::Layout() {
    static bgfx::VertexLayout const layout = [] {
        bgfx::VertexLayout l;
        l.begin()
            .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Normal, 3, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
            .end();
        return l;
    }();
    return layout;
}

} // namespace zarvex::zx3D::Vertex
