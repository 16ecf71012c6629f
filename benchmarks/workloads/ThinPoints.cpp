// W3: 1,000,000 points of one pixel, handed over anew in each frame.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Variants.h"
#include "workloads/Workloads.h"

#include <cstring>

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

class ThinPointsScene : public Scene {
public:
    explicit ThinPointsScene(std::size_t count) : m_points(RandomPoints(3, count)) {}

    std::size_t GetByteCount() const override { return m_points.size() * sizeof(Vertex); }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        renderer.DrawPoints(view, m_points);
    }

    void DrawByHand(bgfx::ViewId view) override {
        bgfx::TransientVertexBuffer vertexBuffer;
        bgfx::allocTransientVertexBuffer(&vertexBuffer, static_cast<std::uint32_t>(m_points.size()),
                                         m_layout);
        std::memcpy(vertexBuffer.data, m_points.data(), vertexBuffer.size);
        bgfx::setVertexBuffer(0, &vertexBuffer);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_POINTS);
        bgfx::submit(view, m_program);
    }

    std::vector<Vertex> m_points;
    bgfx::VertexLayout const& m_layout = Vertex::Layout();
    bgfx::ProgramHandle m_program = Program("vs_basic", "fs_basic");
};

} // namespace

WorkloadKind ThinPoints() {
    return {.name = "W3",
            .title = "1,000,000 points, 1 px",
            .variants = SizeVariants(),
            .create = [](std::string const& variant) {
                return std::make_unique<ThinPointsScene>(PartOf(1000000, variant));
            }};
}

} // namespace zarvex::benchmarks
