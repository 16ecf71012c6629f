// Vertex and fragment shaders that do or do not make a program.
#include "ParsedContainer.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::HasSubstr;

std::string const kVertexShader = R"(
layout(location = 0) out vec4 v_color;
layout(location = 1) flat out vec2 v_start;
void main() { gl_Position = v_color = vec4(0.0); v_start = vec2(0.0); }
)";

std::string FragmentShader(std::string const& inputs) {
    return inputs + "layout(location = 0) out vec4 o_color;\nvoid main() { o_color = vec4(0.0); }\n";
}

struct StagePair {
    std::string title;
    std::string inputs;
    bool matches;
    std::string message;
};

std::ostream& operator<<(std::ostream& stream, StagePair const& pair) {
    return stream << pair.title;
}

StagePair const kStagePairs[] = {
    {"Same", "layout(location = 0) in vec4 v_color;\nlayout(location = 1) flat in vec2 v_start;\n", true, ""},
    {"SameInOtherOrder",
     "layout(location = 1) flat in vec2 v_start;\nlayout(location = 0) in vec4 v_color;\n", true, ""},
    {"OtherName", "layout(location = 0) in vec4 v_colour;\nlayout(location = 1) flat in vec2 v_start;\n",
     false, "input smooth vec4 v_colour at location 0 is no output of pair.vert"},
    {"OtherType", "layout(location = 0) in vec3 v_color;\nlayout(location = 1) flat in vec2 v_start;\n",
     false, "input smooth vec3 v_color"},
    {"OtherInterpolation",
     "layout(location = 0) noperspective in vec4 v_color;\nlayout(location = 1) flat in vec2 v_start;\n",
     false, "input noperspective vec4 v_color"},
    {"OtherLocation", "layout(location = 2) in vec4 v_color;\nlayout(location = 1) flat in vec2 v_start;\n",
     false, "input smooth vec4 v_color at location 2"},
    {"Missing", "layout(location = 0) in vec4 v_color;\n", false,
     "output flat vec2 v_start at location 1 of pair.vert is no input here"},
};

class StageMatchTest : public testing::TestWithParam<StagePair> {
protected:
    ShaderFiles m_files;
    std::filesystem::path m_vertex = m_files.Write("pair.vert", kVertexShader);
    std::filesystem::path m_fragment = m_files.Write("pair.frag", FragmentShader(GetParam().inputs));
};

TEST_P(StageMatchTest, HashesAgreeExactlyWhenTheStagesMatch) {
    Diagnostics diagnostics;
    auto const vertex = Compile(m_vertex, diagnostics);
    auto const fragment = Compile(m_fragment, diagnostics);

    ASSERT_TRUE(vertex && fragment);
    for (auto const container : {&CompiledShader::openGL, &CompiledShader::vulkan}) {
        auto const hashOut = ParseContainer((*vertex).*container).hashOut;
        auto const hashIn = ParseContainer((*fragment).*container).hashIn;
        EXPECT_NE(hashOut, 0u);
        EXPECT_NE(hashIn, 0u);
        EXPECT_EQ(hashOut == hashIn, GetParam().matches);
    }
}

TEST_P(StageMatchTest, CompilingForAVertexShaderChecksTheMatch) {
    CompilationOptions options;
    options.stage = ShaderStage::Fragment;
    options.source = m_fragment;
    options.vertexShaders = {m_vertex};
    Diagnostics diagnostics;

    EXPECT_EQ(CompileShader(options, diagnostics).has_value(), GetParam().matches);

    EXPECT_EQ(diagnostics.HasErrors(), !GetParam().matches);
    if (!GetParam().matches) {
        EXPECT_EQ(diagnostics.All().front().location.file, m_fragment.string());
        EXPECT_EQ(diagnostics.All().front().location.line, 1);
        EXPECT_THAT(diagnostics.All().front().message, HasSubstr(GetParam().message));
    }
}

INSTANTIATE_TEST_SUITE_P(All, StageMatchTest, testing::ValuesIn(kStagePairs),
                         [](auto const& row) { return row.param.title; });

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
