// W1: 100,000 segments of one pixel, handed over anew in each frame, or kept.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Variants.h"
#include "workloads/Workloads.h"

#include <zx3DQt/LineBatch.h>

#include <algorithm>

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

/// As many as 16-bit indices can address the ends of.
constexpr std::size_t kLinesPerSubmission = 32768;

class ThinLinesScene : public Scene {
public:
    explicit ThinLinesScene(std::size_t count) : m_lines(RandomSegments(1, count)) {}

    std::size_t GetByteCount() const override {
        return m_lines.size() * 2 * (sizeof(Vertex) + sizeof(std::uint16_t));
    }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        renderer.DrawLines(view, m_lines);
    }

    void DrawByHand(bgfx::ViewId view) override {
        for (std::size_t first = 0; first < m_lines.size(); first += kLinesPerSubmission)
            Submit(view, &m_lines[first], std::min(m_lines.size() - first, kLinesPerSubmission));
    }

    void Submit(bgfx::ViewId view, zx3D::Line const* lines, std::size_t count) const {
        auto const vertexCount = static_cast<std::uint32_t>(2 * count);
        bgfx::TransientVertexBuffer vertexBuffer;
        bgfx::TransientIndexBuffer indexBuffer;
        bgfx::allocTransientBuffers(&vertexBuffer, m_layout, vertexCount, &indexBuffer, vertexCount);
        auto* const vertices = reinterpret_cast<Vertex*>(vertexBuffer.data);
        auto* const indices = reinterpret_cast<std::uint16_t*>(indexBuffer.data);
        for (std::size_t i = 0; i < count; ++i) {
            vertices[2 * i].position = lines[i].start;
            vertices[2 * i].color = lines[i].color;
            vertices[2 * i + 1].position = lines[i].end;
            vertices[2 * i + 1].color = lines[i].color;
        }
        for (std::uint32_t i = 0; i < vertexCount; ++i)
            indices[i] = static_cast<std::uint16_t>(i);
        bgfx::setVertexBuffer(0, &vertexBuffer);
        bgfx::setIndexBuffer(&indexBuffer);
        m_viewport.Set(1280.0f, 720.0f);
        m_stipple.Set(65535.0f, 1.0f);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_LINES);
        bgfx::submit(view, m_program);
    }

    std::vector<zx3D::Line> m_lines;
    bgfx::VertexLayout const& m_layout = Vertex::Layout();
    bgfx::ProgramHandle m_program = Program("vs_line_opengl_stipple", "fs_line_opengl_stipple");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_stipple{"u_lineStipple"};
};

/// The same segments in a batch, or in a vertex buffer.
class KeptLinesScene : public Scene {
public:
    KeptLinesScene() {
        m_batch.Set(KeptSegments(m_lines));
        std::vector<Vertex> vertices;
        for (zx3D::Line const& line : m_lines) {
            vertices.push_back(Vertex{line.start, line.color});
            vertices.push_back(Vertex{line.end, line.color});
        }
        m_vertices = bgfx::createVertexBuffer(
            bgfx::copy(vertices.data(), static_cast<std::uint32_t>(vertices.size() * sizeof(Vertex))),
            Vertex::Layout());
    }
    ~KeptLinesScene() override { bgfx::destroy(m_vertices); }

    std::size_t GetByteCount() const override { return 0; }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        m_batch.Draw(renderer, view);
    }

    void DrawByHand(bgfx::ViewId view) override {
        bgfx::setVertexBuffer(0, m_vertices);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_LINES);
        bgfx::submit(view, m_program);
    }

    std::vector<zx3D::Line> m_lines = RandomSegments(1, 100'000);
    zx3DQt::LineBatch m_batch;
    bgfx::VertexBufferHandle m_vertices;
    bgfx::ProgramHandle m_program = Program("vs_basic", "fs_basic");
};

std::vector<std::string> Variants() {
    std::vector<std::string> variants = SizeVariants();
    variants.push_back("kept");
    return variants;
}

} // namespace

WorkloadKind ThinLines() {
    return {.name = "W1",
            .title = "100,000 segments, 1 px",
            .variants = Variants(),
            .create = [](std::string const& variant) -> std::unique_ptr<Scene> {
                if (variant == "kept")
                    return std::make_unique<KeptLinesScene>();
                return std::make_unique<ThinLinesScene>(PartOf(100000, variant));
            }};
}

} // namespace zarvex::benchmarks
