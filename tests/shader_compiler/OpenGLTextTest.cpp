// The text that an OpenGL driver gets.
#include "ParsedContainer.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string OpenGLTextOf(std::string const& name, std::string const& text) {
    return ParseContainer(CompileText(name, text).openGL).Text();
}

TEST(OpenGLTextTest, VertexOutputsLoseTheirLocationsAndAttributesKeepThem) {
    EXPECT_THAT(OpenGLTextOf("a.vert", R"(
layout(location = 1) in vec3 a_position;
layout(location = 0) noperspective out vec4 v_color;
layout(location = 1) flat out vec4 v_unused;
void main() { gl_Position = vec4(a_position, 1.0); v_color = vec4(1.0); v_unused = vec4(0.0); }
)"),
                AllOf(StartsWith("#version 330\n"), HasSubstr("layout(location = 1) in vec3 a_position;"),
                      HasSubstr("\nnoperspective out vec4 v_color;"),
                      HasSubstr("\nflat out vec4 v_unused;")));
}

TEST(OpenGLTextTest, FragmentInputsLoseTheirLocationsAndOutputsKeepThem) {
    EXPECT_THAT(OpenGLTextOf("a.frag", R"(
layout(location = 0) flat in vec4 v_color;
layout(location = 0) out vec4 o_color;
layout(location = 1) out vec4 o_other;
void main() { o_color = v_color; o_other = gl_FragCoord; }
)"),
                AllOf(HasSubstr("\nflat in vec4 v_color;"),
                      HasSubstr("layout(location = 1) out vec4 o_other;"), HasSubstr("gl_FragCoord"),
                      Not(HasSubstr("#extension"))));
}

TEST(OpenGLTextTest, InstancesAreCountedFromZeroWithoutAnExtension) {
    EXPECT_THAT(
        OpenGLTextOf("a.vert", "void main() { gl_Position = vec4(float(gl_InstanceID)); }"),
        AllOf(HasSubstr("gl_InstanceID"), Not(HasSubstr("BaseInstance")), Not(HasSubstr("#extension"))));
}

TEST(OpenGLTextTest, UniformsAreLooseAndKeepTheirNames) {
    EXPECT_THAT(OpenGLTextOf("a.frag", R"(
layout(location = 0) out vec4 o_color;
layout(binding = 2) uniform sampler2DShadow s_shadow;
uniform vec4 u_list[3];
uniform mat3 u_turn;
void main() { o_color = u_list[2] + vec4(u_turn[0], texture(s_shadow, vec3(0.5))); }
)"),
                AllOf(HasSubstr("\nuniform sampler2DShadow s_shadow;"),
                      HasSubstr("\nuniform vec4 u_list[3];"), HasSubstr("\nuniform mat3 u_turn;"),
                      Not(HasSubstr("binding"))));
}

TEST(OpenGLTextTest, VulkanIsDefinedForVulkanOnly) {
    std::string const shader = R"(
uniform vec4 u_a;
void main() {
#ifdef VULKAN
    gl_Position = u_a * 3.0;
#else
    gl_Position = u_a * 5.0 + float(gl_VertexID);
#endif
}
)";
    EXPECT_THAT(OpenGLTextOf("a.vert", shader),
                AllOf(HasSubstr("5.0"), Not(HasSubstr("3.0")), HasSubstr("gl_VertexID")));
}

TEST(OpenGLTextTest, ComputeIsOfTheVersionThatBgfxWritesOverIt) {
    EXPECT_THAT(OpenGLTextOf("a.comp", R"(
layout(local_size_x = 64) in;
layout(std430, binding = 1) buffer B { vec4 b_values[]; };
layout(rgba8, binding = 2) writeonly uniform image2D i_image;
layout(binding = 3) uniform sampler2D s_texture;
uniform vec4 u_count;
void main() {
    b_values[gl_GlobalInvocationID.x] = u_count + textureLod(s_texture, vec2(0.0), 0.0);
    imageStore(i_image, ivec2(0), u_count);
}
)"),
                AllOf(StartsWith("#version 430\n"), HasSubstr("local_size_x = 64"),
                      HasSubstr("layout(binding = 1, std430) buffer B"),
                      HasSubstr("layout(binding = 2, rgba8)"),
                      HasSubstr("layout(binding = 3) uniform sampler2D s_texture;"),
                      HasSubstr("\nuniform vec4 u_count;")));
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
