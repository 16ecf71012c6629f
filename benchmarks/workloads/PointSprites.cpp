// W4: 100,000 points of eight pixels, expanded to squares by a compute shader or on the CPU.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/Variants.h"
#include "workloads/Workloads.h"

#include <algorithm>

namespace zarvex::benchmarks {

namespace {

using Point = zx3D::Vertex::Pos3fColorRGBA;

constexpr std::uint32_t kCount = 100000;
constexpr std::uint16_t kSize = 8;
constexpr std::uint32_t kThreadsPerGroup = 64;

struct Float4 {
    float x, y, z, w;
};

struct Input {
    Float4 position, color;
};

struct Corner {
    Float4 position, color, center;
};

class PointSpritesScene : public Scene {
public:
    explicit PointSpritesScene(bool useCompute) : m_useCompute(useCompute) {
        m_inputLayout.begin()
            .add(bgfx::Attrib::Position, 4, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
            .end();
        m_cornerLayout.begin()
            .add(bgfx::Attrib::Position, 4, bgfx::AttribType::Float)
            .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
            .add(bgfx::Attrib::TexCoord0, 4, bgfx::AttribType::Float)
            .end();
    }

    ~PointSpritesScene() override { DestroyBuffers(); }

    std::size_t GetByteCount() const override {
        return kCount * (m_useCompute ? sizeof(Input) : 6 * sizeof(Corner));
    }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        renderer.DrawPoints(view, m_points, kSize);
    }

    void DrawByHand(bgfx::ViewId view) override {
        DestroyBuffers();
        if (m_useCompute)
            ExpandOnGpu(view);
        else
            ExpandOnCpu();
        bgfx::setVertexBuffer(0, m_corners);
        m_viewport.Set(1280.0f, 720.0f);
        m_sprite.Set(kCount, kSize);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
        bgfx::submit(view, m_program);
    }

    void ExpandOnGpu(bgfx::ViewId view) {
        m_input = bgfx::createDynamicVertexBuffer(kCount, m_inputLayout, BGFX_BUFFER_COMPUTE_READ);
        m_corners = bgfx::createDynamicVertexBuffer(6 * kCount, m_cornerLayout, BGFX_BUFFER_COMPUTE_WRITE);
        bgfx::Memory const* const memory = bgfx::alloc(kCount * sizeof(Input));
        auto* input = reinterpret_cast<Input*>(memory->data);
        for (Point const& point : m_points) {
            auto const& [x, y, z] = point.position;
            auto const& [red, green, blue, alpha] = point.color;
            *input++ = {{x, y, z, 1.0f}, {red, green, blue, alpha}};
        }
        bgfx::update(m_input, 0, memory);
        m_viewport.Set(1280.0f, 720.0f);
        m_sprite.Set(kCount, kSize);
        bgfx::setBuffer(0, m_input, bgfx::Access::Read);
        bgfx::setBuffer(1, m_corners, bgfx::Access::Write);
        bgfx::dispatch(view, m_computeProgram, (kCount + kThreadsPerGroup - 1) / kThreadsPerGroup);
    }

    void ExpandOnCpu() {
        m_corners = bgfx::createDynamicVertexBuffer(6 * kCount, m_cornerLayout);
        bgfx::Memory const* const memory = bgfx::alloc(6 * kCount * sizeof(Corner));
        QMatrix4x4 const toClip = m_stage.GetView().GetProjectionMatrix() * m_stage.GetView().GetViewMatrix();
        float m[16]; // of the loop's own, so that no store into the buffer can change it
        std::copy_n(toClip.constData(), 16, m);
        auto* corner = reinterpret_cast<Corner*>(memory->data);
        for (Point const& point : m_points) {
            auto const& [px, py, pz] = point.position;
            float const x = m[0] * px + m[4] * py + m[8] * pz + m[12];
            float const y = m[1] * px + m[5] * py + m[9] * pz + m[13];
            float const z = m[2] * px + m[6] * py + m[10] * pz + m[14];
            float const w = m[3] * px + m[7] * py + m[11] * pz + m[15];
            float const right = w * kSize / 1280.0f;
            float const up = w * kSize / 720.0f;
            Float4 const color{point.color.red, point.color.green, point.color.blue, point.color.alpha};
            Float4 const center{x / w, y / w, z / w, kSize * 0.5f};
            corner[0] = {{x - right, y - up, z, w}, color, center};
            corner[1] = {{x + right, y - up, z, w}, color, center};
            corner[2] = {{x + right, y + up, z, w}, color, center};
            corner[3] = {{x - right, y - up, z, w}, color, center};
            corner[4] = {{x + right, y + up, z, w}, color, center};
            corner[5] = {{x - right, y + up, z, w}, color, center};
            corner += 6;
        }
        bgfx::update(m_corners, 0, memory);
    }

    void DestroyBuffers() {
        for (bgfx::DynamicVertexBufferHandle* const buffer : {&m_input, &m_corners}) {
            if (bgfx::isValid(*buffer))
                bgfx::destroy(*buffer);
            *buffer = BGFX_INVALID_HANDLE;
        }
    }

    bool m_useCompute;
    std::vector<Point> m_points = RandomPoints(4, kCount);
    bgfx::VertexLayout m_inputLayout, m_cornerLayout;
    bgfx::DynamicVertexBufferHandle m_input = BGFX_INVALID_HANDLE;
    bgfx::DynamicVertexBufferHandle m_corners = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_program = Program("vs_point_sprite", "fs_point_sprite");
    bgfx::ProgramHandle m_computeProgram = ComputeProgram("cs_point_sprite");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_sprite{"u_pointSprite"};
};

} // namespace

WorkloadKind PointSprites() {
    return {.name = "W4",
            .title = "100,000 points, 8 px",
            .variants = ExpansionVariants(),
            .create = [](std::string const& variant) {
                return std::make_unique<PointSpritesScene>(UseCompute(variant));
            }};
}

} // namespace zarvex::benchmarks
