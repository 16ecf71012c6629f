// Good shaders of each stage, their containers read back field by field.
#include "ParsedContainer.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spirv-tools/libspirv.hpp>

#include <set>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr std::uint32_t kSpirvMagic = 0x07230203;

bool IsValidSpirv(std::vector<std::uint32_t> const& words) {
    return spvtools::SpirvTools(SPV_ENV_VULKAN_1_0).Validate(words);
}

/// The values of one decoration in the module, in ascending order.
std::multiset<std::uint32_t> DecorationValues(std::vector<std::uint32_t> const& words,
                                              std::uint32_t decoration) {
    constexpr std::size_t kHeaderWords = 5;
    constexpr std::uint32_t kDecorate = 71;
    std::multiset<std::uint32_t> values;
    for (auto index = kHeaderWords; index < words.size(); index += words[index] >> 16) {
        if ((words[index] & 0xFFFF) == kDecorate && words[index + 2] == decoration) {
            values.insert(words[index + 3]);
        }
    }
    return values;
}

std::multiset<std::uint32_t> Bindings(std::vector<std::uint32_t> const& words) {
    return DecorationValues(words, 33);
}

std::multiset<std::uint32_t> DescriptorSets(std::vector<std::uint32_t> const& words) {
    return DecorationValues(words, 34);
}

TEST(ShaderContainerTest, VertexShader) {
    auto const shader = CompileText("good.vert", R"(
layout(location = 0) in vec3 a_position;
layout(location = 2) in vec4 a_color0;
layout(location = 0) out vec4 v_color;
uniform mat4 u_modelViewProj;
uniform vec4 u_tint[3];
uniform mat3 u_turn;
void main() {
    gl_Position = u_modelViewProj * vec4(u_turn * a_position, 1.0);
    v_color = a_color0 * u_tint[2];
}
)");
    for (auto const& bytes : {shader.openGL, shader.vulkan}) {
        auto const container = ParseContainer(bytes);
        EXPECT_EQ(container.stage, 'V');
        EXPECT_EQ(container.version, 11);
        EXPECT_EQ(container.hashIn, 0u);
        EXPECT_NE(container.hashOut, 0u);
        EXPECT_THAT(container.uniforms, ElementsAre(ParsedUniform{"u_modelViewProj", 4, 1, 0, 4, 0, 0, 0},
                                                    ParsedUniform{"u_tint", 2, 3, 64, 3, 0, 0, 0},
                                                    ParsedUniform{"u_turn", 3, 1, 112, 3, 0, 0, 0}));
        EXPECT_THAT(container.attributes, ElementsAre(0x01, 0xFFFF, 0x05));
        EXPECT_EQ(container.uniformBlockSize, 160);
    }
    auto const text = ParseContainer(shader.openGL).Text();
    EXPECT_THAT(text, StartsWith("#version 330\n"));
    EXPECT_THAT(text, HasSubstr("uniform mat4 u_modelViewProj;"));
    auto const words = ParseContainer(shader.vulkan).Words();
    EXPECT_EQ(words.at(0), kSpirvMagic);
    EXPECT_TRUE(IsValidSpirv(words));
    EXPECT_THAT(Bindings(words), ElementsAre(0));
    EXPECT_THAT(DescriptorSets(words), ElementsAre(0));
}

TEST(ShaderContainerTest, FragmentShaderWithTextures) {
    auto const shader = CompileText("good.frag", R"(
layout(location = 0) in vec2 v_texcoord;
layout(location = 0) out vec4 o_color;
layout(binding = 0) uniform sampler2D s_plain;
layout(binding = 3) uniform sampler2DShadow s_shadow;
layout(binding = 4) uniform usamplerCube s_numbers;
layout(binding = 5) uniform isampler3D s_volume;
layout(binding = 15) uniform sampler2DArray s_layers;
uniform vec4 u_tint;
uniform mat4 u_view;
void main() {
    o_color = texture(s_plain, v_texcoord) * u_tint + u_view[0] + texture(s_shadow, vec3(v_texcoord, 0.5)) +
              vec4(texture(s_numbers, vec3(0.0))) + vec4(texture(s_volume, vec3(0.0))) + texture(s_layers, vec3(0.0));
}
)");
    for (auto const& bytes : {shader.openGL, shader.vulkan}) {
        auto const container = ParseContainer(bytes);
        EXPECT_EQ(container.stage, 'F');
        EXPECT_NE(container.hashIn, 0u);
        EXPECT_EQ(container.hashOut, 0u);
        EXPECT_THAT(container.uniforms,
                    testing::UnorderedElementsAre(ParsedUniform{"s_plain", 0x30, 1, 2, 0, 0, 2, 0},
                                                  ParsedUniform{"s_shadow", 0xB0, 1, 5, 0, 3, 2, 0},
                                                  ParsedUniform{"s_numbers", 0x30, 1, 6, 0, 2, 4, 0},
                                                  ParsedUniform{"s_volume", 0x30, 1, 7, 0, 1, 6, 0},
                                                  ParsedUniform{"s_layers", 0x30, 1, 17, 0, 0, 3, 0},
                                                  ParsedUniform{"u_tint", 0x12, 1, 0, 1, 0, 0, 0},
                                                  ParsedUniform{"u_view", 0x14, 1, 16, 4, 0, 0, 0}));
        EXPECT_THAT(container.attributes, IsEmpty());
        EXPECT_EQ(container.uniformBlockSize, 80);
    }
    auto const text = ParseContainer(shader.openGL).Text();
    EXPECT_THAT(text, StartsWith("#version 330\n"));
    EXPECT_THAT(text, Not(HasSubstr("binding")));
    auto const words = ParseContainer(shader.vulkan).Words();
    EXPECT_TRUE(IsValidSpirv(words));
    // The block, the textures of stages 0, 3, 4, 5 and 15, and their samplers.
    EXPECT_THAT(Bindings(words), ElementsAre(1, 2, 5, 6, 7, 17, 18, 21, 22, 23, 33));
    EXPECT_THAT(DescriptorSets(words), Each(0));
}

TEST(ShaderContainerTest, ComputeShader) {
    auto const shader = CompileText("good.comp", R"(
layout(local_size_x = 64) in;
layout(std430, binding = 0) readonly buffer Input { vec4 b_input[]; };
layout(std430, binding = 1) writeonly buffer Output { vec4 b_output[]; };
layout(rgba8, binding = 4) writeonly uniform image2D i_image;
uniform mat4 u_model;
void main() {
    b_output[gl_GlobalInvocationID.x] = u_model * b_input[gl_GlobalInvocationID.x];
    imageStore(i_image, ivec2(gl_GlobalInvocationID.xy), vec4(1.0));
}
)");
    for (auto const& bytes : {shader.openGL, shader.vulkan}) {
        auto const container = ParseContainer(bytes);
        EXPECT_EQ(container.stage, 'C');
        EXPECT_EQ(container.hashIn, 0u);
        EXPECT_EQ(container.hashOut, 0u);
        EXPECT_THAT(container.uniforms,
                    testing::UnorderedElementsAre(ParsedUniform{"u_model", 4, 1, 0, 4, 0, 0, 0},
                                                  ParsedUniform{"Input", 0x41, 0, 2, 7, 0, 0, 0},
                                                  ParsedUniform{"Output", 0x01, 0, 3, 7, 0, 0, 0},
                                                  ParsedUniform{"i_image", 0x01, 0, 6, 3, 0, 2, 0}));
        EXPECT_EQ(container.uniformBlockSize, 64);
    }
    // bgfx replaces exactly the first 13 bytes.
    auto const text = ParseContainer(shader.openGL).Text();
    EXPECT_THAT(text, StartsWith("#version 430\n"));
    EXPECT_THAT(text, HasSubstr("layout(binding = 1, std430)"));
    auto const words = ParseContainer(shader.vulkan).Words();
    EXPECT_TRUE(IsValidSpirv(words));
    EXPECT_THAT(Bindings(words), ElementsAre(0, 2, 3, 6));
    EXPECT_THAT(DescriptorSets(words), Each(0));
}

TEST(ShaderContainerTest, BlockWithoutPredefinedUniformGetsOne) {
    auto const shader = CompileText("user.frag", R"(
layout(location = 0) out vec4 o_color;
uniform vec4 u_tint;
void main() { o_color = u_tint; }
)");
    auto const container = ParseContainer(shader.vulkan);
    EXPECT_THAT(container.uniforms, ElementsAre(ParsedUniform{"u_tint", 0x12, 1, 0, 1, 0, 0, 0},
                                                ParsedUniform{"u_viewRect", 0x12, 1, 16, 1, 0, 0, 0}));
    EXPECT_EQ(container.uniformBlockSize, 32);
}

TEST(ShaderContainerTest, ShaderWithoutUniformsHasNoBlock) {
    auto const shader = CompileText("plain.vert", "void main() { gl_Position = vec4(0.0); }\n");
    auto const container = ParseContainer(shader.vulkan);
    EXPECT_THAT(container.uniforms, IsEmpty());
    EXPECT_THAT(container.attributes, IsEmpty());
    EXPECT_EQ(container.uniformBlockSize, 0);
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
