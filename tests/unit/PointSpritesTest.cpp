// Point sprites: what is submitted where there are compute shaders, and the vertices that are computed here.
#include <DrawFixture.h>
#include <DrawingOf.h>
#include <SpriteReference.h>

#include "../../src/render/PointSpriteExpansion.h"

#include <array>
#include <cstring>
#include <limits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using PointSprite::ComputeStageInputVertexData;
using PointSprite::DummyVertexT;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using Points = zx3D::DataSpan<Vertex const>;
using Draw = void (Drawing::*)(DrawCall const&, Points, std::uint16_t);

struct Either {
    using Type = Draw;
};
struct OnCpu {
    using Type = Draw;
};
struct OnGpu {
    using Type = Draw;
};

class PointSpritesTest : public DrawFixture {
protected:
    template<typename Path>
    void DrawOn(Points points, std::uint16_t size,
                std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                std::optional<BGFXRenderState> state = std::nullopt) {
        Drawing& drawing = DrawingOf(*m_renderer);
        (drawing.*Revealed<Path>::pointer)(
            drawing.MakeCall(m_view, modelTransform, state.value_or(BGFXRenderer::STATE_OPAQUE)), points,
            size);
    }

    /// The position of the first corner that was drawn.
    static std::vector<float> FirstPosition() {
        std::vector<float> floats = TheDraw().VerticesAs<float>();
        floats.resize(4);
        return floats;
    }

    std::array<Vertex, 2> const m_points{Vertex({1, 2, 3}, {0.1f, 0.2f, 0.3f, 0.4f}),
                                         Vertex({4, 5, 6}, {0.5f, 0.6f, 0.7f, 0.8f})};
    std::array<Vertex, 1> const m_origin{Vertex({0, 0, 0}, {0.1f, 0.2f, 0.3f, 0.4f})};
};

class PointSpriteExpansionTest : public PointSpritesTest {
protected:
    void SetUp() override {
        PointSpritesTest::SetUp();
        DisableCompute();
    }

    /// Draws the points and compares all their vertices with the reference.
    void ExpectExpansion(Points points, std::uint16_t size, QMatrix4x4 const& model) {
        recorder::ClearCalls();
        m_renderer->SetModelTransform(model);
        m_renderer->DrawPoints(m_view, points, size);
        EXPECT_THAT(
            TheDraw().VerticesAs<float>(),
            HasBitsOf(ExpandedPoints(points, m_view.GetProjectionMatrix() * m_view.GetViewMatrix() * model,
                                     m_view.GetViewport().size(), size)));
    }

    std::vector<Vertex> RandomPoints(std::size_t count, bool unusual = false) {
        std::vector<Vertex> points;
        for (std::size_t i = 0; i < count; ++i) {
            bx::Vec3 const position = unusual ? m_random.UnusualPosition() : m_random.Position();
            points.emplace_back(position, m_random.Color());
        }
        return points;
    }

    RandomGeometry m_random;
};

} // namespace

template struct Reveal<Either, &Drawing::DrawPointSprites>;
template struct Reveal<OnCpu, &Drawing::DrawPointSpritesCPU>;
template struct Reveal<OnGpu, &Drawing::DrawPointSpritesGPU>;

TEST_F(PointSpritesTest, WithComputeBgfxIsCalledInOrder) {
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10));
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createDynamicVertexBuffer(2, 32, 0x100)", "makeRef(64)",
                            "update(dynamicVertexBuffer#0, 0, 64)",
                            "createDynamicVertexBuffer(12, 48, 0x200)", "setTransform(cache#0, 1)",
                            "setUniform(u_viewport, 100, 50, 0, 0)", "setUniform(u_pointSprite, 2, 10, 0, 0)",
                            "setBuffer(0, dynamicVertexBuffer#0, Read)",
                            "setBuffer(1, dynamicVertexBuffer#1, Write)",
                            "dispatch(5, " + Program("cs_point_sprite") + ", 1, 1, 1, 0xff)",
                            "setState(0x400000002f, 0x0)", "setVertexBuffer(0, dynamicVertexBuffer#1)",
                            "setUniform(u_viewport, 100, 50, 0, 0)", "setUniform(u_pointSprite, 2, 10, 0, 0)",
                            "submit(5, " + Program("vs_point_sprite", "fs_point_sprite") + ", 0, 0xff)"));
}

TEST_F(PointSpritesTest, WithoutComputeBgfxIsCalledInOrder) {
    DisableCompute();
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10));
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createDynamicVertexBuffer(12, 48, 0x0)", "setTransform(cache#0, 1)",
                            "alloc(576)", "update(dynamicVertexBuffer#0, 0, 576)",
                            "setState(0x400000002f, 0x0)", "setVertexBuffer(0, dynamicVertexBuffer#0)",
                            "setUniform(u_viewport, 100, 50, 0, 0)", "setUniform(u_pointSprite, 2, 10, 0, 0)",
                            "submit(5, " + Program("vs_point_sprite", "fs_point_sprite") + ", 0, 0xff)"));
}

TEST_F(PointSpritesTest, TheComputeShaderReadsPositionAndColorAsFourFloatsEach) {
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10));
    std::vector<float> const expected{1, 2, 3, 1, 0.1f, 0.2f, 0.3f, 0.4f, 4, 5, 6, 1, 0.5f, 0.6f, 0.7f, 0.8f};
    EXPECT_EQ(recorder::CallsNamed("update").at(0).PayloadAs<float>(), expected);
    auto const input = Kept<ComputeStageInputVertexData>(FrameResource::PointSpriteInput);
    EXPECT_EQ(std::memcmp(input->vertices.get(), expected.data(), 64), 0);
}

TEST_F(PointSpritesTest, TheBuffersHaveTheLayoutsOfTheShaders) {
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10));
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    char const* const vertices = "Position 4 Float, Color0 4 Float, TexCoord0 4 Float";
    EXPECT_EQ(draws[0].buffers.at(0).layout, "Position 4 Float, Color0 4 Float");
    EXPECT_EQ(draws[0].buffers.at(1).layout, vertices);
    EXPECT_EQ(draws[1].layout, vertices);
    DisableCompute();
    recorder::ClearCalls();
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10));
    EXPECT_EQ(TheDraw().layout, vertices);
}

TEST_F(PointSpritesTest, DispatchAndDrawHaveTheirUniformsAndTheTransform) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(10), given);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    for (recorder::Draw const& draw : draws) {
        EXPECT_THAT(draw.uniforms, SizeIs(2));
        EXPECT_THAT(draw.uniforms.at("u_viewport"), ElementsAre(100, 50, 0, 0));
        EXPECT_THAT(draw.uniforms.at("u_pointSprite"), ElementsAre(2, 10, 0, 0));
        EXPECT_EQ(draw.transform, std::uint32_t(given));
    }
    EXPECT_THAT(draws[1].indexBuffer, IsEmpty());
    EXPECT_THAT(draws[1].vertices, SizeIs(2 * 6 * sizeof(DummyVertexT)));
}

TEST_F(PointSpritesTest, AGroupExpands64Points) {
    for (auto const& [count, groups] : {std::pair(1, 1u), std::pair(63, 1u), std::pair(64, 1u),
                                        std::pair(65, 2u), std::pair(128, 2u), std::pair(129, 3u)}) {
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, std::vector<Vertex>(std::size_t(count)), std::uint16_t(2));
        ASSERT_THAT(recorder::Draws(), SizeIs(2));
        EXPECT_THAT(recorder::Draws()[0].groups, ElementsAre(groups, 1, 1)) << count;
    }
}

TEST_F(PointSpritesTest, AGivenStateReplacesTheDefault) {
    for (bool const hasCompute : {true, false}) {
        if (!hasCompute)
            DisableCompute();
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2), std::nullopt,
                               BGFXRenderer::STATE_TRANSPARENT);
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
    }
}

TEST_F(PointSpritesTest, WithComputeInputAndVerticesAreKept) {
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2));
    EXPECT_THAT(KeptKinds(), ElementsAre(FrameResource::PointSpriteInput, FrameResource::SpriteVertices));
    EXPECT_THAT(Kept(), testing::ElementsAre(testing::Key(1), testing::Key(2)));
    auto const input = Kept<ComputeStageInputVertexData>(FrameResource::PointSpriteInput);
    auto const output = Kept<DummyVertexT>(FrameResource::SpriteVertices);
    EXPECT_TRUE(bool(input->vertexBuffer));
    EXPECT_TRUE(bool(output->vertexBuffer));
    EXPECT_FALSE(bool(input->indexBuffer));
    EXPECT_FALSE(bool(output->indexBuffer));
    EXPECT_EQ(output->vertices, nullptr);
}

TEST_F(PointSpritesTest, WithoutComputeTheVerticesAreKept) {
    DisableCompute();
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2));
    EXPECT_THAT(Kept(), testing::ElementsAre(testing::Key(2)));
    EXPECT_THAT(KeptKinds(), ElementsAre(FrameResource::SpriteVertices));
    EXPECT_TRUE(bool(Kept<DummyVertexT>(FrameResource::SpriteVertices)->vertexBuffer));
}

TEST_F(PointSpritesTest, TheCapabilitiesChooseThePath) {
    DrawOn<Either>(m_points, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
    DisableCompute();
    DrawOn<Either>(m_points, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    EXPECT_EQ(recorder::CountCalls("submit"), 2u);
    DisableCaps();
    recorder::ClearCalls();
    DrawOn<Either>(m_points, 2);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(PointSpritesTest, OneComputeBitAmongOthersIsEnough) {
    Configure([](recorder::Settings& settings) { settings.supported = ~std::uint64_t(0); });
    DrawOn<Either>(m_points, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    Configure([](recorder::Settings& settings) { settings.supported = ~BGFX_CAPS_COMPUTE; });
    DrawOn<Either>(m_points, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
}

TEST_F(PointSpritesTest, SizeOneIsASpriteToo) {
    DrawOn<OnGpu>(m_points, 1);
    EXPECT_THAT(TheDraw().uniforms.at("u_pointSprite"), ElementsAre(2, 1, 0, 0));
    recorder::ClearCalls();
    DrawOn<OnCpu>(m_origin, 1);
    EXPECT_THAT(TheDraw().uniforms.at("u_pointSprite"), ElementsAre(1, 1, 0, 0));
    EXPECT_THAT(FirstPosition(), ElementsAre(-0.01f, -0.02f, 0.0f, 1.0f));
}

TEST_F(PointSpritesTest, SizeZeroAndEmptySpansDrawNothing) {
    auto const expectNothing = [&](Points points, std::uint16_t size) {
        DrawOn<Either>(points, size);
        DrawOn<OnCpu>(points, size);
        DrawOn<OnGpu>(points, size);
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_THAT(KeptKinds(), IsEmpty());
    };
    expectNothing(m_points, 0);
    expectNothing(Points(), 2);
    expectNothing(Points(m_points.data(), 0), 2);
    expectNothing(Points(nullptr, 2), 2);
}

TEST_F(PointSpritesTest, WithoutATransformTheCurrentOneIsSetAndMovesThePoints) {
    DisableCompute();
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->SetModelTransform(Translation(1, 2, 3));
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10));
    EXPECT_EQ(TheDraw().transform, 2u);
    EXPECT_THAT(FirstPosition(), ElementsAre(1.0f - 0.1f, 2.0f - 0.2f, 3.0f, 1.0f));
}

TEST_F(PointSpritesTest, AGivenTransformIsSetAndMovesThePoints) {
    DisableCompute();
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 2, 3));
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10), given);
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_THAT(FirstPosition(), ElementsAre(1.0f - 0.1f, 2.0f - 0.2f, 3.0f, 1.0f));
}

TEST_F(PointSpritesTest, AnIdThatIsNotInTheCacheIsSetAndMeansIdentity) {
    DisableCompute();
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10), ModelTransformCacheId(42));
    EXPECT_EQ(TheDraw().transform, 42u);
    EXPECT_THAT(FirstPosition(), ElementsAre(-0.1f, -0.2f, 0.0f, 1.0f));
    EXPECT_THAT(ModelTransforms(), SizeIs(1)) << "looking it up adds nothing";
}

TEST_F(PointSpritesTest, WithoutAnyTransformIdentityApplies) {
    DisableCompute();
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10));
    EXPECT_EQ(TheDraw().transform, 0u);
    EXPECT_THAT(FirstPosition(), ElementsAre(-0.1f, -0.2f, 0.0f, 1.0f));
}

TEST_F(PointSpritesTest, AnIdOfAnEarlierFrameMeansTheMatrixThatItHadLast) {
    DisableCompute();
    ASSERT_TRUE(StartFrame());
    m_renderer->SetModelTransform(Translation(1, 0, 0));
    ModelTransformCacheId const stale = m_renderer->SetModelTransform(Translation(2, 0, 0));
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
    ModelTransformCacheId const first = m_renderer->SetModelTransform(Translation(3, 0, 0));
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10), stale);
    EXPECT_EQ(FirstPosition()[0], 2.0f - 0.1f);
    recorder::ClearCalls();
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10), first);
    EXPECT_EQ(FirstPosition()[0], 3.0f - 0.1f);
}

// The numbers below are worked out by hand.

TEST_F(PointSpriteExpansionTest, APointInTheMiddleBecomesASquareOfItsSize) {
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10));
    std::vector<float> const floats = TheDraw().VerticesAs<float>();
    ASSERT_THAT(floats, SizeIs(6 * 12));
    constexpr float corners[6][2] = {{-0.1f, -0.2f}, {0.1f, -0.2f}, {0.1f, 0.2f},
                                     {-0.1f, -0.2f}, {0.1f, 0.2f},  {-0.1f, 0.2f}};
    for (std::size_t i = 0; i < 6; ++i) {
        std::vector<float> const vertex(floats.begin() + std::ptrdiff_t(12 * i),
                                        floats.begin() + std::ptrdiff_t(12 * i + 12));
        EXPECT_THAT(vertex, ElementsAre(corners[i][0], corners[i][1], 0, 1, 0.1f, 0.2f, 0.3f, 0.4f, //
                                        0, 0, 0, 5))
            << "vertex " << i;
    }
}

TEST_F(PointSpriteExpansionTest, TheOffsetGrowsWithClipW) {
    // Clip w is the point's z.
    m_view.SetProjectionMatrix(QMatrix4x4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0));
    m_view.SetViewport(QRect(0, 0, 64, 32));
    std::array<Vertex, 1> const point{Vertex({2, -4, 4}, {1, 1, 1, 1})};
    m_renderer->DrawPoints(m_view, point, std::uint16_t(8));
    std::vector<float> const floats = TheDraw().VerticesAs<float>();
    ASSERT_THAT(floats, SizeIs(6 * 12));
    EXPECT_THAT(std::vector(floats.begin(), floats.begin() + 12),
                ElementsAre(2 - 0.5f, -4 - 1.0f, 4, 4, 1, 1, 1, 1, 0.5f, -1, 1, 4));
    EXPECT_THAT(std::vector(floats.begin() + 24, floats.begin() + 36),
                ElementsAre(2 + 0.5f, -4 + 1.0f, 4, 4, 1, 1, 1, 1, 0.5f, -1, 1, 4));
}

TEST_F(PointSpriteExpansionTest, WithClipWZeroTheCenterIsTheOrigin) {
    m_view.SetProjectionMatrix(QMatrix4x4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0));
    std::array<Vertex, 2> const points{Vertex({2, 3, 0.0f}, {1, 1, 1, 1}),
                                       Vertex({2, 3, -0.0f}, {1, 1, 1, 1})};
    m_renderer->DrawPoints(m_view, points, std::uint16_t(8));
    std::vector<float> const floats = TheDraw().VerticesAs<float>();
    ASSERT_THAT(floats, SizeIs(2 * 6 * 12));
    for (std::size_t i = 0; i < floats.size(); i += 12) {
        EXPECT_THAT(std::vector(floats.begin() + std::ptrdiff_t(i), floats.begin() + std::ptrdiff_t(i + 12)),
                    ElementsAre(2, 3, 0, 0, 1, 1, 1, 1, 0, 0, 0, 4));
    }
}

TEST_F(PointSpriteExpansionTest, HalfAPixelIsKept) {
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(3));
    EXPECT_EQ(TheDraw().VerticesAs<float>().at(11), 1.5f);
}

TEST_F(PointSpriteExpansionTest, TheProductIsProjectionTimesViewTimesModel) {
    QMatrix4x4 projection;
    projection.scale(2.0f, 2.0f, 2.0f);
    m_view.SetProjectionMatrix(projection);
    QMatrix4x4 view;
    view.rotate(90.0f, 0.0f, 0.0f, 1.0f);
    m_view.SetViewMatrix(view);
    m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->DrawPoints(m_view, m_origin, std::uint16_t(10));
    std::vector<float> const position = FirstPosition();
    EXPECT_NEAR(position[0], 0.0f - 0.1f, 1e-6f);
    EXPECT_NEAR(position[1], 2.0f - 0.2f, 1e-6f);
}

TEST_F(PointSpriteExpansionTest, RandomPointsInAllNumbersHaveTheBitsOfTheReference) {
    for (std::size_t const count : {1, 2, 15, 16, 17, 33, 64, 500}) {
        for (int round = 0; round < 10; ++round) {
            m_view.SetViewport(QRect(m_random.Int(0, 50), m_random.Int(0, 50), m_random.Int(1, 4000),
                                     m_random.Int(1, 4000)));
            m_view.SetProjectionMatrix(m_random.Matrix());
            m_view.SetViewMatrix(m_random.Matrix());
            ExpectExpansion(RandomPoints(count), std::uint16_t(m_random.Int(2, 65535)), m_random.Matrix());
        }
    }
}

TEST_F(PointSpriteExpansionTest, PointsInPerspectiveHaveTheBitsOfTheReference) {
    QMatrix4x4 projection;
    projection.perspective(60.0f, 2.0f, 0.1f, 100.0f);
    m_view.SetProjectionMatrix(projection);
    for (int round = 0; round < 20; ++round) {
        QMatrix4x4 view;
        view.lookAt({m_random.Float(-5, 5), 0, 5}, {0, 0, 0}, {0, 1, 0});
        m_view.SetViewMatrix(view);
        ExpectExpansion(RandomPoints(33), std::uint16_t(m_random.Int(2, 100)), m_random.Matrix());
    }
}

TEST_F(PointSpriteExpansionTest, UnusualNumbersHaveTheBitsOfTheReference) {
    QMatrix4x4 projection;
    projection.perspective(60.0f, 2.0f, 0.1f, 100.0f);
    for (QMatrix4x4 const& matrix : {QMatrix4x4(), projection}) {
        m_view.SetProjectionMatrix(matrix);
        for (int round = 0; round < 20; ++round)
            ExpectExpansion(RandomPoints(33, true), std::uint16_t(m_random.Int(2, 100)), QMatrix4x4());
    }
}

TEST_F(PointSpriteExpansionTest, AnEmptyViewportHasTheBitsOfTheReference) {
    for (QRect const& viewport : {QRect(), QRect(0, 0, 100, 0), QRect(0, 0, 0, 100)}) {
        m_view.SetViewport(viewport);
        ExpectExpansion(RandomPoints(17), 10, m_random.Matrix());
    }
}

TEST_F(PointSpriteExpansionTest, MatricesOfInfinitiesAndNaNHaveTheBitsOfTheReference) {
    for (float const number :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 0.0f,
          std::numeric_limits<float>::max()}) {
        QMatrix4x4 matrix;
        matrix.fill(number);
        ExpectExpansion(RandomPoints(17), 10, matrix);
    }
}
