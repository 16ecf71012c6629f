// The renderer's programs, uniforms, sampler and states: when they are created, and when they go.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>
#include <zx3D/ProgramFactory.h>
#include <zx3DQt/Library.h>

#include <DrawingOf.h>
#include <Fixtures.h>

#include <LogCapture.h>
#include <Warnings.h>

#include <optional>
#include <type_traits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using BGFXRendererSetupTest = LibraryFixture;

std::vector<std::string> const kUniformCalls{
    "createUniform(u_lineStipple, Vec4, 1)",     "createUniform(u_lineStyle, Vec4, 1)",
    "createUniform(u_pointSprite, Vec4, 1)",     "createUniform(u_rectangleSprite, Vec4, 1)",
    "createUniform(u_viewport, Vec4, 1)",        "createUniform(u_viewPosition, Vec4, 1)",
    "createUniform(u_depthOffsetBias, Vec4, 1)", "createUniform(s_fullscreen_texture, Sampler, 1)"};

/// The nine programs in the order of their creation; compute programs have one name.
constexpr std::pair<char const*, char const*> kPrograms[] = {
    {"vs_basic", "fs_basic"},
    {"vs_lighting", "fs_lighting"},
    {"vs_line_simple_dash", "fs_line_simple_dash"},
    {"vs_line_opengl_stipple", "fs_line_opengl_stipple"},
    {"cs_point_sprite", nullptr},
    {"vs_point_sprite", "fs_point_sprite"},
    {"cs_rectangle_sprite", nullptr},
    {"vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple"},
    {"vs_fullscreen_triangle", "fs_fullscreen_texture"},
};

std::string FactoryProgram(char const* vertexOrCompute, char const* fragment) {
    auto& factory = zx3D::ProgramFactory::Get();
    auto const program = fragment != nullptr ? factory.CreateProgram(vertexOrCompute, fragment)
                                             : factory.CreateProgram(vertexOrCompute);
    return "program#" + std::to_string(program.value().idx);
}

std::vector<std::string> Results(char const* name) {
    std::vector<std::string> results;
    for (recorder::Call const& call : recorder::CallsNamed(name))
        results.push_back(call.result);
    return results;
}

std::vector<std::string> TextsOf(char const* name) {
    std::vector<std::string> texts;
    for (recorder::Call const& call : recorder::CallsNamed(name))
        texts.push_back(call.Text());
    return texts;
}

std::string WithAddress(char const* prefix, BGFXRenderer const* renderer) {
    return Streamed(prefix, static_cast<void const*>(renderer), "]");
}

} // namespace

TEST_F(BGFXRendererSetupTest, ConstructionCreatesNothingAndLogsOneLine) {
    LogCapture const log;
    BGFXRenderer const renderer;
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(log.Lines(),
                ElementsAre(LogLine{QtDebugMsg, "zarvex.zx3dqt",
                                    WithAddress("Creating BGFXRenderer [this: ", &renderer), false}));
    EXPECT_EQ(renderer.parent(), nullptr);
}

TEST_F(BGFXRendererSetupTest, BeforeInitializeAllHandlesAreInvalid) {
    BGFXRenderer const renderer;
    EXPECT_FALSE(bgfx::isValid(renderer.GetBasicProgram()));
    EXPECT_FALSE(bgfx::isValid(renderer.GetLightingProgram()));
    EXPECT_FALSE(bgfx::isValid(renderer.GetFullscreenTextureProgram()));
    EXPECT_FALSE(bgfx::isValid(renderer.GetFullscreenTextureSampler()));
}

TEST_F(BGFXRendererSetupTest, AParentOwnsTheRenderer) {
    auto parent = std::make_unique<QObject>();
    auto* const renderer = new BGFXRenderer(parent.get());
    bool gone = false;
    QObject::connect(renderer, &QObject::destroyed, [&gone] { gone = true; });
    EXPECT_EQ(renderer->parent(), parent.get());
    parent.reset();
    EXPECT_TRUE(gone);
}

TEST_F(BGFXRendererSetupTest, HasAMetaObjectWithoutMembersOfItsOwn) {
    QMetaObject const& meta = BGFXRenderer::staticMetaObject;
    EXPECT_STREQ(meta.className(), "zarvex::zx3DQt::BGFXRenderer");
    EXPECT_EQ(meta.superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(BGFXRenderer::tr("text"), "text");
}

TEST_F(BGFXRendererSetupTest, IsNeitherCopiedNorMoved) {
    static_assert(!std::is_copy_constructible_v<BGFXRenderer>);
    static_assert(!std::is_move_constructible_v<BGFXRenderer>);
    static_assert(!std::is_copy_assignable_v<BGFXRenderer>);
    static_assert(!std::is_move_assignable_v<BGFXRenderer>);
    SUCCEED();
}

TEST_F(BGFXRendererSetupTest, InitializeCreatesUniformsThenTheSamplerThenPrograms) {
    BGFXRenderer renderer;
    renderer.Initialize();
    std::vector<std::string> const texts = recorder::CallTexts();
    ASSERT_GE(texts.size(), kUniformCalls.size());
    EXPECT_EQ(std::vector<std::string>(texts.begin(), texts.begin() + std::ptrdiff_t(kUniformCalls.size())),
              kUniformCalls);
    EXPECT_EQ(recorder::CountCalls("createUniform"), kUniformCalls.size());
    EXPECT_EQ(recorder::CountCalls("createProgram"), 9u);
}

TEST_F(BGFXRendererSetupTest, InitializeCreatesTheNineProgramsInOrder) {
    BGFXRenderer renderer;
    renderer.Initialize();
    std::vector<std::string> const created = Results("createProgram");
    std::vector<std::string> expected;
    for (auto const& [vertexOrCompute, fragment] : kPrograms)
        expected.push_back(FactoryProgram(vertexOrCompute, fragment));
    EXPECT_EQ(created, expected);
    EXPECT_EQ(recorder::CountCalls("createProgram"), 9u) << "the renderer asked for other names";
}

TEST_F(BGFXRendererSetupTest, GettersGiveTheirPrograms) {
    BGFXRenderer renderer;
    renderer.Initialize();
    EXPECT_EQ("program#" + std::to_string(renderer.GetBasicProgram().idx),
              FactoryProgram("vs_basic", "fs_basic"));
    EXPECT_EQ("program#" + std::to_string(renderer.GetLightingProgram().idx),
              FactoryProgram("vs_lighting", "fs_lighting"));
    EXPECT_EQ("program#" + std::to_string(renderer.GetFullscreenTextureProgram().idx),
              FactoryProgram("vs_fullscreen_triangle", "fs_fullscreen_texture"));
    EXPECT_EQ(recorder::UniformName(renderer.GetFullscreenTextureSampler()), "s_fullscreen_texture");
}

TEST_F(BGFXRendererSetupTest, InitializeLogsItsSteps) {
    BGFXRenderer renderer;
    LogCapture const log;
    renderer.Initialize();
    EXPECT_THAT(log.Texts(), ElementsAre(WithAddress("Init BGFXRenderer [this: ", &renderer),
                                         WithAddress("Init bgfx uniforms [this: ", &renderer),
                                         WithAddress("Init bgfx texture samplers [this: ", &renderer),
                                         WithAddress("Init BGFXRenderer bgfx programs [this: ", &renderer)));
}

TEST_F(BGFXRendererSetupTest, ASecondInitializeDoesNothing) {
    BGFXRenderer renderer;
    renderer.Initialize();
    recorder::ClearCalls();
    LogCapture const log;
    renderer.Initialize();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(BGFXRendererSetupTest, TwoRenderersShareProgramsAndUniforms) {
    BGFXRenderer first;
    BGFXRenderer second;
    first.Initialize();
    recorder::ClearCalls();
    second.Initialize();
    EXPECT_EQ(recorder::CountCalls("createProgram"), 0u);
    EXPECT_EQ(first.GetBasicProgram().idx, second.GetBasicProgram().idx);
    first.CleanUp();
    EXPECT_EQ(recorder::UniformName(second.GetFullscreenTextureSampler()), "s_fullscreen_texture");
}

TEST_F(BGFXRendererSetupTest, CleanUpDestroysUniformsInOrderAndThenTheSampler) {
    BGFXRenderer renderer;
    renderer.Initialize();
    std::vector<std::string> expected;
    for (std::string const& uniform : Results("createUniform"))
        expected.push_back("destroy(" + uniform + ")");
    recorder::ClearCalls();
    LogCapture const log;
    renderer.CleanUp();
    EXPECT_THAT(recorder::CallTexts(), ElementsAreArray(expected));
    EXPECT_THAT(log.Texts(),
                ElementsAre(WithAddress("Destroying BGFXRenderer bgfx resources [this: ", &renderer)));
}

TEST_F(BGFXRendererSetupTest, CleanUpKeepsTheProgramHandles) {
    BGFXRenderer renderer;
    renderer.Initialize();
    bgfx::ProgramHandle const basic = renderer.GetBasicProgram();
    renderer.CleanUp();
    EXPECT_EQ(renderer.GetBasicProgram().idx, basic.idx);
    EXPECT_TRUE(bgfx::isValid(renderer.GetLightingProgram()));
    EXPECT_FALSE(bgfx::isValid(renderer.GetFullscreenTextureSampler()));
}

TEST_F(BGFXRendererSetupTest, CleanUpWithoutInitializeLogsNothingAndCallsNothing) {
    BGFXRenderer renderer;
    LogCapture const log;
    renderer.CleanUp();
    EXPECT_THAT(log.Lines(), IsEmpty());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXRendererSetupTest, CleanUpTwiceDestroysOnce) {
    BGFXRenderer renderer;
    renderer.Initialize();
    renderer.CleanUp();
    recorder::ClearCalls();
    renderer.CleanUp();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXRendererSetupTest, AfterCleanUpInitializeCreatesUniformsAnewAndAsksForThePrograms) {
    BGFXRenderer renderer;
    renderer.Initialize();
    renderer.CleanUp();
    recorder::ClearCalls();
    renderer.Initialize();
    EXPECT_THAT(recorder::CallTexts(), ElementsAreArray(kUniformCalls));
    EXPECT_TRUE(bgfx::isValid(renderer.GetBasicProgram()));
}

TEST_F(BGFXRendererSetupTest, TheDestructorLogsAndCleansUp) {
    LogCapture log;
    void const* address = nullptr;
    {
        BGFXRenderer renderer;
        address = &renderer;
        renderer.Initialize();
        log.Clear();
        recorder::ClearCalls();
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 8u);
    EXPECT_THAT(log.Texts(),
                ElementsAre(Streamed("Destroying BGFXRenderer [this: ", address, "]"),
                            Streamed("Destroying BGFXRenderer bgfx resources [this: ", address, "]")));
}

TEST_F(BGFXRendererSetupTest, AProgramThatCannotBeCreatedThrowsAndEndsTheAttempts) {
    ExpectWarning("program.not-created");
    Configure([](recorder::Settings& settings) { settings.failingProgram = 2; });
    BGFXRenderer renderer;
    try {
        renderer.Initialize();
        FAIL() << "nothing was thrown";
    } catch (std::bad_optional_access const& exception) {
        EXPECT_STREQ(exception.what(), std::bad_optional_access().what());
    }
    EXPECT_EQ(recorder::CountCalls("createProgram"), 3u);
    EXPECT_TRUE(bgfx::isValid(renderer.GetBasicProgram()));
    EXPECT_TRUE(bgfx::isValid(renderer.GetLightingProgram()));
    EXPECT_FALSE(bgfx::isValid(renderer.GetFullscreenTextureProgram()));
    EXPECT_TRUE(bgfx::isValid(renderer.GetFullscreenTextureSampler()));
    ExpectLeaks();
}

TEST_F(BGFXRendererSetupTest, AfterAFailureTheRendererIsNotInitialisedAndTriesEverythingAgain) {
    ExpectWarning("program.not-created");
    Configure([](recorder::Settings& settings) { settings.failingProgram = 2; });
    BGFXRenderer renderer;
    EXPECT_THROW(renderer.Initialize(), std::bad_optional_access);
    recorder::ClearCalls();
    renderer.CleanUp();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    renderer.Initialize();
    EXPECT_THAT(TextsOf("createUniform"), ElementsAreArray(kUniformCalls));
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
    EXPECT_TRUE(bgfx::isValid(renderer.GetFullscreenTextureProgram()));
    ExpectLeaks(); // the handles of the first attempt are overwritten
}

TEST_F(BGFXRendererSetupTest, StatesHaveTheirValues) {
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_OPAQUE), 0x000000400000002FULL);
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_TRANSPARENT), 0x000000400656502FULL);
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_MARKER_OVERLAY), 0x000000000000008FULL);
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_LINES), 0x000200400000002FULL);
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_POINTS), 0x000400400000002FULL);
    EXPECT_EQ(std::uint64_t(BGFXRenderer::STATE_LINESTRIP), 0x000300400000002FULL);
}

TEST_F(BGFXRendererSetupTest, TheMarkerOverlayTestsAlwaysAndWritesNoDepth) {
    std::uint64_t const state = BGFXRenderer::STATE_MARKER_OVERLAY;
    EXPECT_EQ(state & BGFX_STATE_WRITE_Z, 0u);
    EXPECT_EQ(state & BGFX_STATE_DEPTH_TEST_MASK, std::uint64_t(BGFX_STATE_DEPTH_TEST_ALWAYS));
}

TEST_F(BGFXRendererSetupTest, NoStateCullsOrMultisamples) {
    for (std::uint64_t const state :
         {BGFXRenderer::STATE_OPAQUE, BGFXRenderer::STATE_TRANSPARENT, BGFXRenderer::STATE_MARKER_OVERLAY,
          BGFXRenderer::STATE_LINES, BGFXRenderer::STATE_POINTS, BGFXRenderer::STATE_LINESTRIP}) {
        EXPECT_EQ(state & BGFX_STATE_CULL_MASK, 0u);
        EXPECT_EQ(state & BGFX_STATE_MSAA, 0u);
    }
}

TEST_F(BGFXRendererSetupTest, UpdatersSetTheirVec4) {
    BGFXRenderer renderer;
    renderer.Initialize();
    recorder::ClearCalls();
    BGFXViewContext view;
    view.SetViewport(QRect(10, 20, 800, 600));
    Drawing const& drawing = DrawingOf(renderer);

    drawing.UpdateLineStippleUniform({0xF0F0, 3});
    drawing.UpdateLineStyleUniform({1.5f, -2.5f});
    drawing.UpdatePointSpriteUniform(100000, 12);
    drawing.UpdateRectangleSpriteUniform(7, 65535);
    drawing.UpdateViewportUniform(view);
    renderer.UpdateViewPositionUniform(QVector3D(1, 2, 3));
    drawing.UpdateDepthOffsetBiasUniform(0.25f, -0.5f);

    EXPECT_THAT(recorder::CallTexts(), ElementsAre("setUniform(u_lineStipple, 61680, 3, 0, 0)",
                                                   "setUniform(u_lineStyle, 1.5, -2.5, 0, 0)",
                                                   "setUniform(u_pointSprite, 100000, 12, 0, 0)",
                                                   "setUniform(u_rectangleSprite, 7, 65535, 0, 0)",
                                                   "setUniform(u_viewport, 800, 600, 0, 0)",
                                                   "setUniform(u_viewPosition, 1, 2, 3, 1)",
                                                   "setUniform(u_depthOffsetBias, 0.25, -0.5, 0, 0)"));
}

TEST_F(BGFXRendererSetupTest, ARendererThatOutlivesShutdownMakesNoCall) {
    auto renderer = std::make_unique<BGFXRenderer>();
    renderer->Initialize();
    Shutdown();
    recorder::ClearCalls();
    renderer->CleanUp();
    renderer.reset();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    // The uniforms went with bgfx.
    ExpectLeaks();
}

TEST_F(BGFXRendererSetupTest, ARendererUsedInTheNextContextCreatesEverythingAnew) {
    BGFXRenderer renderer;
    renderer.Initialize();
    Shutdown();
    ASSERT_TRUE(Init(false));
    recorder::ClearCalls();
    renderer.Initialize();
    EXPECT_THAT(TextsOf("createUniform"), ElementsAreArray(kUniformCalls));
    EXPECT_EQ(recorder::CountCalls("createProgram"), 9u);
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
    ExpectLeaks(); // of the first context
}
