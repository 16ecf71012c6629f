// W2: 20,000 segments of four pixels, expanded to rectangles by a compute shader or on the CPU, or kept.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Variants.h"
#include "workloads/WideLinesByHand.h"
#include "workloads/Workloads.h"

#include <zx3DQt/LineBatch.h>

#include <algorithm>
#include <cmath>

namespace zarvex::benchmarks {

namespace {

constexpr std::uint32_t kCount = 20000;
constexpr std::uint16_t kWidth = 4;

struct Float4 {
    float x, y, z, w;
};

struct Corner {
    Float4 corner, color, start, end;
};

/// Viewport pixels, y down; NDC z.
Float4 Project(float const* m, bx::Vec3 const& p) {
    float const x = m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12];
    float const y = m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13];
    float const z = m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14];
    float const w = m[3] * p.x + m[7] * p.y + m[11] * p.z + m[15];
    return {(x / w + 1.0f) * 0.5f * 1280.0f, (1.0f - y / w) * 0.5f * 720.0f, z / w, 1.0f};
}

Float4 ToNdc(float x, float y, float depth) {
    return {2.0f * x / 1280.0f - 1.0f, -(2.0f * y / 720.0f - 1.0f), depth, 1.0f};
}

class WideLinesScene : public Scene {
public:
    explicit WideLinesScene(bool useCompute) : m_useCompute(useCompute) {}
    ~WideLinesScene() override { DestroyCorners(); }

    std::size_t GetByteCount() const override {
        return kCount * (m_useCompute ? 3 * sizeof(Float4) : 6 * sizeof(Corner));
    }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        renderer.DrawLines(view, m_lines, kWidth);
    }

    void DrawByHand(bgfx::ViewId view) override {
        if (m_useCompute) {
            m_onGpu.DestroyBuffers();
            m_onGpu.Submit(view, m_lines, kWidth, 0xffff);
        } else {
            DestroyCorners();
            ExpandOnCpu();
            SubmitCorners(view);
        }
    }

    void SubmitCorners(bgfx::ViewId view) const {
        bgfx::setVertexBuffer(0, m_corners);
        m_viewport.Set(1280.0f, 720.0f);
        m_sprite.Set(kCount, kWidth);
        m_stipple.Set(65535.0f, 1.0f);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
        bgfx::submit(view, m_program);
    }

    void ExpandOnCpu() {
        m_corners = bgfx::createDynamicVertexBuffer(6 * kCount, m_cornerLayout);
        bgfx::Memory const* const memory = bgfx::alloc(6 * kCount * sizeof(Corner));
        QMatrix4x4 const toClip = m_stage.GetView().GetProjectionMatrix() * m_stage.GetView().GetViewMatrix();
        float m[16]; // of the loop's own, so that no store into the buffer can change it
        std::copy_n(toClip.constData(), 16, m);
        auto* vertices = reinterpret_cast<Corner*>(memory->data);
        for (zx3D::Line const& line : m_lines) {
            Float4 const start = Project(m, line.start);
            Float4 const end = Project(m, line.end);
            Float4 const color{line.color.red, line.color.green, line.color.blue, line.color.alpha};
            float const x = end.x - start.x;
            float const y = end.y - start.y;
            float const length = std::sqrt(x * x + y * y);
            float const offsetX = -(y / length) * (kWidth * 0.5f);
            float const offsetY = x / length * (kWidth * 0.5f);
            Float4 corners[4] = {};
            if (length > 1e-5f) {
                corners[0] = ToNdc(start.x - offsetX, start.y - offsetY, start.z);
                corners[1] = ToNdc(end.x - offsetX, end.y - offsetY, end.z);
                corners[2] = ToNdc(end.x + offsetX, end.y + offsetY, end.z);
                corners[3] = ToNdc(start.x + offsetX, start.y + offsetY, start.z);
            }
            vertices[0] = {corners[0], color, start, end};
            vertices[1] = {corners[1], color, start, end};
            vertices[2] = {corners[2], color, start, end};
            vertices[3] = {corners[2], color, start, end};
            vertices[4] = {corners[3], color, start, end};
            vertices[5] = {corners[0], color, start, end};
            vertices += 6;
        }
        bgfx::update(m_corners, 0, memory);
    }

    void DestroyCorners() {
        if (bgfx::isValid(m_corners))
            bgfx::destroy(m_corners);
        m_corners = BGFX_INVALID_HANDLE;
    }

    bool m_useCompute;
    std::vector<zx3D::Line> m_lines = RandomSegments(2, kCount);
    WideLinesByHand m_onGpu;
    bgfx::VertexLayout m_cornerLayout = WideLineCornerLayout();
    bgfx::DynamicVertexBufferHandle m_corners = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_program = Program("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_sprite{"u_rectangleSprite"};
    Vec4Uniform m_stipple{"u_lineStipple"};
};

/// The same segments in a batch; by hand, their rectangles in a vertex buffer, for one camera.
class KeptWideLinesScene : public Scene {
public:
    KeptWideLinesScene() {
        m_batch.Set(KeptSegments(m_lines));
        QMatrix4x4 const projection = m_stage.GetView().GetProjectionMatrix();
        QMatrix4x4 const view = m_stage.GetView().GetViewMatrix();
        QMatrix4x4 const toClip = projection * view;
        std::vector<Vertex> vertices;
        for (zx3D::Line const& line : m_lines) {
            Float4 const start = Project(toClip.constData(), line.start);
            Float4 const end = Project(toClip.constData(), line.end);
            float const length = std::hypot(end.x - start.x, end.y - start.y);
            float const x = -(end.y - start.y) / length * (kWidth * 0.5f) * 2.0f / 1280.0f / projection(0, 0);
            float const y = (end.x - start.x) / length * (kWidth * 0.5f) * -2.0f / 720.0f / projection(1, 1);
            // Beside an end as many pixels as half the width, in the plane of the picture.
            auto const corner = [&](bx::Vec3 const& position, float side) {
                QVector3D const place(position.x, position.y, position.z);
                float const w = side * QVector4D::dotProduct(toClip.row(3), QVector4D(place, 1.0f));
                QVector3D const moved =
                    place + w * x * view.row(0).toVector3D() + w * y * view.row(1).toVector3D();
                return Vertex{{moved.x(), moved.y(), moved.z()}, line.color};
            };
            vertices.insert(vertices.end(),
                            {corner(line.start, -1.0f), corner(line.end, -1.0f), corner(line.end, 1.0f),
                             corner(line.end, 1.0f), corner(line.start, 1.0f), corner(line.start, -1.0f)});
        }
        m_vertices = bgfx::createVertexBuffer(
            bgfx::copy(vertices.data(), static_cast<std::uint32_t>(vertices.size() * sizeof(Vertex))),
            Vertex::Layout());
    }
    ~KeptWideLinesScene() override { bgfx::destroy(m_vertices); }

    std::size_t GetByteCount() const override { return 0; }

private:
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;

    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        m_batch.Draw(renderer, view, {.width = kWidth});
    }

    void DrawByHand(bgfx::ViewId view) override {
        bgfx::setVertexBuffer(0, m_vertices);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
        bgfx::submit(view, m_program);
    }

    std::vector<zx3D::Line> m_lines = RandomSegments(2, kCount);
    zx3DQt::LineBatch m_batch;
    bgfx::VertexBufferHandle m_vertices;
    bgfx::ProgramHandle m_program = Program("vs_basic", "fs_basic");
};

std::vector<std::string> Variants() {
    std::vector<std::string> variants = ExpansionVariants();
    variants.push_back("kept");
    return variants;
}

} // namespace

WorkloadKind WideLines() {
    return {.name = "W2",
            .title = "20,000 segments, 4 px",
            .variants = Variants(),
            .create = [](std::string const& variant) -> std::unique_ptr<Scene> {
                if (variant == "kept")
                    return std::make_unique<KeptWideLinesScene>();
                return std::make_unique<WideLinesScene>(UseCompute(variant));
            }};
}

} // namespace zarvex::benchmarks
