// Lines: thin ones in submissions of 16-bit indices, which of them are wide, and strips.
#include <DrawFixture.h>
#include <Warnings.h>

#include <QVector3D>

#include <array>
#include <limits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Lines = zx3D::DataSpan<zx3D::Line const>;
using Positions = zx3D::DataSpan<QVector3D const>;
using Indices = zx3D::DataSpan<std::uint16_t const>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kFloatsPerLine = 2 * 7;
constexpr std::size_t kBytesPerLine = kFloatsPerLine * sizeof(float);

/// Lines that can be told apart.
std::vector<zx3D::Line> NumberedLines(std::size_t count) {
    std::vector<zx3D::Line> lines(count);
    for (std::size_t i = 0; i < count; ++i) {
        auto const number = float(i);
        lines[i] = {{number, 1, 2}, {number, 3, 4}, {0.25f, 0.5f, 0.75f, number}};
    }
    return lines;
}

/// The vertices of such lines.
std::vector<float> NumberedVertices(std::size_t first, std::size_t count) {
    std::vector<float> floats;
    for (std::size_t i = first; i < first + count; ++i) {
        auto const number = float(i);
        floats.insert(floats.end(), {number, 1, 2, 0.25f, 0.5f, 0.75f, number, //
                                     number, 3, 4, 0.25f, 0.5f, 0.75f, number});
    }
    return floats;
}

std::vector<std::uint16_t> Counting(std::size_t count) {
    std::vector<std::uint16_t> indices(count);
    for (std::size_t i = 0; i < count; ++i)
        indices[i] = std::uint16_t(i);
    return indices;
}

class DrawLinesTest : public DrawFixture {
protected:
    /// What the one draw says of its lines when they are wide; empty when they are thin.
    static std::vector<float> RectangleSprite() {
        auto const uniforms = TheDraw().uniforms;
        auto const found = uniforms.find("u_rectangleSprite");
        return found != uniforms.end() ? found->second : std::vector<float>();
    }

    /// The draw holds numbered lines from `first` on, and all else is as in every thin draw.
    static void ExpectNumberedLines(recorder::Draw const& draw, std::size_t first, std::size_t count) {
        EXPECT_TRUE(draw.VerticesAs<float>() == NumberedVertices(first, count));
        EXPECT_TRUE(draw.IndicesAs<std::uint16_t>() == Counting(2 * count));
    }

    std::array<zx3D::Line, 2> const m_lines{zx3D::Line{{1, 2, 3}, {4, 5, 6}, {0.1f, 0.2f, 0.3f, 0.4f}},
                                            zx3D::Line{{7, 8, 9}, {10, 11, 12}, {0.5f, 0.6f, 0.7f, 0.8f}}};
};

class DrawLineStripTest : public DrawLinesTest {
protected:
    /// The numbers (x) of the positions that the one draw joins, pair by pair.
    static std::vector<int> Joined() {
        std::vector<int> numbers;
        std::vector<float> const floats = TheDraw().VerticesAs<float>();
        for (std::size_t i = 0; i < floats.size(); i += 7)
            numbers.push_back(int(floats[i]));
        return numbers;
    }

    static std::vector<QVector3D> NumberedPositions(std::size_t count) {
        std::vector<QVector3D> positions(count);
        for (std::size_t i = 0; i < count; ++i)
            positions[i] = {float(i), 0.5f, -0.5f};
        return positions;
    }

    std::vector<QVector3D> const m_positions = NumberedPositions(3);
};

} // namespace

TEST_F(DrawLinesTest, ThinLinesCallBgfxInOrder) {
    m_renderer->DrawLines(m_view, m_lines);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientBuffers(4, 28, 4, false)", "setVertexBuffer(0, transient)",
                            "setIndexBuffer(transient)", "setUniform(u_viewport, 100, 50, 0, 0)",
                            "setUniform(u_lineStipple, 65535, 1, 0, 0)", "setTransform(cache#0, 1)",
                            "setState(0x200400000002f, 0x0)",
                            "submit(5, " + Program("vs_line_opengl_stipple", "fs_line_opengl_stipple") +
                                ", 0, 0xff)"));
}

TEST_F(DrawLinesTest, ThinLinesAreTwoVerticesEachInOrder) {
    m_renderer->DrawLines(m_view, m_lines);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.stride, 28);
    EXPECT_EQ(draw.layout, "Position 3 Float, Color0 4 Float");
    EXPECT_EQ(draw.VerticesAs<float>(),
              std::vector<float>({1, 2, 3, 0.1f, 0.2f, 0.3f, 0.4f, 4,  5,  6,  0.1f, 0.2f, 0.3f, 0.4f,
                                  7, 8, 9, 0.5f, 0.6f, 0.7f, 0.8f, 10, 11, 12, 0.5f, 0.6f, 0.7f, 0.8f}));
    EXPECT_THAT(draw.IndicesAs<std::uint16_t>(), ElementsAre(0, 1, 2, 3));
}

TEST_F(DrawLinesTest, ThinLinesKeepNothing) {
    m_renderer->DrawLines(m_view, m_lines);
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawLinesTest, AGivenStippleIsUploaded) {
    m_renderer->DrawLines(m_view, m_lines, std::nullopt, std::nullopt, zx3D::LineStipplePattern{0xF0F0, 3});
    EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(61680, 3, 0, 0));
}

TEST_F(DrawLinesTest, AGivenStateReplacesTheDefault) {
    m_renderer->DrawLines(m_view, m_lines, 1.0f, std::nullopt, std::nullopt, BGFXRenderer::STATE_LINESTRIP);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINESTRIP));
}

TEST_F(DrawLinesTest, ThinLinesTakeTheGivenTransformOrTheCurrentOne) {
    ModelTransformCacheId const first = m_renderer->SetModelTransform(Translation(1, 0, 0));
    ModelTransformCacheId const current = m_renderer->SetModelTransform(Translation(2, 0, 0));
    m_renderer->DrawLines(m_view, m_lines, std::nullopt, first);
    m_renderer->DrawLines(m_view, m_lines);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    EXPECT_EQ(draws[0].transform, std::uint32_t(first));
    EXPECT_EQ(draws[0].matrix, Floats(Translation(1, 0, 0)));
    EXPECT_EQ(draws[1].transform, std::uint32_t(current));
}

TEST_F(DrawLinesTest, WidthsThatRoundToOneOrLessAreThin) {
    for (std::optional<float> const width :
         {std::optional<float>(), std::optional(1.0f), std::optional(1.4f), std::optional(1.4999999f),
          std::optional(0.5f), std::optional(0.4f), std::optional(0.0f), std::optional(-0.0f),
          std::optional(-3.0f), std::optional(-1e9f), std::optional(-kInfinity), std::optional(kNaN),
          std::optional(-kNaN)}) {
        SCOPED_TRACE(width.value_or(-99.0f));
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_lines, width);
        EXPECT_THAT(RectangleSprite(), IsEmpty());
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINES));
    }
}

TEST_F(DrawLinesTest, WidthsRoundHalvesAwayFromZeroAndEndAt65535) {
    for (auto const& [width, rounded] :
         {std::pair(1.5f, 2), std::pair(1.6f, 2), std::pair(2.0f, 2), std::pair(2.4f, 2), std::pair(2.5f, 3),
          std::pair(3.5f, 4), std::pair(65534.4f, 65534), std::pair(65535.0f, 65535),
          std::pair(65535.4f, 65535), std::pair(65536.0f, 65535), std::pair(1e9f, 65535),
          std::pair(std::numeric_limits<float>::max(), 65535), std::pair(kInfinity, 65535)}) {
        SCOPED_TRACE(width);
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_lines, width);
        EXPECT_THAT(RectangleSprite(), ElementsAre(2, rounded, 0, 0));
    }
}

TEST_F(DrawLinesTest, WideLinesTakeTransformStippleAndState) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    for (bool const hasCompute : {true, false}) {
        if (!hasCompute)
            DisableCompute();
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_lines, 2.0f, given, zx3D::LineStipplePattern{0x00FF, 7},
                              BGFXRenderer::STATE_TRANSPARENT);
        EXPECT_EQ(recorder::CountCalls("dispatch"), hasCompute ? 1u : 0u);
        EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
        EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(255, 7, 0, 0));
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
    }
}

TEST_F(DrawLinesTest, WithoutCapabilitiesOnlyThinLinesAreDrawn) {
    DisableCaps();
    m_renderer->DrawLines(m_view, m_lines, 2.0f);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
    m_renderer->DrawLines(m_view, m_lines, 1.0f);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINES));
}

TEST_F(DrawLinesTest, EmptySpansDrawNothing) {
    for (Lines const lines : {Lines(), Lines(m_lines.data(), 0), Lines(nullptr, 2)}) {
        m_renderer->DrawLines(m_view, lines);
        m_renderer->DrawLines(m_view, lines, 2.0f);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawLinesTest, SixteenBitIndicesReach32768Lines) {
    m_renderer->DrawLines(m_view, NumberedLines(32768));
    ExpectNumberedLines(TheDraw(), 0, 32768);
    EXPECT_EQ(TheDraw().IndicesAs<std::uint16_t>().back(), 65535);
}

TEST_F(DrawLinesTest, OneLineMoreIsASubmissionOfItsOwn) {
    m_renderer->DrawLines(m_view, NumberedLines(32769));
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    ExpectNumberedLines(draws[0], 0, 32768);
    ExpectNumberedLines(draws[1], 32768, 1);
}

TEST_F(DrawLinesTest, EverySubmissionOfManyLinesHasTheWholeOfTheCallsSettings) {
    m_renderer->SetModelTransform(Translation(1, 0, 0));
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(2, 0, 0));
    m_renderer->SetModelTransform(Translation(3, 0, 0));
    recorder::ClearCalls();
    m_renderer->DrawLines(m_view, NumberedLines(70000), 1.0f, given, zx3D::LineStipplePattern{0x0F0F, 2},
                          BGFXRenderer::STATE_LINESTRIP);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(3));
    ExpectNumberedLines(draws[0], 0, 32768);
    ExpectNumberedLines(draws[1], 32768, 32768);
    ExpectNumberedLines(draws[2], 65536, 4464);
    std::vector<std::string> const texts = recorder::CallTexts();
    ASSERT_THAT(texts, SizeIs(3 * 8));
    for (std::size_t i = 0; i < texts.size(); i += 8) {
        EXPECT_THAT(std::vector(texts.begin() + std::ptrdiff_t(i + 1), texts.begin() + std::ptrdiff_t(i + 8)),
                    ElementsAre("setVertexBuffer(0, transient)", "setIndexBuffer(transient)",
                                "setUniform(u_viewport, 100, 50, 0, 0)",
                                "setUniform(u_lineStipple, 3855, 2, 0, 0)", "setTransform(cache#2, 1)",
                                "setState(0x300400000002f, 0x0)",
                                "submit(5, " + Program("vs_line_opengl_stipple", "fs_line_opengl_stipple") +
                                    ", 0, 0xff)"));
    }
}

TEST_F(DrawLinesTest, VerticesThatDoNotFitAreLeftOutAndLaterOnesDrawn) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(2 * kBytesPerLine, 1000);
    m_renderer->DrawLines(m_view, NumberedLines(3));
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientBuffers(6, 28, 6, false)"));
    m_renderer->DrawLines(m_view, NumberedLines(2));
    ExpectNumberedLines(TheDraw(), 0, 2);
}

TEST_F(DrawLinesTest, IndicesThatDoNotFitAreLeftOutAndLaterOnesDrawn) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(1000, 10);
    m_renderer->DrawLines(m_view, NumberedLines(3));
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("allocTransientBuffers(6, 28, 6, false)"));
    m_renderer->DrawLines(m_view, NumberedLines(2));
    ExpectNumberedLines(TheDraw(), 0, 2);
}

TEST_F(DrawLinesTest, AFullFrameDrawsNothingMoreAndTheNextOneDoes) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(2 * kBytesPerLine, 1000);
    m_renderer->DrawLines(m_view, NumberedLines(2));
    recorder::ClearCalls();
    m_renderer->DrawLines(m_view, NumberedLines(1));
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    m_renderer->DrawLines(m_view, NumberedLines(1));
    ExpectNumberedLines(TheDraw(), 0, 1);
}

TEST_F(DrawLinesTest, OfManyLinesThoseSubmissionsAreDrawnThatFit) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(40000 * kBytesPerLine, 1 << 20); // the first and the last of three
    m_renderer->DrawLines(m_view, NumberedLines(70000));
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    ExpectNumberedLines(draws[0], 0, 32768);
    ExpectNumberedLines(draws[1], 65536, 4464);
}

TEST_F(DrawLineStripTest, WithoutIndicesPositionsAreJoinedInOrder) {
    m_renderer->DrawLines(m_view, m_positions, Indices(), Qt::white);
    EXPECT_THAT(Joined(), ElementsAre(0, 1, 1, 2));
}

TEST_F(DrawLineStripTest, IndicesAreAConnectedStrip) {
    std::array<std::uint16_t, 4> const indices{2, 0, 1, 2};
    m_renderer->DrawLines(m_view, m_positions, indices, Qt::white);
    EXPECT_THAT(Joined(), ElementsAre(2, 0, 0, 1, 1, 2));
}

TEST_F(DrawLineStripTest, VerticesCarryPositionAndColor) {
    std::array<QVector3D, 2> const positions{QVector3D(1.5f, -2.0f, 3.25f), QVector3D(4.0f, 5.0f, -6.0f)};
    m_renderer->DrawLines(m_view, positions, Indices(), QColor(255, 128, 1, 77));
    float const red = 255.0f * 0.003921569f;
    float const green = 128.0f * 0.003921569f;
    float const blue = 1.0f * 0.003921569f;
    float const alpha = 77.0f * 0.003921569f;
    EXPECT_EQ(TheDraw().VerticesAs<float>(),
              std::vector<float>({1.5f, -2.0f, 3.25f, red, green, blue, alpha, //
                                  4.0f, 5.0f, -6.0f, red, green, blue, alpha}));
}

TEST_F(DrawLineStripTest, PairsOfEqualIndicesMakeNoSegment) {
    std::array<std::uint16_t, 5> const indices{0, 0, 1, 1, 2};
    m_renderer->DrawLines(m_view, m_positions, indices, Qt::white);
    EXPECT_THAT(Joined(), ElementsAre(0, 1, 1, 2));
}

TEST_F(DrawLineStripTest, PairsWithAnIndexBeyondThePositionsMakeNoSegment) {
    std::array<std::uint16_t, 7> const indices{0, 1, 3, 2, 0, 65535, 1};
    m_renderer->DrawLines(m_view, m_positions, indices, Qt::white);
    EXPECT_THAT(Joined(), ElementsAre(0, 1, 2, 0));
}

TEST_F(DrawLineStripTest, WhenEveryPairIsLeftOutNothingIsSubmitted) {
    std::array<std::uint16_t, 4> const indices{0, 0, 5, 1};
    m_renderer->DrawLines(m_view, m_positions, indices, Qt::white);
    m_renderer->DrawLines(m_view, m_positions, indices, Qt::white, 4.0f);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawLineStripTest, FewerThanTwoPositionsDrawNothing) {
    std::array<std::uint16_t, 2> const indices{0, 1};
    for (Positions const positions : {Positions(m_positions.data(), 1), Positions(m_positions.data(), 0),
                                      Positions(nullptr, 3), Positions()}) {
        m_renderer->DrawLines(m_view, positions, Indices(), Qt::white);
        m_renderer->DrawLines(m_view, positions, indices, Qt::white);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawLineStripTest, FewerThanTwoIndicesCountAsNone) {
    std::array<std::uint16_t, 2> const indices{2, 0};
    for (Indices const few : {Indices(indices.data(), 1), Indices(indices.data(), 0), Indices(nullptr, 2)}) {
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_positions, few, Qt::white);
        EXPECT_THAT(Joined(), ElementsAre(0, 1, 1, 2));
    }
}

TEST_F(DrawLineStripTest, MorePositionsThanIndicesCanNameAreJoinedInOrder) {
    m_renderer->DrawLines(m_view, NumberedPositions(70000), Indices(), Qt::white);
    std::vector<float> xs;
    for (recorder::Draw const& draw : recorder::Draws()) {
        std::vector<float> const floats = draw.VerticesAs<float>();
        for (std::size_t i = 0; i < floats.size(); i += 7)
            xs.push_back(floats[i]);
    }
    ASSERT_THAT(xs, SizeIs(2 * 69999));
    for (std::size_t k = 0; k < 69999; ++k) {
        ASSERT_EQ(xs[2 * k], float(k));
        ASSERT_EQ(xs[2 * k + 1], float(k + 1));
    }
}

TEST_F(DrawLineStripTest, IndicesReachAsFarAsTheyCan) {
    std::array<std::uint16_t, 2> const indices{65535, 1};
    m_renderer->DrawLines(m_view, NumberedPositions(65536), indices, Qt::white);
    EXPECT_THAT(Joined(), ElementsAre(65535, 1));
    recorder::ClearCalls();
    m_renderer->DrawLines(m_view, NumberedPositions(65535), indices, Qt::white);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawLineStripTest, ThinStripsTakeTransformStippleAndState) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawLines(m_view, m_positions, Indices(), Qt::white, std::nullopt, given,
                          zx3D::LineStipplePattern{0x00FF, 7}, BGFXRenderer::STATE_LINESTRIP);
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(255, 7, 0, 0));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINESTRIP));
}

TEST_F(DrawLineStripTest, WideStripsTakeTransformStippleAndState) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawLines(m_view, m_positions, Indices(), Qt::white, 3.0f, given,
                          zx3D::LineStipplePattern{0x00FF, 7}, BGFXRenderer::STATE_TRANSPARENT);
    EXPECT_THAT(RectangleSprite(), ElementsAre(2, 3, 0, 0));
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(255, 7, 0, 0));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
}
