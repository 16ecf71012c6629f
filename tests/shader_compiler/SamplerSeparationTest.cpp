// Combined samplers as bgfx's Vulkan backend binds them.
#include "ParsedContainer.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spirv_cross.hpp>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Bound {
    std::vector<std::uint32_t> textures;
    std::vector<std::uint32_t> samplers;
    std::vector<std::uint32_t> combined;
};

Bound BoundBy(std::string const& fragmentShader) {
    auto const words =
        ParseContainer(
            CompileText("a.frag", "layout(location = 0) out vec4 o_color;\n" + fragmentShader).vulkan)
            .Words();
    spirv_cross::Compiler const compiler(words);
    auto const resources = compiler.get_shader_resources();
    auto const bindings = [&](auto const& list) {
        std::vector<std::uint32_t> result;
        for (auto const& resource : list) {
            result.push_back(compiler.get_decoration(resource.id, spv::DecorationBinding));
        }
        return result;
    };
    return {bindings(resources.separate_images), bindings(resources.separate_samplers),
            bindings(resources.sampled_images)};
}

TEST(SamplerSeparationTest, EachTextureHasASampler16BindingsAfterIt) {
    auto const bound = BoundBy(R"(
layout(binding = 0) uniform sampler2D s_a;
layout(binding = 3) uniform sampler2DShadow s_b;
layout(binding = 15) uniform usamplerCube s_c;
void main() { o_color = texture(s_a, vec2(0.0)) + texture(s_b, vec3(0.0)) + vec4(texture(s_c, vec3(1.0))); }
)");
    EXPECT_THAT(bound.textures, UnorderedElementsAre(2, 5, 17));
    EXPECT_THAT(bound.samplers, UnorderedElementsAre(18, 21, 33));
    EXPECT_THAT(bound.combined, IsEmpty());
}

TEST(SamplerSeparationTest, SamplersCanBePassedToFunctions) {
    auto const bound = BoundBy(R"(
layout(binding = 0) uniform sampler2D s_a;
layout(binding = 1) uniform sampler2D s_b;
vec4 Inner(vec2 at, sampler2D first, float scale, sampler2D second) {
    return texture(first, at * scale) + texelFetch(second, ivec2(at), 0) + vec4(textureSize(first, 0), 0, 0);
}
vec4 Outer(sampler2D first, sampler2D second) { return Inner(vec2(0.5), second, 2.0, first); }
void main() { o_color = Outer(s_a, s_b); }
)");
    EXPECT_THAT(bound.textures, UnorderedElementsAre(2, 3));
    EXPECT_THAT(bound.samplers, UnorderedElementsAre(18, 19));
    EXPECT_THAT(bound.combined, IsEmpty());
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
