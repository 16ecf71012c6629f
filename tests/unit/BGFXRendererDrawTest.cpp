// What the draw operations submit.
#include <zx3DQt/BGFXRenderer.h>

#include <Fixtures.h>

#include <array>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

class DrawTrianglesTest : public LibraryFixture {
protected:
    void SetUp() override {
        LibraryFixture::SetUp();
        m_renderer.emplace();
        m_renderer->Initialize();
        recorder::ClearCalls();
    }

    void TearDown() override {
        m_renderer.reset();
        LibraryFixture::TearDown();
    }

    /// The one draw that was recorded.
    static recorder::Draw TheDraw() {
        std::vector<recorder::Draw> const draws = recorder::Draws();
        EXPECT_THAT(draws, SizeIs(1));
        return draws.empty() ? recorder::Draw() : draws[0];
    }

    std::optional<BGFXRenderer> m_renderer;
    std::array<Vertex, 3> const m_vertices{Vertex({1, 2, 3}, {0.1f, 0.2f, 0.3f, 0.4f}),
                                           Vertex({4, 5, 6}, {0.5f, 0.6f, 0.7f, 0.8f}),
                                           Vertex({7, 8, 9}, {0.9f, 1.0f, 0.0f, 0.25f})};
    std::array<std::uint16_t, 4> const m_indices{2, 0, 1, 2};
    BGFXViewContext const m_view{5};
};

} // namespace

TEST_F(DrawTrianglesTest, CallsBgfxInOrder) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    std::string const program = "program#" + std::to_string(m_renderer->GetBasicProgram().idx);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientBuffers(3, 28, 4, false)", "setState(0x400000002f, 0x0)",
                            "setVertexBuffer(0, transient)", "setIndexBuffer(transient)",
                            "setTransform(cache#0, 1)", "submit(5, " + program + ", 0, 0xff)"));
}

TEST_F(DrawTrianglesTest, CopiesVerticesAndIndicesUnchanged) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.stride, sizeof(Vertex));
    EXPECT_EQ(draw.VerticesAs<float>(),
              std::vector<float>({1,    2,    3,    0.1f, 0.2f, 0.3f, 0.4f, 4,    5,    6,    0.5f,
                                  0.6f, 0.7f, 0.8f, 7,    8,    9,    0.9f, 1.0f, 0.0f, 0.25f}));
    EXPECT_THAT(draw.IndicesAs<std::uint16_t>(), ElementsAre(2, 0, 1, 2));
}

TEST_F(DrawTrianglesTest, EmptySpansDrawNothing) {
    using Vertices = zx3D::DataSpan<Vertex const>;
    using Indices = zx3D::DataSpan<std::uint16_t const>;
    m_renderer->DrawTriangles(m_view, m_vertices, Indices());
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(m_indices.data(), 0));
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(nullptr, 3));
    m_renderer->DrawTriangles(m_view, Vertices(), m_indices);
    m_renderer->DrawTriangles(m_view, Vertices(m_vertices.data(), 0), m_indices);
    m_renderer->DrawTriangles(m_view, Vertices(nullptr, 3), m_indices);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawTrianglesTest, AGivenStateReplacesTheDefault) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices, std::nullopt, BGFXRenderer::STATE_TRANSPARENT);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
}

TEST_F(DrawTrianglesTest, WithoutATransformTheCurrentOneApplies) {
    m_renderer->SetModelTransform(QMatrix4x4());
    QMatrix4x4 current;
    current.translate(3.0f, 0.0f, 0.0f);
    m_renderer->SetModelTransform(current);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_EQ(TheDraw().transform, 2u);
    EXPECT_EQ(TheDraw().matrix, std::vector<float>(current.constData(), current.constData() + 16));
}

TEST_F(DrawTrianglesTest, AGivenTransformIsUsedAndStaysNotCurrent) {
    ModelTransformCacheId const first = m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices, first);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    EXPECT_EQ(draws[0].transform, std::uint32_t(first));
    EXPECT_EQ(draws[1].transform, 2u);
}

TEST_F(DrawTrianglesTest, TheCurrentTransformIdOutlivesTheStartOfAFrame) {
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    frameBuffer.RequestResize(800, 600);
    ASSERT_TRUE(m_renderer->StartFrame(frameBuffer));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(m_renderer->StartFrame(frameBuffer));
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_EQ(TheDraw().transform, 2u);
}

TEST_F(DrawTrianglesTest, IndicesAreNotChecked) {
    std::array<std::uint16_t, 2> const beyond{9, 65535};
    m_renderer->DrawTriangles(m_view, m_vertices, beyond);
    EXPECT_THAT(TheDraw().IndicesAs<std::uint16_t>(), ElementsAre(9, 65535));
}

TEST_F(DrawTrianglesTest, SetsNoUniform) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_EQ(recorder::CountCalls("setUniform"), 0u);
}

TEST_F(DrawTrianglesTest, TheDataAreCopiedBeforeTheCallReturns) {
    std::vector<Vertex> vertices(m_vertices.begin(), m_vertices.end());
    m_renderer->DrawTriangles(m_view, vertices, m_indices);
    vertices[0].position.x = 99.0f;
    EXPECT_EQ(TheDraw().VerticesAs<float>()[0], 1.0f);
}
