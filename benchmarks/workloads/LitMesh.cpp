// W5: a bumpy sphere of 500,000 lit triangles, handed over anew in each frame or kept in static buffers.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/Workloads.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
using Indices = std::vector<std::uint16_t>;

constexpr int kQuads = 500; ///< in either direction
constexpr int kChunks = 4;  ///< of as many rows as 16-bit indices can address
constexpr int kQuadRows = kQuads / kChunks;
constexpr int kVertexRows = kQuadRows + 1;
constexpr int kColumns = kQuads + 1;

/// A point of the surface; theta runs from pole to pole, phi around.
bx::Vec3 Surface(float theta, float phi) {
    float const r = 2.0f * (1.0f + 0.05f * std::sin(8.0f * theta) * std::sin(8.0f * phi));
    return {r * std::sin(theta) * std::cos(phi), r * std::cos(theta), r * std::sin(theta) * std::sin(phi)};
}

/// The outward normal, by central differences. At the poles, where they vanish, the direction from the
/// centre.
bx::Vec3 Normal(float theta, float phi) {
    constexpr float step = 1e-2f;
    bx::Vec3 const alongTheta = bx::sub(Surface(theta + step, phi), Surface(theta - step, phi));
    bx::Vec3 const alongPhi = bx::sub(Surface(theta, phi + step), Surface(theta, phi - step));
    bx::Vec3 const normal = bx::cross(alongPhi, alongTheta);
    return bx::normalize(bx::length(normal) > 1e-9f ? normal : Surface(theta, phi));
}

Vertex MeshVertex(int row, int column) {
    constexpr float pi = std::numbers::pi_v<float>;
    float const theta = pi * static_cast<float>(row) / kQuads;
    float const phi = 2.0f * pi * static_cast<float>(column) / kQuads;
    return {Surface(theta, phi), Normal(theta, phi), {0.8f, 0.6f, 0.4f, 1.0f}};
}

std::vector<Vertex> ChunkVertices(int chunk) {
    std::vector<Vertex> vertices;
    vertices.reserve(kVertexRows * kColumns);
    for (int row = 0; row < kVertexRows; ++row) {
        for (int column = 0; column < kColumns; ++column)
            vertices.push_back(MeshVertex(chunk * kQuadRows + row, column));
    }
    return vertices;
}

Indices ChunkIndices() {
    Indices indices;
    indices.reserve(kQuadRows * kQuads * 6);
    for (int row = 0; row < kQuadRows; ++row) {
        for (int column = 0; column < kQuads; ++column) {
            auto const first = static_cast<std::uint16_t>(row * kColumns + column);
            auto const below = static_cast<std::uint16_t>(first + kColumns);
            auto const right = static_cast<std::uint16_t>(first + 1);
            auto const opposite = static_cast<std::uint16_t>(below + 1);
            indices.insert(indices.end(), {first, below, right, right, below, opposite});
        }
    }
    return indices;
}

using Chunks = std::array<std::vector<Vertex>, kChunks>;

Chunks BumpySphere() {
    return {ChunkVertices(0), ChunkVertices(1), ChunkVertices(2), ChunkVertices(3)};
}

class AnewScene : public Scene {
public:
    std::size_t GetByteCount() const override {
        return kChunks * (m_chunks[0].size() * sizeof(Vertex) + m_indices.size() * sizeof(std::uint16_t));
    }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        for (std::vector<Vertex> const& vertices : m_chunks)
            renderer.DrawTriangles(view, vertices, m_indices);
    }

    void DrawByHand(bgfx::ViewId view) override {
        for (std::vector<Vertex> const& vertices : m_chunks)
            Submit(view, vertices);
    }

    void Submit(bgfx::ViewId view, std::vector<Vertex> const& vertices) const {
        bgfx::TransientVertexBuffer vertexBuffer;
        bgfx::TransientIndexBuffer indexBuffer;
        bgfx::allocTransientBuffers(&vertexBuffer, m_layout, static_cast<std::uint32_t>(vertices.size()),
                                    &indexBuffer, static_cast<std::uint32_t>(m_indices.size()));
        std::memcpy(vertexBuffer.data, vertices.data(), vertexBuffer.size);
        std::memcpy(indexBuffer.data, m_indices.data(), indexBuffer.size);
        bgfx::setVertexBuffer(0, &vertexBuffer);
        bgfx::setIndexBuffer(&indexBuffer);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_TRANSPARENT);
        bgfx::submit(view, m_program);
    }

    Chunks m_chunks = BumpySphere();
    Indices m_indices = ChunkIndices();
    bgfx::VertexLayout const& m_layout = Vertex::Layout();
    bgfx::ProgramHandle m_program = Program("vs_lighting", "fs_lighting");
};

/// The application's own buffers: the library contributes the frame, the view and the program.
class KeptScene : public Scene {
public:
    KeptScene() {
        Indices const indices = ChunkIndices();
        m_indexBuffer = bgfx::createIndexBuffer(
            bgfx::copy(indices.data(), static_cast<std::uint32_t>(indices.size() * sizeof(std::uint16_t))));
        for (int chunk = 0; chunk < kChunks; ++chunk) {
            std::vector<Vertex> const vertices = ChunkVertices(chunk);
            m_vertexBuffers[chunk] = bgfx::createVertexBuffer(
                bgfx::copy(vertices.data(), static_cast<std::uint32_t>(vertices.size() * sizeof(Vertex))),
                Vertex::Layout());
        }
    }

    ~KeptScene() override {
        bgfx::destroy(m_indexBuffer);
        for (bgfx::VertexBufferHandle const vertexBuffer : m_vertexBuffers)
            bgfx::destroy(vertexBuffer);
    }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        Submit(view, renderer.GetLightingProgram());
    }

    void DrawByHand(bgfx::ViewId view) override { Submit(view, m_program); }

    void Submit(bgfx::ViewId view, bgfx::ProgramHandle program) const {
        for (bgfx::VertexBufferHandle const vertexBuffer : m_vertexBuffers) {
            bgfx::setVertexBuffer(0, vertexBuffer);
            bgfx::setIndexBuffer(m_indexBuffer);
            bgfx::setState(zx3DQt::BGFXRenderer::STATE_TRANSPARENT);
            bgfx::submit(view, program);
        }
    }

    bgfx::IndexBufferHandle m_indexBuffer;
    std::array<bgfx::VertexBufferHandle, kChunks> m_vertexBuffers;
    bgfx::ProgramHandle m_program = Program("vs_lighting", "fs_lighting");
};

} // namespace

WorkloadKind LitMesh() {
    return {.name = "W5",
            .title = "500,000 lit triangles",
            .variants = {"anew", "kept"},
            .create = [](std::string const& variant) -> std::unique_ptr<Workload> {
                if (variant == "kept")
                    return std::make_unique<KeptScene>();
                return std::make_unique<AnewScene>();
            }};
}

} // namespace zarvex::benchmarks
