// Points: single pixels in one submission, and from which size on they become sprites.
#include <DrawFixture.h>
#include <DrawingOf.h>
#include <Warnings.h>

#include <array>
#include <cstring>
#include <limits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using LitVertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
using Points = zx3D::DataSpan<Vertex const>;

class DrawPointsTest : public DrawFixture {
protected:
    /// The one draw is so many single pixels.
    static void ExpectSinglePixels(std::size_t count) {
        EXPECT_EQ(TheDraw().vertexBuffer, "transient");
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_POINTS));
        EXPECT_THAT(TheDraw().vertices, SizeIs(count * sizeof(Vertex)));
    }

    /// Uses up transient vertex space until `bytes` of it are taken.
    void Fill(std::uint32_t bytes) {
        std::vector<LitVertex> const vertices(bytes / sizeof(LitVertex));
        std::array<std::uint16_t, 1> const indices{0};
        m_renderer->DrawTriangles(m_view, vertices, indices);
        ASSERT_THAT(TheDraw().vertices, SizeIs(bytes));
        recorder::ClearCalls();
    }

    std::array<Vertex, 2> const m_points{Vertex({1, 2, 3}, {0.1f, 0.2f, 0.3f, 0.4f}),
                                         Vertex({4, 5, 6}, {0.5f, 0.6f, 0.7f, 0.8f})};
};

} // namespace

TEST_F(DrawPointsTest, SinglePixelsCallBgfxInOrder) {
    m_renderer->DrawPoints(m_view, m_points);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientVertexBuffer(2, 28)", "setState(0x400400000002f, 0x0)",
                            "setVertexBuffer(0, transient)", "setTransform(cache#0, 1)",
                            "submit(5, " + Program("vs_basic", "fs_basic") + ", 0, 0xff)"));
}

TEST_F(DrawPointsTest, SinglePixelsAreCopiedUnchanged) {
    std::array<Vertex, 2> points = m_points;
    points[1].position.y = std::numeric_limits<float>::signaling_NaN();
    points[1].color.alpha = -0.0f;
    m_renderer->DrawPoints(m_view, points);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.stride, sizeof(Vertex));
    EXPECT_EQ(draw.layout, "Position 3 Float, Color0 4 Float");
    ASSERT_THAT(draw.vertices, SizeIs(sizeof(points)));
    EXPECT_EQ(std::memcmp(draw.vertices.data(), points.data(), sizeof(points)), 0);
}

TEST_F(DrawPointsTest, SinglePixelsHaveNoIndicesAndNoUniform) {
    m_renderer->DrawPoints(m_view, m_points);
    EXPECT_THAT(TheDraw().indexBuffer, IsEmpty());
    EXPECT_THAT(TheDraw().uniforms, IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawPointsTest, NoSizeZeroAndOneAreSinglePixels) {
    for (std::optional<std::uint16_t> const size :
         {std::optional<std::uint16_t>(), std::optional<std::uint16_t>(std::uint16_t(0)),
          std::optional<std::uint16_t>(std::uint16_t(1))}) {
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, m_points, size);
        ExpectSinglePixels(2);
    }
}

TEST_F(DrawPointsTest, SinglePixelsIgnoreTheState) {
    for (std::uint16_t const size : {std::uint16_t(0), std::uint16_t(1)}) {
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, m_points, size, std::nullopt, BGFXRenderer::STATE_MARKER_OVERLAY);
        ExpectSinglePixels(2);
    }
    recorder::ClearCalls();
    m_renderer->DrawPoints(m_view, m_points, std::nullopt, std::nullopt, BGFXRenderer::STATE_TRANSPARENT);
    ExpectSinglePixels(2);
}

TEST_F(DrawPointsTest, FromSizeTwoOnTheyAreSprites) {
    for (std::uint16_t const size : {std::uint16_t(2), std::uint16_t(3), std::uint16_t(65535)}) {
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, m_points, size);
        EXPECT_THAT(TheDraw().uniforms.at("u_pointSprite"), ElementsAre(2, size, 0, 0));
        EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    }
}

TEST_F(DrawPointsTest, SpritesTakeTransformAndState) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2), given, BGFXRenderer::STATE_MARKER_OVERLAY);
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_MARKER_OVERLAY));
}

TEST_F(DrawPointsTest, WithoutComputeSpritesAreExpandedHere) {
    DisableCompute();
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2), given, BGFXRenderer::STATE_MARKER_OVERLAY);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 0u);
    EXPECT_THAT(TheDraw().uniforms.at("u_pointSprite"), ElementsAre(2, 2, 0, 0));
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_MARKER_OVERLAY));
}

TEST_F(DrawPointsTest, WithoutCapabilitiesOnlySinglePixelsAreDrawn) {
    DisableCaps();
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(2));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
    m_renderer->DrawPoints(m_view, m_points, std::uint16_t(1));
    ExpectSinglePixels(2);
}

TEST_F(DrawPointsTest, EmptySpansDrawNothing) {
    for (Points const points : {Points(), Points(m_points.data(), 0), Points(nullptr, 2)}) {
        m_renderer->DrawPoints(m_view, points);
        m_renderer->DrawPoints(m_view, points, std::uint16_t(2));
        Drawing& drawing = DrawingOf(*m_renderer);
        drawing.DrawBasicPoints(drawing.MakeCall(m_view, std::nullopt, BGFXRenderer::STATE_POINTS), points);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawPointsTest, SinglePixelsTakeTheGivenTransformOrTheCurrentOne) {
    ModelTransformCacheId const first = m_renderer->SetModelTransform(Translation(1, 0, 0));
    ModelTransformCacheId const current = m_renderer->SetModelTransform(Translation(2, 0, 0));
    m_renderer->DrawPoints(m_view, m_points, std::nullopt, first);
    m_renderer->DrawPoints(m_view, m_points);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    EXPECT_EQ(draws[0].transform, std::uint32_t(first));
    EXPECT_EQ(draws[0].matrix, Floats(Translation(1, 0, 0)));
    EXPECT_EQ(draws[1].transform, std::uint32_t(current));
}

TEST_F(DrawPointsTest, AMillionPointsAreOneSubmission) {
    std::vector<Vertex> points(1000000);
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i].position.x = float(i);
    m_renderer->DrawPoints(m_view, points);
    std::vector<float> const floats = TheDraw().VerticesAs<float>();
    ASSERT_THAT(floats, SizeIs(7 * points.size()));
    for (std::size_t i = 0; i < points.size(); ++i)
        ASSERT_EQ(floats[7 * i], float(i));
}

TEST_F(DrawPointsTest, OfPointsThatDoNotAllFitThoseAreDrawnThatDo) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(100, 100); // three points and 16 bytes
    std::vector<Vertex> points(5);
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i].position.x = float(i + 1);
    m_renderer->DrawPoints(m_view, points);
    std::vector<float> const floats = TheDraw().VerticesAs<float>();
    ASSERT_THAT(floats, SizeIs(3 * 7));
    EXPECT_EQ(floats[0], 1.0f);
    EXPECT_EQ(floats[14], 3.0f);
}

TEST_F(DrawPointsTest, PointsOfWhichNoneFitsAreLeftOut) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(100, 100);
    m_renderer->DrawPoints(m_view, std::vector<Vertex>(3));
    recorder::ClearCalls();
    m_renderer->DrawPoints(m_view, m_points);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientVertexBuffer(2, 28)"));
}

TEST_F(DrawPointsTest, PointsWhoseAlignmentDoesNotFitAreLeftOut) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(83, 100); // the next point would start at 84
    Fill(80);
    m_renderer->DrawPoints(m_view, m_points);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientVertexBuffer(2, 28)"));
}

TEST_F(DrawPointsTest, AFullFrameDrawsNothingMoreAndTheNextOneDoes) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(83, 100);
    Fill(80);
    m_renderer->DrawPoints(m_view, m_points);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    m_renderer->DrawPoints(m_view, m_points);
    ExpectSinglePixels(2);
}

TEST_F(DrawPointsTest, CountsBeyond32BitsFillWhatThereIs) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(140, 100);
    std::vector<Vertex> const points(5); // as many as bgfx has space for
    for (std::uint64_t const count :
         {(std::uint64_t(1) << 32) + 2, (std::uint64_t(1) << 32) / sizeof(Vertex) + 1}) {
        recorder::ClearCalls();
        m_renderer->DrawPoints(m_view, Points(points.data(), count));
        ExpectSinglePixels(5);
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
    }
}

TEST_F(DrawPointsTest, CountsWhoseBytesLeave32BitsBehindOthersFillWhatIsLeft) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(140, 100);
    m_renderer->DrawPoints(m_view, m_points);
    recorder::ClearCalls();
    std::vector<Vertex> const points(3); // as many as bgfx has space for
    m_renderer->DrawPoints(m_view, Points(points.data(), (std::uint64_t(1) << 32) / sizeof(Vertex)));
    ExpectSinglePixels(3);
}
