// zx3D::ProgramFactory: programs by name, each created once and owned by the factory.
#include <zx3D/ProgramFactory.h>

#include <zx3D/Context.h>

#include <Fixtures.h>

#include <string_view>
#include <utility>

using namespace zarvex::zx3D;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using ProgramFactoryTest = ContextFixture;

// As zx3dqt_add_shaders embeds them: all that matters here is the stage, and that they differ.
constexpr std::uint8_t kVertexBinary[] = {'V', 'S', 'H', 11, 1};
constexpr std::uint8_t kFragmentBinary[] = {'F', 'S', 'H', 11, 1};
constexpr std::uint8_t kComputeBinary[] = {'C', 'S', 'H', 11, 1};
constexpr EmbeddedShader kOwnVertexShader{"vs_basic", kVertexBinary, kVertexBinary};
constexpr EmbeddedShader kOwnFragmentShader{"fs_basic", kFragmentBinary, kFragmentBinary};
constexpr EmbeddedShader kOwnComputeShader{"cs_own", kComputeBinary, kComputeBinary};

constexpr std::pair<std::string_view, std::string_view> kGraphicsPrograms[] = {
    {"vs_basic", "fs_basic"},
    {"vs_lighting", "fs_lighting"},
    {"vs_line_simple_dash", "fs_line_simple_dash"},
    {"vs_line_opengl_stipple", "fs_line_opengl_stipple"},
    {"vs_line_fading", "fs_line_fading"},
    {"vs_point_sprite", "fs_point_sprite"},
    {"vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple"},
    {"vs_rectangle_sprite_fading", "fs_rectangle_sprite_fading"},
    {"vs_fullscreen_triangle", "fs_fullscreen_texture"},
    {"vs_text", "fs_text"},
};

} // namespace

TEST_F(ProgramFactoryTest, IsOneForTheProcess) {
    EXPECT_EQ(&ProgramFactory::Get(), &ProgramFactory::Get());
}

TEST_F(ProgramFactoryTest, KnowsEveryProgramOfTheRenderer) {
    for (auto const& [vertex, fragment] : kGraphicsPrograms) {
        auto const program = ProgramFactory::Get().CreateProgram(vertex, fragment);
        ASSERT_TRUE(program.has_value()) << vertex;
        EXPECT_TRUE(bgfx::isValid(*program)) << vertex;
    }
    for (std::string_view const compute : {"cs_point_sprite", "cs_rectangle_sprite"}) {
        auto const program = ProgramFactory::Get().CreateProgram(compute);
        ASSERT_TRUE(program.has_value()) << compute;
        EXPECT_TRUE(bgfx::isValid(*program)) << compute;
    }
}

TEST_F(ProgramFactoryTest, CreatesEachProgramOnce) {
    auto const first = ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic");
    recorder::ClearCalls();
    auto const second = ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic");
    EXPECT_EQ(first->idx, second->idx);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(ProgramFactoryTest, MakesProgramsOfTheApplicationsShaders) {
    auto const program = ProgramFactory::Get().CreateProgram(kOwnVertexShader, kOwnFragmentShader);
    auto const compute = ProgramFactory::Get().CreateProgram(kOwnComputeShader);
    ASSERT_TRUE(program && compute);
    EXPECT_TRUE(bgfx::isValid(*program));
    EXPECT_TRUE(bgfx::isValid(*compute));
    recorder::ClearCalls();
    EXPECT_EQ(ProgramFactory::Get().CreateProgram(kOwnVertexShader, kOwnFragmentShader)->idx, program->idx);
    EXPECT_EQ(ProgramFactory::Get().CreateProgram(kOwnComputeShader)->idx, compute->idx);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    Context::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

TEST_F(ProgramFactoryTest, TheApplicationsShadersMayHaveTheNamesOfTheLibrarys) {
    auto const own = ProgramFactory::Get().CreateProgram(kOwnVertexShader, kOwnFragmentShader);
    auto const librarys = ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic");
    ASSERT_TRUE(own && librarys);
    EXPECT_NE(own->idx, librarys->idx);
}

TEST_F(ProgramFactoryTest, AnApplicationsShaderOfAnotherStageGivesNothingAndIsNamed) {
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram(kOwnComputeShader, kOwnFragmentShader).has_value());
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram(kOwnVertexShader).has_value());
    EXPECT_THAT(m_callback.traces,
                ElementsAre(HasSubstr("\"cs_own\" is of another stage"), HasSubstr("\"vs_basic\"")));
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(ProgramFactoryTest, UnknownShadersGiveNothingAndAreNamed) {
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram("vs_unknown", "fs_basic").has_value());
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram("cs_unknown").has_value());
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("vs_unknown"), HasSubstr("cs_unknown")));
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(ProgramFactoryTest, AShaderThatBgfxRejectsGivesNothingAndLeavesNothing) {
    Configure([](recorder::Settings& settings) { settings.failingShader = 1; });
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
    EXPECT_THAT(recorder::Alive(), IsEmpty());
    EXPECT_TRUE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
}

TEST_F(ProgramFactoryTest, AProgramThatBgfxRejectsGivesNothingAndLeavesNothing) {
    Configure([](recorder::Settings& settings) { settings.failingProgram = 0; });
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
    EXPECT_THAT(recorder::Alive(), IsEmpty());
    EXPECT_TRUE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
}

TEST_F(ProgramFactoryTest, WithoutComputeAComputeProgramIsInvalidAndNotAnError) {
    Configure([](recorder::Settings& settings) { settings.supported &= ~BGFX_CAPS_COMPUTE; });
    auto const program = ProgramFactory::Get().CreateProgram("cs_point_sprite");
    ASSERT_TRUE(program.has_value());
    EXPECT_FALSE(bgfx::isValid(*program));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_FALSE(ProgramFactory::Get().CreateProgram("cs_unknown").has_value());
}

TEST_F(ProgramFactoryTest, ProgramsGoWithTheContextAndAreCreatedAnewInTheNext) {
    ASSERT_TRUE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
    Context::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    ASSERT_TRUE(Context::Initialize(Context::GetOptions()));
    recorder::ClearCalls();
    ASSERT_TRUE(ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic").has_value());
    EXPECT_EQ(recorder::CountCalls("createProgram"), 1u);
}
