// A texture over a whole view.
#include <zx3DQt/BGFXRenderer.h>

#include "Drawing.h"

#include <limits>

namespace zarvex::zx3DQt {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using FullscreenTriangle = StaticBufferResource<Vertex, std::uint16_t>;

/// The only kind of persistent resource.
constexpr std::uint8_t kFullscreenTriangle = 0;

/// Three vertices without a position: the vertex shader makes the triangle from the vertex index.
std::shared_ptr<FullscreenTriangle> CreateFullscreenTriangle() {
    auto triangle = std::make_shared<FullscreenTriangle>();
    triangle->vertices = std::make_shared<Vertex[]>(3);
    triangle->vertexBuffer = zx3D::Owned(
        bgfx::createVertexBuffer(MakeSharedRef(triangle->vertices, 3), Vertex::Layout(), BGFX_BUFFER_NONE));
    triangle->indices.reset(new std::uint16_t[]{0, 1, 2});
    triangle->indexBuffer =
        zx3D::Owned(bgfx::createIndexBuffer(MakeSharedRef(triangle->indices, 3), BGFX_BUFFER_NONE));
    return triangle;
}

} // namespace

void Drawing::DrawFullscreenTexture(std::uint16_t viewId, bgfx::TextureHandle texture) {
    if (!Begin(GetProgram(Program::FullscreenTexture)))
        return;
    std::vector<std::any>& resources = m_persistentResources[kFullscreenTriangle];
    if (resources.empty())
        resources.emplace_back(CreateFullscreenTriangle());
    auto const& triangle = *std::any_cast<std::shared_ptr<FullscreenTriangle> const&>(resources.front());

    if (!triangle.vertexBuffer || !triangle.indexBuffer) {
        resources.clear();
        return m_counter.LeaveOut(LeftOutReason::NoBuffer);
    }

    constexpr std::uint32_t samplerFlagsOfTexture = std::numeric_limits<std::uint32_t>::max();
    bgfx::setState(ForView(viewId, BGFXRenderState{BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A}));
    bgfx::setVertexBuffer(0, triangle.vertexBuffer.Get());
    bgfx::setIndexBuffer(triangle.indexBuffer.Get());
    bgfx::setTexture(0, GetUniform(Uniform::FullscreenTexture), texture, samplerFlagsOfTexture);
    bgfx::submit(viewId, GetProgram(Program::FullscreenTexture), 0, BGFX_DISCARD_ALL);
    m_counter.AddPrimitives(1, 0);
}

void BGFXRenderer::DrawFullscreenTexture(std::uint16_t viewId, bgfx::TextureHandle texture) const {
    m_drawing->DrawFullscreenTexture(viewId, texture);
}

} // namespace zarvex::zx3DQt
