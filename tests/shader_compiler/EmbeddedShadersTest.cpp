// The library's own shaders, as the build embeds them.
#include "ParsedContainer.h"

#include <zx3d_shader_compiler_test_shaders.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spirv-tools/libspirv.hpp>

#include <cctype>
#include <stdexcept>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

struct Program {
    std::string_view vertex;
    std::string_view fragment;
};

constexpr Program kPrograms[] = {
    {"vs_basic", "fs_basic"},
    {"vs_lighting", "fs_lighting"},
    {"vs_line_simple_dash", "fs_line_simple_dash"},
    {"vs_line_opengl_stipple", "fs_line_opengl_stipple"},
    {"vs_line_fading", "fs_line_fading"},
    {"vs_line_batch_thin", "fs_basic"},
    {"vs_line_batch_thin_joined", "fs_basic"},
    {"vs_line_batch_wide", "fs_basic"},
    {"vs_line_batch_wide_cut", "fs_basic"},
    {"vs_line_batch_joined", "fs_line_batch_shape"},
    {"vs_line_batch_joined", "fs_line_batch_smooth"},
    {"vs_line_batch_joined", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_joined", "fs_line_batch_stipple"},
    {"vs_line_batch_joined_cut", "fs_line_batch_shape"},
    {"vs_line_batch_joined_cut", "fs_line_batch_smooth"},
    {"vs_line_batch_joined_cut", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_joined_cut", "fs_line_batch_stipple"},
    {"vs_line_batch_run", "fs_line_batch_stipple"},
    {"vs_line_batch_run", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_run_cut", "fs_line_batch_stipple"},
    {"vs_line_batch_run_cut", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_shape", "fs_line_batch_shape"},
    {"vs_line_batch_shape", "fs_line_batch_smooth"},
    {"vs_line_batch_shape", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_shape", "fs_line_batch_stipple"},
    {"vs_line_batch_shape_cut", "fs_line_batch_shape"},
    {"vs_line_batch_shape_cut", "fs_line_batch_smooth"},
    {"vs_line_batch_shape_cut", "fs_line_batch_smooth_stipple"},
    {"vs_line_batch_shape_cut", "fs_line_batch_stipple"},
    {"vs_mesh_diffuse", "fs_mesh_diffuse"},
    {"vs_mesh_lit", "fs_mesh_lit_1"},
    {"vs_mesh_lit", "fs_mesh_lit_1_textured"},
    {"vs_mesh_lit", "fs_mesh_lit_2"},
    {"vs_mesh_lit", "fs_mesh_lit_2_textured"},
    {"vs_mesh_lit", "fs_mesh_lit_4"},
    {"vs_mesh_lit", "fs_mesh_lit_4_textured"},
    {"vs_mesh_lit", "fs_mesh_lit_8"},
    {"vs_mesh_lit", "fs_mesh_lit_8_textured"},
    {"vs_mesh_lit", "fs_mesh_unlit_textured"},
    {"vs_mesh_unlit", "fs_mesh_unlit"},
    {"vs_mesh_diffuse_instances", "fs_mesh_diffuse"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_1"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_1_textured"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_2"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_2_textured"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_4"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_4_textured"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_8"},
    {"vs_mesh_lit_instances", "fs_mesh_lit_8_textured"},
    {"vs_mesh_lit_instances", "fs_mesh_unlit_textured"},
    {"vs_mesh_unlit_instances", "fs_mesh_unlit"},
    {"vs_point_batch_pixel", "fs_basic"},
    {"vs_point_batch_pixel_scalar", "fs_basic"},
    {"vs_point_batch_round", "fs_point_batch_ball"},
    {"vs_point_batch_round", "fs_point_batch_ball_smooth"},
    {"vs_point_batch_round", "fs_point_batch_disc"},
    {"vs_point_batch_round", "fs_point_batch_disc_smooth"},
    {"vs_point_batch_round_scalar", "fs_point_batch_ball"},
    {"vs_point_batch_round_scalar", "fs_point_batch_ball_smooth"},
    {"vs_point_batch_round_scalar", "fs_point_batch_disc"},
    {"vs_point_batch_round_scalar", "fs_point_batch_disc_smooth"},
    {"vs_point_batch_square", "fs_basic"},
    {"vs_point_batch_square_scalar", "fs_basic"},
    {"vs_pick_line", "fs_highlight_line"},
    {"vs_pick_line", "fs_pick_line"},
    {"vs_pick_line_joined", "fs_highlight_line"},
    {"vs_pick_line_joined", "fs_pick_line"},
    {"vs_pick_mesh", "fs_pick_mesh"},
    {"vs_pick_mesh_instances", "fs_pick_mesh"},
    {"vs_pick_point_pixel", "fs_highlight_plain"},
    {"vs_pick_point_pixel", "fs_pick_plain"},
    {"vs_pick_point_round", "fs_highlight_ball"},
    {"vs_pick_point_round", "fs_pick_ball"},
    {"vs_pick_point_round", "fs_highlight_disc"},
    {"vs_pick_point_round", "fs_pick_disc"},
    {"vs_pick_point_square", "fs_highlight_plain"},
    {"vs_pick_point_square", "fs_pick_plain"},
    {"vs_point_sprite", "fs_point_sprite"},
    {"vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple"},
    {"vs_rectangle_sprite_fading", "fs_rectangle_sprite_fading"},
    {"vs_fullscreen_triangle", "fs_fullscreen_texture"},
    {"vs_text", "fs_text"},
    {"vs_annotation", "fs_annotation"},
};

constexpr std::string_view kShaders[] = {
    "cs_line_batch_carries",
    "cs_line_batch_lengths",
    "cs_point_sprite",
    "cs_rectangle_sprite",
    "fs_annotation",
    "fs_basic",
    "fs_fullscreen_texture",
    "fs_highlight_ball",
    "fs_highlight_disc",
    "fs_highlight_line",
    "fs_highlight_plain",
    "fs_lighting",
    "fs_line_batch_shape",
    "fs_line_batch_smooth",
    "fs_line_batch_smooth_stipple",
    "fs_line_batch_stipple",
    "fs_line_fading",
    "fs_line_opengl_stipple",
    "fs_line_simple_dash",
    "fs_mesh_diffuse",
    "fs_mesh_lit_1",
    "fs_mesh_lit_1_textured",
    "fs_mesh_lit_2",
    "fs_mesh_lit_2_textured",
    "fs_mesh_lit_4",
    "fs_mesh_lit_4_textured",
    "fs_mesh_lit_8",
    "fs_mesh_lit_8_textured",
    "fs_mesh_unlit",
    "fs_mesh_unlit_textured",
    "fs_pick_ball",
    "fs_pick_disc",
    "fs_pick_line",
    "fs_pick_mesh",
    "fs_pick_plain",
    "fs_point_batch_ball",
    "fs_point_batch_ball_smooth",
    "fs_point_batch_disc",
    "fs_point_batch_disc_smooth",
    "fs_point_sprite",
    "fs_rectangle_sprite_fading",
    "fs_rectangle_sprite_opengl_stipple",
    "fs_text",
    "vs_annotation",
    "vs_basic",
    "vs_fullscreen_triangle",
    "vs_lighting",
    "vs_line_batch_joined",
    "vs_line_batch_joined_cut",
    "vs_line_batch_run",
    "vs_line_batch_run_cut",
    "vs_line_batch_shape",
    "vs_line_batch_shape_cut",
    "vs_line_batch_thin",
    "vs_line_batch_thin_joined",
    "vs_line_batch_wide",
    "vs_line_batch_wide_cut",
    "vs_line_fading",
    "vs_line_opengl_stipple",
    "vs_line_simple_dash",
    "vs_mesh_diffuse",
    "vs_mesh_diffuse_instances",
    "vs_mesh_lit",
    "vs_mesh_lit_instances",
    "vs_mesh_unlit",
    "vs_mesh_unlit_instances",
    "vs_pick_line",
    "vs_pick_line_joined",
    "vs_pick_mesh",
    "vs_pick_mesh_instances",
    "vs_pick_point_pixel",
    "vs_pick_point_round",
    "vs_pick_point_square",
    "vs_point_batch_pixel",
    "vs_point_batch_pixel_scalar",
    "vs_point_batch_round",
    "vs_point_batch_round_scalar",
    "vs_point_batch_square",
    "vs_point_batch_square_scalar",
    "vs_point_sprite",
    "vs_rectangle_sprite",
    "vs_rectangle_sprite_fading",
    "vs_text",
};

EmbeddedShader const& Find(std::string_view name) {
    for (auto const* const shader : zx3d_shader_compiler_test_shaders::kAll) {
        if (shader->name == name) {
            return *shader;
        }
    }
    throw std::runtime_error("no shader " + std::string(name));
}

std::vector<std::string> UniformNames(std::string_view name) {
    std::vector<std::string> names;
    for (auto const& uniform : ParseContainer(Find(name).vulkan).uniforms) {
        names.push_back(uniform.name);
    }
    return names;
}

class EmbeddedShaderTest : public testing::TestWithParam<std::string_view> {};

TEST_P(EmbeddedShaderTest, IsThereForBothBackends) {
    auto const& shader = Find(GetParam());
    auto const openGL = ParseContainer(shader.openGL);
    auto const vulkan = ParseContainer(shader.vulkan);
    auto const stage = static_cast<char>(std::toupper(GetParam().front()));

    EXPECT_EQ(shader.name, GetParam());
    EXPECT_EQ(openGL.stage, stage);
    EXPECT_EQ(vulkan.stage, stage);
    EXPECT_EQ(openGL.uniforms, vulkan.uniforms);
    EXPECT_THAT(openGL.Text(), StartsWith(stage == 'C' ? "#version 430\n" : "#version 330\n"));
    EXPECT_TRUE(spvtools::SpirvTools(SPV_ENV_VULKAN_1_0).Validate(vulkan.Words()));
}

INSTANTIATE_TEST_SUITE_P(All, EmbeddedShaderTest, testing::ValuesIn(kShaders),
                         [](auto const& row) { return std::string(row.param); });

TEST(EmbeddedShadersTest, HeaderNamesEachShaderAndAllOfThem) {
    EXPECT_EQ(zx3d_shader_compiler_test_shaders::vs_basic.name, "vs_basic");
    EXPECT_EQ(std::size(zx3d_shader_compiler_test_shaders::kAll), std::size(kShaders));
}

TEST(EmbeddedShadersTest, StagesOfEachProgramMatch) {
    for (auto const& program : kPrograms) {
        for (auto const container : {&EmbeddedShader::openGL, &EmbeddedShader::vulkan}) {
            auto const hashOut = ParseContainer(Find(program.vertex).*container).hashOut;
            EXPECT_NE(hashOut, 0u) << program.vertex;
            EXPECT_EQ(hashOut, ParseContainer(Find(program.fragment).*container).hashIn) << program.vertex;
        }
    }
}

TEST(EmbeddedShadersTest, AttributesMatchTheVertexLayouts) {
    auto const attributes = [](std::string_view name) {
        return ParseContainer(Find(name).vulkan).attributes;
    };
    EXPECT_THAT(attributes("vs_basic"), ElementsAre(0x01, 0x05));
    EXPECT_THAT(attributes("vs_lighting"), ElementsAre(0x01, 0x02, 0x05));
    EXPECT_THAT(attributes("vs_line_fading"), ElementsAre(0x01, 0x05));
    EXPECT_THAT(attributes("vs_line_opengl_stipple"), ElementsAre(0x01, 0x05));
    EXPECT_THAT(attributes("vs_line_simple_dash"), ElementsAre(0x01, 0x05));
    for (std::string const kind : {"", "_instances"}) {
        EXPECT_THAT(attributes("vs_mesh_diffuse" + kind), ElementsAre(0x01, 0x02, 0x05));
        EXPECT_THAT(attributes("vs_mesh_lit" + kind), ElementsAre(0x01, 0x02, 0x05, 0x10));
        EXPECT_THAT(attributes("vs_mesh_unlit" + kind), ElementsAre(0x01, 0x05));
    }
    EXPECT_THAT(attributes("vs_point_sprite"), ElementsAre(0x01, 0x05));
    EXPECT_THAT(attributes("vs_rectangle_sprite"), ElementsAre(0x10, 0x05, 0x11, 0x12));
    EXPECT_THAT(attributes("vs_rectangle_sprite_fading"), ElementsAre(0x10, 0x05, 0x11, 0x12));
    EXPECT_THAT(attributes("vs_fullscreen_triangle"), IsEmpty());
    EXPECT_THAT(attributes("vs_text"), ElementsAre(0x01, 0x10, 0x05));
}

TEST(EmbeddedShadersTest, ComputeShadersTakeTheirBuffersFromStages0And1) {
    for (auto const name : {"cs_point_sprite", "cs_rectangle_sprite"}) {
        auto const uniforms = ParseContainer(Find(name).vulkan).uniforms;
        constexpr std::uint16_t kStorageBuffer = 7;
        std::vector<std::pair<int, bool>> buffers;
        for (auto const& uniform : uniforms) {
            if (uniform.registerCount == kStorageBuffer) {
                buffers.emplace_back(uniform.registerIndex - 2, (uniform.type & 0x40) != 0);
            }
        }
        EXPECT_THAT(buffers, ElementsAre(std::pair(0, true), std::pair(1, false))) << name;
    }
}

TEST(EmbeddedShadersTest, UniformsAreThoseThatTheRendererSets) {
    EXPECT_THAT(UniformNames("fs_line_opengl_stipple"), testing::Contains("u_lineStipple"));
    for (auto const name : {"fs_line_fading", "fs_rectangle_sprite_fading"}) {
        EXPECT_THAT(UniformNames(name), testing::IsSupersetOf({"u_fadeRange", "u_lineStipple"}));
    }
    for (auto const name : {"vs_line_fading", "vs_rectangle_sprite_fading"}) {
        EXPECT_THAT(UniformNames(name), testing::IsSupersetOf({"u_fadePlace", "u_viewport"}));
    }
    EXPECT_THAT(UniformNames("fs_line_simple_dash"), testing::Contains("u_lineStyle"));
    EXPECT_THAT(UniformNames("vs_line_opengl_stipple"), testing::Contains("u_viewport"));
    EXPECT_THAT(UniformNames("cs_point_sprite"), testing::IsSupersetOf({"u_pointSprite", "u_viewport"}));
    EXPECT_THAT(UniformNames("cs_rectangle_sprite"),
                testing::IsSupersetOf({"u_rectangleSprite", "u_viewport"}));
    EXPECT_THAT(UniformNames("fs_rectangle_sprite_opengl_stipple"), testing::Contains("u_lineStipple"));
    EXPECT_THAT(UniformNames("fs_fullscreen_texture"), ElementsAre("s_fullscreen_texture"));
    EXPECT_THAT(UniformNames("vs_text"), ElementsAre("u_viewRect"));
    EXPECT_THAT(UniformNames("fs_text"), ElementsAre("s_glyph_atlas"));
    EXPECT_THAT(UniformNames("fs_lighting"),
                testing::IsSupersetOf({"u_viewPosition", "u_material_ambient", "u_material_diffuse",
                                       "u_material_specular", "u_material_emission", "u_material_shininess",
                                       "u_light0_position", "u_light7_specular"}));
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
