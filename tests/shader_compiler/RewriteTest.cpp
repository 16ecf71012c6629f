// The text that each backend gets from the same source.
#include "OpenGLText.h"
#include "VulkanText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

SourceText MakeSource(std::string text) {
    SourceText source;
    auto const lineCount = static_cast<int>(std::ranges::count(text, '\n'));
    for (int line = 1; line <= lineCount; ++line) {
        source.lines.push_back({"source", line});
    }
    source.text = std::move(text);
    return source;
}

std::string OpenGLTextOf(std::string const& text, ShaderStage stage) {
    return MakeOpenGLText(MakeSource(text), stage).text;
}

std::string VulkanTextOf(std::string const& text) {
    return MakeVulkanText(MakeSource(text)).text;
}

TEST(OpenGLTextTest, VertexOutputsLoseTheirLocations) {
    EXPECT_EQ(OpenGLTextOf("layout(location = 1) in vec3 a_position;\n"
                           "layout(location = 0) noperspective out vec4 v_color;\n",
                           ShaderStage::Vertex),
              "#version 330\n"
              "layout(location = 1) in vec3 a_position;\n"
              "  noperspective out vec4 v_color;\n");
}

TEST(OpenGLTextTest, FragmentInputsLoseTheirLocationsAndOutputsKeepThem) {
    EXPECT_EQ(OpenGLTextOf("layout(location = 0) flat in vec4 v_color;\n"
                           "layout(location = 1) out vec4 o_color;\n",
                           ShaderStage::Fragment),
              "#version 330\n"
              "  flat in vec4 v_color;\n"
              "layout(location = 1) out vec4 o_color;\n");
}

TEST(OpenGLTextTest, BindingsGoAndOtherQualifiersStay) {
    EXPECT_EQ(OpenGLTextOf("layout(binding = 0) uniform sampler2D s_texture;\n"
                           "layout(origin_upper_left, binding = (1 + 2)) in vec4 gl_FragCoord;\n",
                           ShaderStage::Fragment),
              "#version 330\n"
              "  uniform sampler2D s_texture;\n"
              "layout(origin_upper_left) in vec4 gl_FragCoord;\n");
}

TEST(OpenGLTextTest, ComputeKeepsEverything) {
    EXPECT_EQ(
        OpenGLTextOf("layout(local_size_x = 64) in;\nlayout(std430, binding = 1) buffer B { vec4 b[]; };\n",
                     ShaderStage::Compute),
        "#version 430\n"
        "layout(local_size_x = 64) in;\nlayout(std430, binding = 1) buffer B { vec4 b[]; };\n");
}

TEST(OpenGLTextTest, CommentsGoAndLinesStay) {
    auto const text = MakeOpenGLText(
        MakeSource("/* one\n two */ float a = 1.0 / 2.0; // three\nfloat/**/b;\n"), ShaderStage::Vertex);
    EXPECT_EQ(text.text, "#version 330\n \n float a = 1.0 / 2.0;  \nfloat b;\n");
    EXPECT_EQ(text.LocationOfLine(4).line, 3);
}

TEST(OpenGLTextTest, CommentedLayoutIsNoLayout) {
    EXPECT_EQ(OpenGLTextOf("// layout(location = 0) out vec4 v_color;\nfloat a;\n", ShaderStage::Vertex),
              "#version 330\n \nfloat a;\n");
}

TEST(VulkanTextTest, SamplersAreSplitAndJoinedAgain) {
    EXPECT_EQ(VulkanTextOf("layout(binding = 2) uniform sampler2D s_texture;\n"
                           "vec4 c = texture(s_texture, uv);\n"),
              "layout(binding = 2) uniform texture2D s_texture; "
              "layout(binding = 2) uniform sampler s_texture_separateSampler;\n"
              "vec4 c = texture(sampler2D(s_texture, s_texture_separateSampler), uv);\n");
}

TEST(VulkanTextTest, ShadowAndIntegerSamplersKeepTheirKind) {
    EXPECT_EQ(VulkanTextOf("layout(binding = 0) uniform sampler2DShadow s_a;\n"
                           "layout(binding = 1) uniform usamplerCube s_b;\n"
                           "float a = texture(s_a, p); uvec4 b = texture(s_b, q);\n"),
              "layout(binding = 0) uniform texture2D s_a; layout(binding = 0) uniform samplerShadow "
              "s_a_separateSampler;\n"
              "layout(binding = 1) uniform utextureCube s_b; layout(binding = 1) uniform sampler "
              "s_b_separateSampler;\n"
              "float a = texture(sampler2DShadow(s_a, s_a_separateSampler), p); "
              "uvec4 b = texture(usamplerCube(s_b, s_b_separateSampler), q);\n");
}

TEST(VulkanTextTest, OtherNamesAndCommentsAreLeftAlone) {
    std::string const text =
        "// uniform sampler2D s_texture;\nuniform vec4 u_color;\nvec4 s_texture2 = u_color;\n";
    EXPECT_EQ(VulkanTextOf(text), text);
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
