// Rectangle sprites: what is submitted where there are compute shaders, and the vertices computed here.
#include <DrawFixture.h>
#include <DrawingOf.h>
#include <SpriteReference.h>

#include "../../src/render/RectangleSpriteExpansion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using RectangleSprite::ComputeStageInputVertexData;
using RectangleSprite::DummyVertexT;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Lines = zx3D::DataSpan<zx3D::Line const>;
using Stipple = std::optional<zx3D::LineStipplePattern>;
using Draw = void (Drawing::*)(DrawCall const&, Lines, std::uint16_t);

constexpr std::size_t kFloatsPerVertex = 16;
constexpr std::size_t kFloatsPerLine = 6 * kFloatsPerVertex;

/// Equally many vec4s that differ by less than two millionths of the largest number in them.
MATCHER_P(IsNearly, expected, "is nearly the reference") {
    if (arg.size() != expected.size())
        return false;
    for (std::size_t i = 0; i < arg.size(); i += 4) {
        float largest = 0.0f;
        float difference = 0.0f;
        for (std::size_t k = i; k < i + 4; ++k) {
            largest = std::max(largest, std::abs(expected[k]));
            difference = std::max(difference, std::abs(arg[k] - expected[k]));
        }
        if (!(difference <= 2e-6f * largest)) {
            *result_listener << "vec4 " << i / 4 << " begins with " << arg[i] << ", " << arg[i + 1]
                             << " instead of " << expected[i] << ", " << expected[i + 1];
            return false;
        }
    }
    return true;
}

struct Either {
    using Type = Draw;
};
struct OnCpu {
    using Type = Draw;
};
struct OnGpu {
    using Type = Draw;
};

class RectangleSpritesTest : public DrawFixture {
protected:
    template<typename Path>
    void DrawOn(Lines lines, std::uint16_t width,
                std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                Stipple const& stipple = std::nullopt, std::optional<BGFXRenderState> state = std::nullopt) {
        Drawing& drawing = DrawingOf(*m_renderer);
        (drawing.*Revealed<Path>::pointer)(
            drawing.MakeCall(m_view, modelTransform, state.value_or(BGFXRenderer::STATE_OPAQUE), stipple),
            lines, width);
    }

    /// A vec4 of a vertex of the one draw: 0 the corner, 1 the colour, 2 the start, 3 the end.
    static std::vector<float> Part(std::size_t vertex, std::size_t part) {
        std::vector<float> const floats = TheDraw().VerticesAs<float>();
        auto const first = floats.begin() + std::ptrdiff_t(vertex * kFloatsPerVertex + 4 * part);
        return {first, first + 4};
    }

    std::array<zx3D::Line, 2> const m_lines{zx3D::Line{{1, 2, 3}, {4, 5, 6}, {0.1f, 0.2f, 0.3f, 0.4f}},
                                            zx3D::Line{{7, 8, 9}, {10, 11, 12}, {0.5f, 0.6f, 0.7f, 0.8f}}};

    /// From the middle of the view to its right edge.
    std::array<zx3D::Line, 1> const m_halfLine{zx3D::Line{{0, 0, 0}, {1, 0, 0}, {1, 1, 1, 1}}};
};

class RectangleSpriteExpansionTest : public RectangleSpritesTest {
protected:
    void SetUp() override {
        RectangleSpritesTest::SetUp();
        DisableCompute();
    }

    /// What is expected of lines that reach behind the camera.
    enum class Behind { AsReference, Anything };

    /// Draws the lines and compares all their vertices with the reference: in the bits, but for lines that
    /// reach behind the camera.
    void ExpectExpansion(Lines lines, std::uint16_t width, QMatrix4x4 const& model,
                         Behind behind = Behind::AsReference) {
        recorder::ClearCalls();
        m_renderer->SetModelTransform(model);
        m_renderer->DrawLines(m_view, lines, float(width));
        QMatrix4x4 const matrix = m_view.GetProjectionMatrix() * m_view.GetViewMatrix() * model;
        QSize const viewport = m_view.GetViewport().size();
        std::vector<float> actual = TheDraw().VerticesAs<float>();
        std::vector<float> expected = ExpandedLines(lines, matrix, viewport, width);
        ASSERT_THAT(actual, SizeIs(expected.size()));
        for (std::size_t i = lines.count; i-- > 0;) {
            if (!ReachesBehindCamera(lines.data[i], matrix))
                continue;
            auto const take = [&](std::vector<float>& floats) {
                auto const first = floats.begin() + std::ptrdiff_t(i * kFloatsPerLine);
                std::vector<float> const taken(first, first + kFloatsPerLine);
                floats.erase(first, first + kFloatsPerLine);
                return taken;
            };
            take(expected);
            std::vector<float> const cut = take(actual);
            if (behind == Behind::AsReference)
                ExpectCut(cut, lines.data[i], matrix, viewport, width);
        }
        EXPECT_THAT(actual, HasBitsOf(expected));
    }

    /// Expects the floats of a line that is cut at the near plane. One that overflows on the way is not
    /// drawn.
    static void ExpectCut(std::vector<float> const& actual, zx3D::Line const& line, QMatrix4x4 const& matrix,
                          QSize viewport, float width) {
        std::optional<std::vector<float>> const expected =
            ExpandedCutLine(line, matrix, viewport, width, bgfx::getCaps()->homogeneousDepth);
        if (expected && IsFinite(*expected) && !IsCollapsed(*expected))
            EXPECT_THAT(actual, IsNearly(*expected));
        else
            EXPECT_TRUE(IsCollapsed(actual) || !IsFinite(actual));
    }

    static bool IsFinite(std::vector<float> const& floats) {
        return std::all_of(floats.begin(), floats.end(), [](float value) { return std::isfinite(value); });
    }

    /// All corners are (0, 0, 0, 0).
    static bool IsCollapsed(std::vector<float> const& line) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (i % kFloatsPerVertex < 4 && line[i] != 0.0f)
                return false;
        }
        return true;
    }

    std::vector<zx3D::Line> RandomLines(std::size_t count, bool unusual = false) {
        std::vector<zx3D::Line> lines;
        for (std::size_t i = 0; i < count; ++i) {
            bx::Vec3 const start = unusual ? m_random.UnusualPosition() : m_random.Position();
            bx::Vec3 const end = unusual ? m_random.UnusualPosition() : m_random.Position();
            bool const hasLength = m_random.Int(0, 9) != 0;
            lines.push_back({start, hasLength ? end : start, m_random.Color()});
        }
        return lines;
    }

    /// NDC x is x / z, likewise y and z: ends with z = 0 have w = 0.
    static QMatrix4x4 PinholeProjection() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}; }

    RandomGeometry m_random;
};

/// On 128 × 64 pixels a camera in the origin that looks along z; what is from 1 on is drawn.
class RectangleSpriteCutTest : public RectangleSpriteExpansionTest {
protected:
    void SetUp() override {
        RectangleSpriteExpansionTest::SetUp();
        m_view.SetViewport(QRect(7, 3, 128, 64));
        SetHomogeneousDepth(false);
    }

    void SetHomogeneousDepth(bool homogeneous) {
        Configure([=](recorder::Settings& settings) { settings.homogeneousDepth = homogeneous; });
        m_depthAtNearPlane = homogeneous ? -1.0f : 0.0f;
        float const z = homogeneous ? -2.0f : -1.0f;
        m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, z, 0, 0, 1, 0});
    }

    /// With both ranges of depths.
    template<typename Check>
    void ForEachDepth(Check check) {
        for (bool const homogeneous : {false, true}) {
            SetHomogeneousDepth(homogeneous);
            check(m_depthAtNearPlane);
        }
    }

    /// The depth of a distance from the camera.
    float DepthAt(float distance) const { return 1.0f - (1.0f - m_depthAtNearPlane) / distance; }

    void Draw(zx3D::Line const& line) {
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, Lines(&line, 1), 4.0f);
    }

private:
    float m_depthAtNearPlane = 0.0f;
};

} // namespace

template struct Reveal<Either, &Drawing::DrawRectangleSprites>;
template struct Reveal<OnCpu, &Drawing::DrawRectangleSpritesCPU>;
template struct Reveal<OnGpu, &Drawing::DrawRectangleSpritesGPU>;

TEST_F(RectangleSpritesTest, WithComputeBgfxIsCalledInOrder) {
    m_renderer->DrawLines(m_view, m_lines, 4.0f);
    EXPECT_THAT(
        recorder::CallTexts(),
        ElementsAre("createDynamicVertexBuffer(2, 48, 0x100)", "makeRef(96)",
                    "update(dynamicVertexBuffer#0, 0, 96)", "createDynamicVertexBuffer(12, 64, 0x200)",
                    "setTransform(cache#0, 1)", "setUniform(u_viewport, 100, 50, 0, 0)",
                    "setUniform(u_rectangleSprite, 2, 4, 0, 0)", "setBuffer(0, dynamicVertexBuffer#0, Read)",
                    "setBuffer(1, dynamicVertexBuffer#1, Write)",
                    "dispatch(5, " + Program("cs_rectangle_sprite") + ", 1, 1, 1, 0xff)",
                    "setState(0x400000002f, 0x0)", "setVertexBuffer(0, dynamicVertexBuffer#1)",
                    "setUniform(u_viewport, 100, 50, 0, 0)", "setUniform(u_rectangleSprite, 2, 4, 0, 0)",
                    "setUniform(u_lineStipple, 65535, 1, 0, 0)",
                    "submit(5, " + Program("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple") +
                        ", 0, 0xff)"));
}

TEST_F(RectangleSpritesTest, WithoutComputeBgfxIsCalledInOrder) {
    DisableCompute();
    m_renderer->DrawLines(m_view, m_lines, 4.0f);
    EXPECT_THAT(
        recorder::CallTexts(),
        ElementsAre("createDynamicVertexBuffer(12, 64, 0x0)", "setTransform(cache#0, 1)", "alloc(768)",
                    "update(dynamicVertexBuffer#0, 0, 768)", "setState(0x400000002f, 0x0)",
                    "setVertexBuffer(0, dynamicVertexBuffer#0)", "setUniform(u_viewport, 100, 50, 0, 0)",
                    "setUniform(u_rectangleSprite, 2, 4, 0, 0)", "setUniform(u_lineStipple, 65535, 1, 0, 0)",
                    "submit(5, " + Program("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple") +
                        ", 0, 0xff)"));
}

TEST_F(RectangleSpritesTest, TheComputeShaderReadsStartEndAndColorAsFourFloatsEach) {
    m_renderer->DrawLines(m_view, m_lines, 4.0f);
    std::vector<float> const expected{1, 2, 3, 1, 4,  5,  6,  1, 0.1f, 0.2f, 0.3f, 0.4f,
                                      7, 8, 9, 1, 10, 11, 12, 1, 0.5f, 0.6f, 0.7f, 0.8f};
    EXPECT_EQ(recorder::CallsNamed("update").at(0).PayloadAs<float>(), expected);
    auto const input = Kept<ComputeStageInputVertexData>(FrameResource::RectangleSpriteInput);
    EXPECT_EQ(std::memcmp(input->vertices.get(), expected.data(), 96), 0);
}

TEST_F(RectangleSpritesTest, TheBuffersHaveTheLayoutsOfTheShaders) {
    m_renderer->DrawLines(m_view, m_lines, 4.0f);
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    char const* const vertices = "TexCoord0 4 Float, Color0 4 Float, TexCoord1 4 Float, TexCoord2 4 Float";
    EXPECT_EQ(draws[0].buffers.at(0).layout, "TexCoord0 4 Float, TexCoord1 4 Float, Color0 4 Float");
    EXPECT_EQ(draws[0].buffers.at(1).layout, vertices);
    EXPECT_EQ(draws[1].layout, vertices);
    DisableCompute();
    recorder::ClearCalls();
    m_renderer->DrawLines(m_view, m_lines, 4.0f);
    EXPECT_EQ(TheDraw().layout, vertices);
}

TEST_F(RectangleSpritesTest, DispatchAndDrawHaveTheirUniformsAndTheTransform) {
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(1, 0, 0));
    m_renderer->SetModelTransform(QMatrix4x4());
    m_renderer->DrawLines(m_view, m_lines, 4.0f, given, zx3D::LineStipplePattern{0xF0F0, 3});
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(2));
    for (recorder::Draw const& draw : draws) {
        EXPECT_THAT(draw.uniforms.at("u_viewport"), ElementsAre(100, 50, 0, 0));
        EXPECT_THAT(draw.uniforms.at("u_rectangleSprite"), ElementsAre(2, 4, 0, 0));
        EXPECT_EQ(draw.transform, std::uint32_t(given));
    }
    EXPECT_THAT(draws[0].uniforms, SizeIs(2));
    EXPECT_THAT(draws[1].uniforms.at("u_lineStipple"), ElementsAre(61680, 3, 0, 0));
    EXPECT_THAT(draws[1].indexBuffer, IsEmpty());
    EXPECT_THAT(draws[1].vertices, SizeIs(2 * 6 * sizeof(DummyVertexT)));
}

TEST_F(RectangleSpritesTest, AGroupExpands64Lines) {
    for (auto const& [count, groups] : {std::pair(1, 1u), std::pair(63, 1u), std::pair(64, 1u),
                                        std::pair(65, 2u), std::pair(128, 2u), std::pair(129, 3u)}) {
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, std::vector<zx3D::Line>(std::size_t(count)), 2.0f);
        ASSERT_THAT(recorder::Draws(), SizeIs(2));
        EXPECT_THAT(recorder::Draws()[0].groups, ElementsAre(groups, 1, 1)) << count;
    }
}

TEST_F(RectangleSpritesTest, AGivenStateAndStippleReplaceTheDefaults) {
    for (bool const hasCompute : {true, false}) {
        if (!hasCompute)
            DisableCompute();
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_lines, 2.0f, std::nullopt, zx3D::LineStipplePattern{0x8001, 255},
                              BGFXRenderer::STATE_TRANSPARENT);
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
        EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(32769, 255, 0, 0));
    }
}

TEST_F(RectangleSpritesTest, WithComputeInputAndOutputAreKept) {
    m_renderer->DrawLines(m_view, m_lines, 2.0f);
    EXPECT_THAT(KeptKinds(),
                ElementsAre(FrameResource::RectangleSpriteInput, FrameResource::RectangleSpriteOutput));
    EXPECT_THAT(Kept(), ElementsAre(testing::Key(3), testing::Key(4)));
    auto const input = Kept<ComputeStageInputVertexData>(FrameResource::RectangleSpriteInput);
    auto const output = Kept<DummyVertexT>(FrameResource::RectangleSpriteOutput);
    EXPECT_TRUE(bool(input->vertexBuffer));
    EXPECT_TRUE(bool(output->vertexBuffer));
    EXPECT_FALSE(bool(input->indexBuffer));
    EXPECT_FALSE(bool(output->indexBuffer));
    EXPECT_EQ(output->vertices, nullptr);
}

TEST_F(RectangleSpritesTest, WithoutComputeTheVerticesAreKept) {
    DisableCompute();
    m_renderer->DrawLines(m_view, m_lines, 2.0f);
    EXPECT_THAT(Kept(), ElementsAre(testing::Key(2)));
    EXPECT_THAT(KeptKinds(), ElementsAre(FrameResource::SpriteVertices));
    EXPECT_TRUE(bool(Kept<DummyVertexT>(FrameResource::SpriteVertices)->vertexBuffer));
}

TEST_F(RectangleSpritesTest, VerticesOfPointsAndLinesAreKeptInTheOrderOfTheirCalls) {
    DisableCompute();
    std::array<zx3D::Vertex::Pos3fColorRGBA, 1> const points{};
    m_renderer->DrawLines(m_view, m_lines, 2.0f);
    m_renderer->DrawPoints(m_view, points, std::uint16_t(2));
    EXPECT_THAT(KeptKinds(), ElementsAre(FrameResource::SpriteVertices, FrameResource::SpriteVertices));
    EXPECT_NO_THROW(Kept<DummyVertexT>(FrameResource::SpriteVertices, 0));
    EXPECT_THROW(Kept<DummyVertexT>(FrameResource::SpriteVertices, 1), std::bad_any_cast);
}

TEST_F(RectangleSpritesTest, TheCapabilitiesChooseThePath) {
    DrawOn<Either>(m_lines, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
    DisableCompute();
    DrawOn<Either>(m_lines, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    EXPECT_EQ(recorder::CountCalls("submit"), 2u);
    DisableCaps();
    recorder::ClearCalls();
    DrawOn<Either>(m_lines, 2);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(RectangleSpritesTest, OneComputeBitAmongOthersIsEnough) {
    Configure([](recorder::Settings& settings) { settings.supported = ~std::uint64_t(0); });
    DrawOn<Either>(m_lines, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
    Configure([](recorder::Settings& settings) { settings.supported = ~BGFX_CAPS_COMPUTE; });
    DrawOn<Either>(m_lines, 2);
    EXPECT_EQ(recorder::CountCalls("dispatch"), 1u);
}

TEST_F(RectangleSpritesTest, WidthOneIsASpriteToo) {
    DrawOn<OnGpu>(m_lines, 1);
    EXPECT_THAT(TheDraw().uniforms.at("u_rectangleSprite"), ElementsAre(2, 1, 0, 0));
    recorder::ClearCalls();
    DrawOn<OnCpu>(m_halfLine, 1);
    EXPECT_THAT(TheDraw().uniforms.at("u_rectangleSprite"), ElementsAre(1, 1, 0, 0));
    EXPECT_NEAR(Part(0, 0)[1], 0.02f, 1e-6f); // half a pixel of 50, y up
}

TEST_F(RectangleSpritesTest, WidthZeroAndEmptySpansDrawNothing) {
    auto const expectNothing = [&](Lines lines, std::uint16_t width) {
        DrawOn<Either>(lines, width);
        DrawOn<OnCpu>(lines, width);
        DrawOn<OnGpu>(lines, width);
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_THAT(KeptKinds(), IsEmpty());
    };
    expectNothing(m_lines, 0);
    expectNothing(Lines(), 2);
    expectNothing(Lines(m_lines.data(), 0), 2);
    expectNothing(Lines(nullptr, 2), 2);
}

TEST_F(RectangleSpritesTest, WithoutATransformTheCurrentOneIsSetAndMovesTheLines) {
    DisableCompute();
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->SetModelTransform(Translation(0.5f, 0, 0.25f));
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f);
    EXPECT_EQ(TheDraw().transform, 2u);
    EXPECT_THAT(Part(0, 2), ElementsAre(75, 25, 0.25f, 1));
    EXPECT_THAT(Part(0, 3), ElementsAre(125, 25, 0.25f, 1));
}

TEST_F(RectangleSpritesTest, AGivenTransformIsSetAndMovesTheLines) {
    DisableCompute();
    ModelTransformCacheId const given = m_renderer->SetModelTransform(Translation(0.5f, 0, 0.25f));
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f, given);
    EXPECT_EQ(TheDraw().transform, std::uint32_t(given));
    EXPECT_THAT(Part(0, 2), ElementsAre(75, 25, 0.25f, 1));
}

TEST_F(RectangleSpritesTest, AnIdThatIsNotInTheCacheIsSetAndMeansIdentity) {
    DisableCompute();
    m_renderer->SetModelTransform(Translation(7, 7, 7));
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f, ModelTransformCacheId(42));
    EXPECT_EQ(TheDraw().transform, 42u);
    EXPECT_THAT(Part(0, 2), ElementsAre(50, 25, 0, 1));
    EXPECT_THAT(ModelTransforms(), SizeIs(1)) << "looking it up adds nothing";
}

TEST_F(RectangleSpritesTest, AnIdOfAnEarlierFrameMeansTheMatrixThatItHadLast) {
    DisableCompute();
    ASSERT_TRUE(StartFrame());
    m_renderer->SetModelTransform(QMatrix4x4());
    ModelTransformCacheId const stale = m_renderer->SetModelTransform(Translation(-0.5f, 0, 0));
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
    ModelTransformCacheId const first = m_renderer->SetModelTransform(Translation(0.5f, 0, 0));
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f, stale);
    EXPECT_EQ(Part(0, 2)[0], 25.0f);
    recorder::ClearCalls();
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f, first);
    EXPECT_EQ(Part(0, 2)[0], 75.0f);
}

// The numbers below are worked out by hand.

TEST_F(RectangleSpriteExpansionTest, AHorizontalLineBecomesARectangleOfItsWidth) {
    // Pixels (10, 20) to (110, 20) of 128 × 64, where all numbers are exact.
    m_view.SetViewport(QRect(7, 3, 128, 64));
    std::array<zx3D::Line, 1> const line{
        zx3D::Line{{-0.84375f, 0.375f, 0.25f}, {0.71875f, 0.375f, 0.75f}, {0.1f, 0.2f, 0.3f, 0.4f}}};
    m_renderer->DrawLines(m_view, line, 4.0f);
    std::array<std::array<float, 4>, 4> const corners{{{-0.84375f, 0.4375f, 0.25f, 1},   // (10, 18)
                                                       {0.71875f, 0.4375f, 0.75f, 1},    // (110, 18)
                                                       {0.71875f, 0.3125f, 0.75f, 1},    // (110, 22)
                                                       {-0.84375f, 0.3125f, 0.25f, 1}}}; // (10, 22)
    ASSERT_THAT(TheDraw().vertices, SizeIs(6 * sizeof(DummyVertexT)));
    std::size_t vertex = 0;
    for (std::size_t const corner : {0, 1, 2, 2, 3, 0}) {
        EXPECT_THAT(Part(vertex, 0), ElementsAreArray(corners[corner])) << "vertex " << vertex;
        EXPECT_THAT(Part(vertex, 1), ElementsAre(0.1f, 0.2f, 0.3f, 0.4f));
        EXPECT_THAT(Part(vertex, 2), ElementsAre(10, 20, 0.25f, 1));
        EXPECT_THAT(Part(vertex, 3), ElementsAre(110, 20, 0.75f, 1));
        ++vertex;
    }
}

TEST_F(RectangleSpriteExpansionTest, ALineWithoutLengthHasItsCornersAtZeroAndKeepsTheRest) {
    std::array<zx3D::Line, 1> const line{
        zx3D::Line{{0.5f, 0.5f, 0.25f}, {0.5f, 0.5f, 0.75f}, {1, 0, 1, 0.5f}}};
    m_renderer->DrawLines(m_view, line, 4.0f);
    ASSERT_THAT(TheDraw().vertices, SizeIs(6 * sizeof(DummyVertexT)));
    for (std::size_t vertex = 0; vertex < 6; ++vertex) {
        EXPECT_THAT(Part(vertex, 0), ElementsAre(0, 0, 0, 0));
        EXPECT_THAT(Part(vertex, 1), ElementsAre(1, 0, 1, 0.5f));
        EXPECT_THAT(Part(vertex, 2), ElementsAre(75, 12.5f, 0.25f, 1));
        EXPECT_THAT(Part(vertex, 3), ElementsAre(75, 12.5f, 0.75f, 1));
    }
}

TEST_F(RectangleSpriteExpansionTest, OnlyLinesShorterThanTheLeastLengthCollapse) {
    // On 2 × 2 pixels the pixel is what NDC has beyond −1, exactly.
    m_view.SetViewport(QRect(0, 0, 2, 2));
    constexpr float step = 0x1p-24f; // between floats just above −1
    auto const isCollapsed = [&](float length) {
        std::array<zx3D::Line, 1> const line{zx3D::Line{{-1, 1, 0}, {-1.0f + length, 1, 0}, {}}};
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, line, 4.0f);
        return Part(0, 0)[3] == 0.0f;
    };
    EXPECT_TRUE(isCollapsed(199 * step));  // 1.1861e-5
    EXPECT_FALSE(isCollapsed(200 * step)); // 1.19209290e-5, which is not shorter
    EXPECT_FALSE(isCollapsed(201 * step));
}

TEST_F(RectangleSpriteExpansionTest, HalfAnOddWidthIsKept) {
    m_renderer->DrawLines(m_view, m_halfLine, 5.0f);
    EXPECT_NEAR(Part(0, 0)[1], 0.1f, 1e-6f); // 2.5 pixels of 50, y up
}

TEST_F(RectangleSpriteExpansionTest, TheProductIsProjectionTimesViewTimesModel) {
    QMatrix4x4 projection;
    projection.scale(0.5f, 0.5f, 0.5f);
    m_view.SetProjectionMatrix(projection);
    QMatrix4x4 view;
    view.rotate(90.0f, 0.0f, 0.0f, 1.0f);
    m_view.SetViewMatrix(view);
    m_renderer->SetModelTransform(Translation(0.5f, 0, 0));
    m_renderer->DrawLines(m_view, m_halfLine, 2.0f);
    std::vector<float> const start = Part(0, 2);
    std::vector<float> const end = Part(0, 3);
    EXPECT_NEAR(start[0], 50.0f, 1e-4f);
    EXPECT_NEAR(start[1], 25.0f - 6.25f, 1e-4f);
    EXPECT_NEAR(end[0], 50.0f, 1e-4f);
    EXPECT_NEAR(end[1], 25.0f - 18.75f, 1e-4f);
}

TEST_F(RectangleSpriteExpansionTest, RandomLinesInAllNumbersHaveTheBitsOfTheReference) {
    for (std::size_t const count : {1, 2, 15, 16, 17, 31, 32, 33, 500}) {
        for (int round = 0; round < 10; ++round) {
            m_view.SetViewport(QRect(m_random.Int(0, 50), m_random.Int(0, 50), m_random.Int(1, 4000),
                                     m_random.Int(1, 4000)));
            m_view.SetProjectionMatrix(m_random.Matrix());
            m_view.SetViewMatrix(m_random.Matrix());
            ExpectExpansion(RandomLines(count), std::uint16_t(m_random.Int(2, 65535)), m_random.Matrix());
        }
    }
}

TEST_F(RectangleSpriteExpansionTest, LinesInPerspectiveHaveTheBitsOfTheReference) {
    QMatrix4x4 projection;
    projection.perspective(60.0f, 2.0f, 0.1f, 100.0f);
    m_view.SetProjectionMatrix(projection);
    for (int round = 0; round < 20; ++round) {
        QMatrix4x4 view;
        view.lookAt({m_random.Float(-5, 5), 0, 15}, {0, 0, 0}, {0, 1, 0});
        m_view.SetViewMatrix(view);
        ExpectExpansion(RandomLines(33), std::uint16_t(m_random.Int(2, 100)), m_random.Matrix());
    }
}

TEST_F(RectangleSpriteExpansionTest, AMillionLinesInFrontHaveTheBitsOfTheFormulaWhateverIsBesideThem) {
    constexpr std::size_t count = 10'000;
    QSize const viewport(1280, 720);
    QMatrix4x4 perspective, parallel;
    perspective.perspective(60.0f, 16.0f / 9.0f, 0.1f, 100.0f);
    perspective.lookAt({3, 2, 4}, {0, 0, 0}, {0, 1, 0}); // among the lines
    parallel.ortho(-5.0f, 5.0f, -3.0f, 3.0f, 0.1f, 10.0f);
    parallel.lookAt({3, 2, 4}, {0, 0, 0}, {0, 1, 0});
    std::vector<DummyVertexT> vertices(count * RectangleSprite::kVerticesPerLine);
    for (QMatrix4x4 const& matrix : {perspective, parallel}) {
        std::size_t inFront = 0;
        while (inFront < 1'000'000) {
            std::vector<zx3D::Line> const lines = RandomLines(count);
            RectangleSprite::Expand(lines, matrix, viewport, 4.0f, vertices.data());
            std::vector<float> const expected = ExpandedLines(lines, matrix, viewport, 4.0f);
            for (std::size_t i = 0; i < count; ++i) {
                if (ReachesBehindCamera(lines[i], matrix))
                    continue;
                ++inFront;
                ASSERT_EQ(std::memcmp(&vertices[i * RectangleSprite::kVerticesPerLine],
                                      &expected[i * kFloatsPerLine], kFloatsPerLine * sizeof(float)),
                          0);
            }
        }
    }
}

TEST_F(RectangleSpriteCutTest, ALineFromBehindBeginsAtTheNearPlane) {
    ForEachDepth([&](float depthAtNearPlane) {
        Draw({{2, -1, -4}, {0, -1, 4}, {}}); // through (0.75, -1, 1)
        EXPECT_THAT(Part(0, 2), ElementsAre(112, 64, depthAtNearPlane, 1));
        EXPECT_THAT(Part(0, 3), ElementsAre(64, 40, DepthAt(4), 1));
    });
}

TEST_F(RectangleSpriteCutTest, ALineToBehindEndsAtTheNearPlane) {
    ForEachDepth([&](float depthAtNearPlane) {
        Draw({{0, -1, 4}, {2, -1, -4}, {}});
        EXPECT_THAT(Part(0, 2), ElementsAre(64, 40, DepthAt(4), 1));
        EXPECT_THAT(Part(0, 3), ElementsAre(112, 64, depthAtNearPlane, 1));
    });
}

TEST_F(RectangleSpriteCutTest, TheRectangleEndsSquareAtTheCut) {
    Draw({{0, -1, 4}, {0, -1, -4}, {}}); // straight down in the picture
    EXPECT_THAT(Part(0, 0), ElementsAre(0.03125f, -0.25f, DepthAt(4), 1));
    EXPECT_THAT(Part(1, 0), ElementsAre(0.03125f, -1, DepthAt(1), 1));
    EXPECT_THAT(Part(2, 0), ElementsAre(-0.03125f, -1, DepthAt(1), 1));
    EXPECT_THAT(Part(4, 0), ElementsAre(-0.03125f, -0.25f, DepthAt(4), 1));
}

TEST_F(RectangleSpriteCutTest, WhatIsBehindOrBeforeTheNearPlaneCollapses) {
    ForEachDepth([&](float) {
        for (zx3D::Line const& line :
             {zx3D::Line{{1, 2, -3}, {4, 5, -6}, {}}, zx3D::Line{{1, 2, 0.5f}, {4, 5, -6}, {}},
              zx3D::Line{{1, 2, -3}, {4, 5, 0.5f}, {}}, zx3D::Line{{1, 2, 0}, {4, 5, 0}, {}},
              zx3D::Line{{1, 2, 0}, {4, 5, -1}, {}}, zx3D::Line{{0, 0, 0}, {0, 0, 0}, {}}}) {
            Draw(line);
            std::vector<float> const floats = TheDraw().VerticesAs<float>();
            EXPECT_THAT(floats, SizeIs(kFloatsPerLine));
            EXPECT_TRUE(IsCollapsed(floats));
            EXPECT_TRUE(IsFinite(floats));
        }
    });
}

TEST_F(RectangleSpriteCutTest, AnEndInTheCamerasOwnPlaneIsCut) {
    ForEachDepth([&](float depthAtNearPlane) {
        Draw({{0, -1, 4}, {4, -1, 0.0f}, {}}); // through (3, -1, 1)
        EXPECT_THAT(Part(0, 3), ElementsAre(256, 64, depthAtNearPlane, 1));
        Draw({{4, -1, -0.0f}, {0, -1, 4}, {}});
        EXPECT_THAT(Part(0, 2), ElementsAre(256, 64, depthAtNearPlane, 1));
    });
}

TEST_F(RectangleSpriteCutTest, WithReversedDepthsTheNearPlaneIsTheUpperLimit) {
    SetHomogeneousDepth(false);
    m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0}); // z is 1
    Draw({{2, -1, -4}, {0, -1, 4}, {}});
    EXPECT_THAT(Part(0, 2), ElementsAre(112, 64, 1, 1));
    EXPECT_THAT(Part(0, 3), ElementsAre(64, 40, 0.25f, 1));
}

TEST_F(RectangleSpriteCutTest, WithTheNearPlaneInTheCameraALineIsCutCloseBeforeIt) {
    for (bool const homogeneous : {false, true}) {
        SetHomogeneousDepth(homogeneous);
        m_view.SetProjectionMatrix(PinholeProjection());
        for (float const z : {-4.0f, 0.0f}) {
            Draw({{0, -1, 4}, {0, -1, z}, {}});
            EXPECT_EQ(Part(0, 3)[0], 64.0f);
            EXPECT_GT(Part(0, 3)[1], 1e8f);
            EXPECT_TRUE(IsFinite(TheDraw().VerticesAs<float>()));
        }
    }
}

TEST_F(RectangleSpriteExpansionTest, LinesFromBehindAreCutAsInDoublePrecision) {
    m_view.SetViewport(QRect(0, 0, 1280, 720));
    for (auto const& [near, extent] : {std::pair(0.1f, 1.0f), std::pair(0.1f, 50.0f),
                                       std::pair(0.001f, 20.0f), std::pair(1.0f, 200'000.0f)}) {
        for (bool const homogeneous : {false, true}) {
            Configure([=](recorder::Settings& settings) { settings.homogeneousDepth = homogeneous; });
            bx::mtxProj(m_view.GetProjectionMatrix().data(), 60.0f, 16.0f / 9.0f, near, 1e8f, homogeneous);
            std::vector<zx3D::Line> lines = RandomLines(5'000); // in a cube of 20
            for (zx3D::Line& line : lines) {
                line.start = bx::mul(line.start, extent);
                line.end = bx::mul(line.end, extent);
            }
            ExpectExpansion(lines, 4, QMatrix4x4());
        }
    }
}

TEST_F(RectangleSpriteExpansionTest, EndsInTheCamerasPlaneAreCut) {
    m_view.SetProjectionMatrix(PinholeProjection());
    std::array<zx3D::Line, 5> const lines{
        zx3D::Line{{1, 2, 0.0f}, {1, 2, 4}, {}}, zx3D::Line{{1, 2, 4}, {-1, 2, -0.0f}, {}},
        zx3D::Line{{1, 2, 0.0f}, {3, 4, 0.0f}, {}}, zx3D::Line{{0, 0, 0.0f}, {1, 1, 1}, {}},
        zx3D::Line{{0, 0, 0.0f}, {0, 0, 0.0f}, {}}};
    m_renderer->DrawLines(m_view, lines, 8.0f);
    EXPECT_TRUE(IsFinite(TheDraw().VerticesAs<float>()));
}

TEST_F(RectangleSpriteExpansionTest, UnusualNumbersHarmNoOtherLine) {
    QMatrix4x4 projection;
    projection.perspective(60.0f, 2.0f, 0.1f, 100.0f);
    for (QMatrix4x4 const& matrix : {QMatrix4x4(), projection, PinholeProjection()}) {
        m_view.SetProjectionMatrix(matrix);
        for (int round = 0; round < 20; ++round)
            ExpectExpansion(RandomLines(33, true), std::uint16_t(m_random.Int(2, 100)), QMatrix4x4(),
                            Behind::Anything);
    }
}

TEST_F(RectangleSpriteCutTest, LinesToInfinityBehindTheCameraAreNotDrawn) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (bx::Vec3 const& behind :
         {bx::Vec3(0, -1, -infinity), bx::Vec3(infinity, 0, -1), bx::Vec3(NAN, 0, -1)}) {
        Draw({{0, -1, 4}, behind, {}});
        std::vector<float> const floats = TheDraw().VerticesAs<float>();
        EXPECT_TRUE(IsCollapsed(floats) ||
                    !IsFinite(floats)); // the draw program leaves out what is not finite
    }
}

TEST_F(RectangleSpriteExpansionTest, AnEmptyViewportHasTheBitsOfTheReference) {
    for (QRect const& viewport : {QRect(), QRect(0, 0, 100, 0), QRect(0, 0, 0, 100)}) {
        m_view.SetViewport(viewport);
        ExpectExpansion(RandomLines(17), 10, m_random.Matrix());
    }
}

TEST_F(RectangleSpriteExpansionTest, MatricesOfInfinitiesAndNaNHaveTheBitsOfTheReference) {
    for (float const number :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 0.0f,
          std::numeric_limits<float>::max()}) {
        QMatrix4x4 matrix;
        matrix.fill(number);
        ExpectExpansion(RandomLines(17), 10, matrix);
    }
}
