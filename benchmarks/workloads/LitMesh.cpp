// W5: a bumpy sphere of 500,000 lit triangles, handed over anew in each frame, or kept: in static buffers, or
// in a batch.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/Workloads.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/MeshBatch.h>

#include <zx3D/Owned.h>

#include <QColor>
#include <QVector4D>

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>

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

/// A batch under one far light, or buffers like its own with its programs.
class BatchScene : public Scene {
public:
    /// Shiny ones have a highlight.
    explicit BatchScene(bool isShiny)
        : m_program(isShiny ? Program("vs_mesh_lit", "fs_mesh_lit_1")
                            : Program("vs_mesh_diffuse", "fs_mesh_diffuse")),
          m_shininess(isShiny ? 32.0f : 1.0f) {
        m_lights.Add(zx3DQt::BGFXPointLightSource("u_light0", QVector4D(1.0f, 1.0f, 2.0f, 0.0f),
                                                  QColor::fromRgbF(0.2f, 0.2f, 0.2f),
                                                  QColor::fromRgbF(0.8f, 0.8f, 0.8f), Qt::white));
        if (isShiny)
            m_material =
                zx3DQt::BGFXMaterial("u_material", Qt::white, Qt::white, Qt::white, Qt::black, m_shininess);
        FillBatch();
        m_indexBuffer = zx3D::Owned(bgfx::createIndexBuffer(Copy(ChunkIndices())));
        for (int chunk = 0; chunk < kChunks; ++chunk)
            m_vertexBuffers[chunk] =
                zx3D::Owned(bgfx::createVertexBuffer(Copy(Pack(ChunkVertices(chunk))), Layout()));
    }

private:
    /// As the batch has it.
    struct PackedVertex {
        bx::Vec3 position;
        std::array<std::uint8_t, 4> color;
        std::array<std::int16_t, 4> normal;
    };

    static bgfx::VertexLayout Layout() {
        bgfx::VertexLayout layout;
        layout.begin()
            .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, true)
            .add(bgfx::Attrib::Normal, 4, bgfx::AttribType::Int16, true)
            .end();
        return layout;
    }

    static std::vector<PackedVertex> Pack(std::vector<Vertex> const& vertices) {
        std::vector<PackedVertex> packed;
        for (Vertex const& vertex : vertices) {
            bx::Vec3 const& n = vertex.normal;
            double const length = std::hypot(double{n.x}, double{n.y}, double{n.z});
            auto const part = [length](float of) {
                return static_cast<std::int16_t>(std::lround(of / length * 32'767.0));
            };
            std::uint32_t const rgba = vertex.color.ToRGBA();
            auto const byte = [rgba](int shift) { return static_cast<std::uint8_t>(rgba >> shift); };
            packed.push_back({vertex.position,
                              {byte(24), byte(16), byte(8), byte(0)},
                              {part(n.x), part(n.y), part(n.z), 0}});
        }
        return packed;
    }

    template<typename T>
    static bgfx::Memory const* Copy(std::vector<T> const& values) {
        return bgfx::copy(values.data(), static_cast<std::uint32_t>(values.size() * sizeof(T)));
    }

    void FillBatch() {
        std::vector<bx::Vec3> positions;
        std::vector<bx::Vec3> normals;
        std::vector<std::uint32_t> colors;
        std::vector<std::uint32_t> indices;
        for (int row = 0; row <= kQuads; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                Vertex const vertex = MeshVertex(row, column);
                positions.push_back(vertex.position);
                normals.push_back(vertex.normal);
                colors.push_back(vertex.color.ToRGBA());
            }
        }
        for (int chunk = 0; chunk < kChunks; ++chunk) {
            for (std::uint16_t const index : ChunkIndices())
                indices.push_back(static_cast<std::uint32_t>(chunk * kQuadRows * kColumns + index));
        }
        m_batch.Set({.positions = positions, .normals = normals, .colors = colors}, indices);
    }

    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        m_batch.Draw(renderer, view, {.lights = &m_lights, .material = m_material ? &*m_material : nullptr});
    }

    void DrawByHand(bgfx::ViewId view) override {
        using Vec4 = std::array<float, 4>;
        float const highlight = m_material ? 1.0f : 0.0f;
        float const part = 1.0f / std::sqrt(6.0f);
        Vec4 const ofVertices[] = {{1.0f}, {0.0f, 1.0f}, {0.0f, 0.0f, 1.0f}, {}, {0.0f, 1.0f}};
        // Seen from (0, 0, 5); the corners are counter-clockwise from within.
        Vec4 const ofSurface[] = {{0.2f, 0.2f, 0.2f, 1.0f},
                                  {0.0f, 0.0f, 0.0f, m_shininess},
                                  {},
                                  {0.0f, 1.0f, -1.0f, 1.0f},
                                  {0.0f, 0.0f, 5.0f, 1.0f}};
        Vec4 const ofLights[] = {
            {part, part, 2.0f * part}, {0.8f, 0.8f, 0.8f}, {highlight, highlight, highlight}};
        for (auto const& vertexBuffer : m_vertexBuffers) {
            bgfx::setVertexBuffer(0, vertexBuffer.Get());
            bgfx::setIndexBuffer(m_indexBuffer.Get());
            bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
            bgfx::setUniform(m_vertexUniform.Get(), ofVertices, 5);
            bgfx::setUniform(m_surfaceUniform.Get(), ofSurface, 5);
            bgfx::setUniform(m_lightsUniform.Get(), ofLights, 3);
            bgfx::submit(view, m_program);
        }
    }

    static zx3D::Owned<bgfx::UniformHandle> Uniform(char const* name, std::uint16_t count) {
        return zx3D::Owned(bgfx::createUniform(name, bgfx::UniformType::Vec4, count));
    }

    zx3DQt::MeshBatch m_batch;
    zx3DQt::BGFXLightingContext m_lights;
    std::optional<zx3DQt::BGFXMaterial> m_material;
    zx3D::Owned<bgfx::IndexBufferHandle> m_indexBuffer;
    std::array<zx3D::Owned<bgfx::VertexBufferHandle>, kChunks> m_vertexBuffers;
    zx3D::Owned<bgfx::UniformHandle> m_vertexUniform = Uniform("u_meshVertex", 5);
    zx3D::Owned<bgfx::UniformHandle> m_surfaceUniform = Uniform("u_meshSurface", 5);
    zx3D::Owned<bgfx::UniformHandle> m_lightsUniform = Uniform("u_meshLights", 24);
    bgfx::ProgramHandle m_program;
    float m_shininess;
};

} // namespace

WorkloadKind LitMesh() {
    return {.name = "W5",
            .title = "500,000 lit triangles",
            .variants = {"anew", "kept", "batch", "batch-shiny"},
            .create = [](std::string const& variant) -> std::unique_ptr<Workload> {
                if (variant == "kept")
                    return std::make_unique<KeptScene>();
                if (variant.starts_with("batch"))
                    return std::make_unique<BatchScene>(variant == "batch-shiny");
                return std::make_unique<AnewScene>();
            }};
}

} // namespace zarvex::benchmarks
