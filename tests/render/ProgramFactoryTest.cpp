// Shader programs by name, as the backends take them.
#include "RenderTest.h"

#include <harness/Trouble.h>

#include <zx3D/ProgramFactory.h>

#include <set>
#include <string>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class ProgramFactoryTest : public RenderTest {
protected:
    zx3D::ProgramFactory& m_factory = zx3D::ProgramFactory::Get();
};

using Names = std::pair<char const*, char const*>;

constexpr Names kGraphicsPrograms[] = {
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

constexpr char const* kComputePrograms[] = {"cs_point_sprite", "cs_rectangle_sprite"};

/// The one message since the last call; fails when there is none or more.
std::string TakeMessage() {
    std::vector<std::string> const messages = Trouble::Take();
    EXPECT_EQ(messages.size(), 1u);
    return messages.empty() ? std::string() : messages.front();
}

} // namespace

TEST_P(ProgramFactoryTest, AllProgramsAreCreatedAndDiffer) {
    std::set<std::uint16_t> handles;
    for (auto const& [vertex, fragment] : kGraphicsPrograms) {
        std::optional<bgfx::ProgramHandle> const program = m_factory.CreateProgram(vertex, fragment);
        ASSERT_TRUE(program.has_value()) << vertex;
        EXPECT_TRUE(bgfx::isValid(*program)) << vertex;
        handles.insert(program->idx);
    }
    for (char const* const compute : kComputePrograms) {
        std::optional<bgfx::ProgramHandle> const program = m_factory.CreateProgram(compute);
        ASSERT_TRUE(program.has_value()) << compute;
        EXPECT_TRUE(bgfx::isValid(*program)) << compute;
        handles.insert(program->idx);
    }
    EXPECT_EQ(handles.size(), std::size(kGraphicsPrograms) + std::size(kComputePrograms));
    m_renderer.PresentSubmittedFrame(false); // the backend compiles and links; fatal errors fail the test
}

TEST_P(ProgramFactoryTest, TheSameNamesGiveTheSameProgram) {
    for (auto const& [vertex, fragment] : kGraphicsPrograms)
        EXPECT_EQ(m_factory.CreateProgram(vertex, fragment)->idx,
                  m_factory.CreateProgram(vertex, fragment)->idx);
    for (char const* const compute : kComputePrograms)
        EXPECT_EQ(m_factory.CreateProgram(compute)->idx, m_factory.CreateProgram(compute)->idx);
}

TEST_P(ProgramFactoryTest, TheRendererTakesItsProgramsFromTheFactory) {
    StartFrame();
    EXPECT_EQ(m_renderer.GetBasicProgram().idx, m_factory.CreateProgram("vs_basic", "fs_basic")->idx);
    EXPECT_EQ(m_renderer.GetLightingProgram().idx,
              m_factory.CreateProgram("vs_lighting", "fs_lighting")->idx);
    EXPECT_EQ(m_renderer.GetFullscreenTextureProgram().idx,
              m_factory.CreateProgram("vs_fullscreen_triangle", "fs_fullscreen_texture")->idx);
    zx3DQt::BGFXRenderer other;
    other.Initialize();
    EXPECT_EQ(other.GetBasicProgram().idx, m_renderer.GetBasicProgram().idx);
}

TEST_P(ProgramFactoryTest, UnknownNamesGiveNoneAndAMessage) {
    EXPECT_FALSE(m_factory.CreateProgram("vs_nowhere", "fs_basic").has_value());
    EXPECT_NE(TakeMessage().find("\"vs_nowhere\" does not exist"), std::string::npos);
    EXPECT_FALSE(m_factory.CreateProgram("vs_basic", "fs_nowhere").has_value());
    EXPECT_NE(TakeMessage().find("\"fs_nowhere\" does not exist"), std::string::npos);
    EXPECT_FALSE(m_factory.CreateProgram("cs_nowhere").has_value());
    EXPECT_NE(TakeMessage().find("\"cs_nowhere\" does not exist"), std::string::npos);
    EXPECT_FALSE(m_factory.CreateProgram("").has_value());
    EXPECT_NE(TakeMessage().find("\"\" does not exist"), std::string::npos);
    m_renderer.PresentSubmittedFrame(false);
}

TEST_P(ProgramFactoryTest, ShadersThatDoNotFitGiveNoneAndAMessage) {
    EXPECT_FALSE(m_factory.CreateProgram("vs_basic", "fs_lighting").has_value());
    EXPECT_NE(TakeMessage().find("\"fs_lighting\" does not fit"), std::string::npos);
    EXPECT_FALSE(m_factory.CreateProgram("vs_lighting", "fs_basic").has_value());
    EXPECT_NE(TakeMessage().find("\"fs_basic\" does not fit"), std::string::npos);
    m_renderer.PresentSubmittedFrame(false);
    EXPECT_TRUE(m_factory.CreateProgram("vs_basic", "fs_basic").has_value());
}

TEST_P(ProgramFactoryTest, ShadersOfAnotherStageGiveNoneAndAMessage) {
    EXPECT_FALSE(m_factory.CreateProgram("fs_basic", "vs_basic").has_value());
    EXPECT_FALSE(m_factory.CreateProgram("vs_basic", "vs_basic").has_value());
    EXPECT_FALSE(m_factory.CreateProgram("cs_point_sprite", "fs_basic").has_value());
    EXPECT_FALSE(m_factory.CreateProgram("vs_basic").has_value());
    EXPECT_EQ(Trouble::Take().size(), 5u); // one for each wrong shader
    m_renderer.PresentSubmittedFrame(false);
}

ZX3D_INSTANTIATE_BACKENDS(ProgramFactoryTest);
