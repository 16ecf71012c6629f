// W3: 1,000,000 points of one pixel, handed over anew in each frame, or kept.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Variants.h"
#include "workloads/Workloads.h"

#include <zx3DQt/PointBatch.h>

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

/// The same points in a batch, or in a vertex buffer.
class KeptPointsScene : public Scene {
public:
    KeptPointsScene() {
        std::vector<zx3DQt::ColoredPoint> points;
        for (Vertex const& point : m_points)
            points.push_back({point.position, point.color.ToRGBA()});
        m_batch.Set(points);
        m_vertices = bgfx::createVertexBuffer(
            bgfx::copy(m_points.data(), static_cast<std::uint32_t>(m_points.size() * sizeof(Vertex))),
            Vertex::Layout());
    }
    ~KeptPointsScene() override { bgfx::destroy(m_vertices); }

    std::size_t GetByteCount() const override { return 0; }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        m_batch.Draw(renderer, view);
    }

    void DrawByHand(bgfx::ViewId view) override {
        bgfx::setVertexBuffer(0, m_vertices);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_POINTS);
        bgfx::submit(view, m_program);
    }

    std::vector<Vertex> m_points = RandomPoints(3, 1'000'000);
    zx3DQt::PointBatch m_batch;
    bgfx::VertexBufferHandle m_vertices;
    bgfx::ProgramHandle m_program = Program("vs_basic", "fs_basic");
};

std::vector<std::string> Variants() {
    std::vector<std::string> variants = SizeVariants();
    variants.push_back("kept");
    return variants;
}

} // namespace

WorkloadKind ThinPoints() {
    return {.name = "W3",
            .title = "1,000,000 points, 1 px",
            .variants = Variants(),
            .create = [](std::string const& variant) -> std::unique_ptr<Scene> {
                if (variant == "kept")
                    return std::make_unique<KeptPointsScene>();
                return std::make_unique<ThinPointsScene>(PartOf(1000000, variant));
            }};
}

} // namespace zarvex::benchmarks
