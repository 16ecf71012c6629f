// W9: 10,000 segments of one pixel, one call for each.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Workloads.h"

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr std::uint32_t kThinLines = 1; ///< whose first segments these are

class ManyCallsScene : public Scene {
private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        for (zx3D::Line const& line : m_lines)
            renderer.DrawLines(view, zx3D::DataSpan<zx3D::Line const>(&line, 1));
    }

    void DrawByHand(bgfx::ViewId view) override {
        for (zx3D::Line const& line : m_lines)
            Submit(view, line);
    }

    void Submit(bgfx::ViewId view, zx3D::Line const& line) const {
        bgfx::TransientVertexBuffer vertexBuffer;
        bgfx::TransientIndexBuffer indexBuffer;
        bgfx::allocTransientBuffers(&vertexBuffer, m_layout, 2, &indexBuffer, 2);
        auto* const vertices = reinterpret_cast<Vertex*>(vertexBuffer.data);
        auto* const indices = reinterpret_cast<std::uint16_t*>(indexBuffer.data);
        vertices[0] = {line.start, line.color};
        vertices[1] = {line.end, line.color};
        indices[0] = 0;
        indices[1] = 1;
        bgfx::setVertexBuffer(0, &vertexBuffer);
        bgfx::setIndexBuffer(&indexBuffer);
        m_viewport.Set(1280.0f, 720.0f);
        m_stipple.Set(65535.0f, 1.0f);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_LINES);
        bgfx::submit(view, m_program);
    }

    std::vector<zx3D::Line> m_lines = RandomSegments(kThinLines, 10000);
    bgfx::VertexLayout const& m_layout = Vertex::Layout();
    bgfx::ProgramHandle m_program = Program("vs_line_opengl_stipple", "fs_line_opengl_stipple");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_stipple{"u_lineStipple"};
};

} // namespace

WorkloadKind ManyCalls() {
    // The Vulkan driver takes dozens of frames until its pools are as large as this needs.
    return {.name = "W9",
            .title = "10,000 segments, one call for each",
            .variants = {"calls"},
            .warmUpFrames = 45,
            .create = [](std::string const&) { return std::make_unique<ManyCallsScene>(); }};
}

} // namespace zarvex::benchmarks
