// Triangles: what is submitted for unlit and for lit ones.
#include <DrawFixture.h>
#include <Warnings.h>

#include <array>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using LitVertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
using Vertices = zx3D::DataSpan<Vertex const>;
using LitVertices = zx3D::DataSpan<LitVertex const>;
using Indices = zx3D::DataSpan<std::uint16_t const>;

constexpr std::uint64_t kBeyond32Bits = (std::uint64_t(1) << 32) + 3;

class DrawTrianglesTest : public DrawFixture {
protected:
    std::array<Vertex, 3> const m_vertices{Vertex({1, 2, 3}, {0.1f, 0.2f, 0.3f, 0.4f}),
                                           Vertex({4, 5, 6}, {0.5f, 0.6f, 0.7f, 0.8f}),
                                           Vertex({7, 8, 9}, {0.9f, 1.0f, 0.0f, 0.25f})};
    std::array<LitVertex, 2> const m_litVertices{LitVertex({1, 2, 3}, {4, 5, 6}, {0.1f, 0.2f, 0.3f, 0.4f}),
                                                 LitVertex({7, 8, 9}, {0, 1, 0}, {0.5f, 0.6f, 0.7f, 0.8f})};
    std::array<std::uint16_t, 4> const m_indices{2, 0, 1, 2};
};

class DrawLitTrianglesTest : public DrawTrianglesTest {};

} // namespace

TEST_F(DrawTrianglesTest, CallsBgfxInOrder) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientBuffers(3, 28, 4, false)", "setState(0x400000002f, 0x0)",
                            "setVertexBuffer(0, transient)", "setIndexBuffer(transient)",
                            "setTransform(cache#0, 1)",
                            "submit(5, " + Program("vs_basic", "fs_basic") + ", 0, 0xff)"));
}

TEST_F(DrawTrianglesTest, CopiesVerticesAndIndicesUnchanged) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.stride, sizeof(Vertex));
    EXPECT_EQ(draw.layout, "Position 3 Float, Color0 4 Float");
    EXPECT_EQ(draw.VerticesAs<float>(),
              std::vector<float>({1,    2,    3,    0.1f, 0.2f, 0.3f, 0.4f, 4,    5,    6,    0.5f,
                                  0.6f, 0.7f, 0.8f, 7,    8,    9,    0.9f, 1.0f, 0.0f, 0.25f}));
    EXPECT_THAT(draw.IndicesAs<std::uint16_t>(), ElementsAre(2, 0, 1, 2));
}

TEST_F(DrawTrianglesTest, EmptySpansDrawNothing) {
    m_renderer->DrawTriangles(m_view, m_vertices, Indices());
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(m_indices.data(), 0));
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(nullptr, 3));
    m_renderer->DrawTriangles(m_view, Vertices(), m_indices);
    m_renderer->DrawTriangles(m_view, Vertices(m_vertices.data(), 0), m_indices);
    m_renderer->DrawTriangles(m_view, Vertices(nullptr, 3), m_indices);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawTrianglesTest, AGivenStateReplacesTheDefault) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices, std::nullopt,
                              BGFXRenderer::STATE_MARKER_OVERLAY);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_MARKER_OVERLAY));
}

TEST_F(DrawTrianglesTest, WithoutATransformTheCurrentOneApplies) {
    m_renderer->SetModelTransform(QMatrix4x4());
    QMatrix4x4 const current = Translation(3, 0, 0);
    m_renderer->SetModelTransform(current);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_EQ(TheDraw().transform, 2u);
    EXPECT_EQ(TheDraw().matrix, Floats(current));
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
    ASSERT_TRUE(StartFrame());
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
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

TEST_F(DrawTrianglesTest, NothingIsKept) {
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawTrianglesTest, CapabilitiesAreNotAskedFor) {
    DisableCaps();
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    EXPECT_THAT(recorder::Draws(), SizeIs(2));
}

TEST_F(DrawTrianglesTest, VerticesThatDoNotFitAreLeftOutAndLaterOnesDrawn) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(3 * sizeof(Vertex), 1000);
    std::vector<Vertex> const many(4);
    m_renderer->DrawTriangles(m_view, many, m_indices);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientBuffers(4, 28, 4, false)"));
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_THAT(TheDraw().vertices, SizeIs(3 * sizeof(Vertex)));
}

TEST_F(DrawTrianglesTest, IndicesThatDoNotFitAreLeftOutAndLaterOnesDrawn) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(1000, 4 * sizeof(std::uint16_t));
    std::vector<std::uint16_t> const many(5);
    m_renderer->DrawTriangles(m_view, m_vertices, many);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientBuffers(3, 28, 5, false)"));
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_THAT(TheDraw().indices, SizeIs(4 * sizeof(std::uint16_t)));
}

TEST_F(DrawTrianglesTest, AFullFrameDrawsNothingMoreAndTheNextOneDoes) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(3 * sizeof(Vertex), 1000);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    EXPECT_THAT(recorder::Draws(), SizeIs(2));
}

TEST_F(DrawTrianglesTest, CountsBeyond32BitsAreNotCutOff) {
    ExpectWarning("draw.no-transient-space");
    m_renderer->DrawTriangles(m_view, Vertices(m_vertices.data(), kBeyond32Bits), m_indices);
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(m_indices.data(), kBeyond32Bits));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawTrianglesTest, CountsWhoseBytesLeave32BitsDrawNothing) {
    ExpectWarning("draw.no-transient-space");
    // As many as make a number of bytes that wraps to a small one.
    constexpr std::uint64_t vertexCount = (std::uint64_t(1) << 32) / sizeof(Vertex) + 1;
    constexpr std::uint64_t indexCount = (std::uint64_t(1) << 31) + 1;
    m_renderer->DrawTriangles(m_view, Vertices(m_vertices.data(), vertexCount), m_indices);
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(m_indices.data(), indexCount));
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(DrawTrianglesTest, CountsWhoseBytesLeave32BitsBehindOthersDrawNothing) {
    ExpectWarning("draw.no-transient-space");
    constexpr std::uint64_t vertexCount = (std::uint64_t(1) << 32) / sizeof(Vertex);
    constexpr std::uint64_t indexCount = (std::uint64_t(1) << 31) - 1;
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    m_renderer->DrawTriangles(m_view, Vertices(m_vertices.data(), vertexCount), m_indices);
    m_renderer->DrawTriangles(m_view, m_vertices, Indices(m_indices.data(), indexCount));
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
}

TEST_F(DrawLitTrianglesTest, CallsBgfxInOrder) {
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientBuffers(2, 40, 4, false)", "setState(0x400656502f, 0x0)",
                            "setVertexBuffer(0, transient)", "setIndexBuffer(transient)",
                            "setTransform(cache#0, 1)",
                            "submit(5, " + Program("vs_lighting", "fs_lighting") + ", 0, 0xff)"));
}

TEST_F(DrawLitTrianglesTest, CopiesVerticesAndIndicesUnchanged) {
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.stride, sizeof(LitVertex));
    EXPECT_EQ(draw.layout, "Position 3 Float, Normal 3 Float, Color0 4 Float");
    EXPECT_EQ(draw.VerticesAs<float>(), std::vector<float>({1, 2, 3, 4, 5, 6, 0.1f, 0.2f, 0.3f, 0.4f, //
                                                            7, 8, 9, 0, 1, 0, 0.5f, 0.6f, 0.7f, 0.8f}));
    EXPECT_THAT(draw.IndicesAs<std::uint16_t>(), ElementsAre(2, 0, 1, 2));
}

TEST_F(DrawLitTrianglesTest, EmptySpansDrawNothing) {
    m_renderer->DrawTriangles(m_view, m_litVertices, Indices());
    m_renderer->DrawTriangles(m_view, m_litVertices, Indices(m_indices.data(), 0));
    m_renderer->DrawTriangles(m_view, m_litVertices, Indices(nullptr, 3));
    m_renderer->DrawTriangles(m_view, LitVertices(), m_indices);
    m_renderer->DrawTriangles(m_view, LitVertices(m_litVertices.data(), 0), m_indices);
    m_renderer->DrawTriangles(m_view, LitVertices(nullptr, 3), m_indices);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawLitTrianglesTest, AGivenStateReplacesTheDefault) {
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices, std::nullopt, BGFXRenderer::STATE_OPAQUE);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_OPAQUE));
}

TEST_F(DrawLitTrianglesTest, AGivenProgramReplacesTheLightingProgram) {
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices, std::nullopt, std::nullopt,
                              m_renderer->GetBasicProgram());
    EXPECT_EQ(TheDraw().program.idx, m_renderer->GetBasicProgram().idx);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
}

TEST_F(DrawLitTrianglesTest, TakesTheGivenTransformOrTheCurrentOne) {
    ModelTransformCacheId const first = m_renderer->SetModelTransform(Translation(1, 0, 0));
    ModelTransformCacheId const current = m_renderer->SetModelTransform(Translation(2, 0, 0));
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices, first);
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    EXPECT_EQ(draws[0].transform, std::uint32_t(first));
    EXPECT_EQ(draws[1].transform, std::uint32_t(current));
}

TEST_F(DrawLitTrianglesTest, WhatDoesNotFitIsLeftOutAndLaterOnesDrawn) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(2 * sizeof(LitVertex), 1000);
    std::vector<LitVertex> const many(3);
    m_renderer->DrawTriangles(m_view, many, m_indices);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    EXPECT_THAT(TheDraw().vertices, SizeIs(2 * sizeof(LitVertex)));
}

TEST_F(DrawLitTrianglesTest, CountsBeyond32BitsAreNotCutOff) {
    ExpectWarning("draw.no-transient-space");
    m_renderer->DrawTriangles(m_view, LitVertices(m_litVertices.data(), kBeyond32Bits), m_indices);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}
