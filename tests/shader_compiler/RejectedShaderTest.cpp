// Wrong shaders, one row each: the message, and the file and line that it points at.
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::HasSubstr;

struct RejectedShader {
    std::string title;
    std::string extension;
    std::string text;
    int line;
    std::string message;
};

std::ostream& operator<<(std::ostream& stream, RejectedShader const& shader) {
    return stream << shader.title;
}

std::string const kFragmentStart = "layout(location = 0) out vec4 o_color;\n";

std::string UniformOfType(std::string const& type, std::string const& use) {
    return "\nuniform " + type + " u_value;\nvoid main() { gl_Position = " + use + "; }\n";
}

std::string SamplerOfType(std::string const& type, std::string const& use) {
    return kFragmentStart + "layout(binding = 0) uniform " + type +
           " s_value;\nvoid main() { o_color = " + use + "; }\n";
}

RejectedShader const kRejectedShaders[] = {
    {"FloatUniform", ".vert", UniformOfType("float", "vec4(u_value)"), 2,
     "'u_value' : a uniform has to be a vec4"},
    {"Vec2Uniform", ".vert", UniformOfType("vec2", "vec4(u_value, u_value)"), 2,
     "a uniform has to be a vec4"},
    {"Vec3Uniform", ".vert", UniformOfType("vec3", "vec4(u_value, 1.0)"), 2, "a uniform has to be a vec4"},
    {"IntUniform", ".vert", UniformOfType("int", "vec4(u_value)"), 2, "a uniform has to be a vec4"},
    {"IVec4Uniform", ".vert", UniformOfType("ivec4", "vec4(u_value)"), 2, "a uniform has to be a vec4"},
    {"BoolUniform", ".vert", UniformOfType("bool", "vec4(u_value)"), 2, "a uniform has to be a vec4"},
    {"Mat2Uniform", ".vert", UniformOfType("mat2", "vec4(u_value[0], u_value[1])"), 2,
     "a uniform has to be a vec4"},
    {"Mat4ArrayUniform", ".vert", "uniform mat4 u_value[2];\nvoid main() { gl_Position = u_value[1][0]; }\n",
     1, "array of at most 255 vec4"},
    {"StructUniform", ".vert",
     "struct S { vec4 a; };\nuniform S u_value;\nvoid main() { gl_Position = u_value.a; }\n", 2,
     "'u_value' : a uniform has to be"},
    {"UniformBlock", ".vert",
     "\nlayout(binding = 0) uniform Block { vec4 u_a; };\nvoid main() { gl_Position = u_a; }\n", 2,
     "uniform blocks are not supported"},
    {"InputWithoutLocation", ".vert",
     "\nin vec3 a_position;\nvoid main() { gl_Position = vec4(a_position, 1.0); }\n", 2, "'location'"},
    {"OutputWithoutLocation", ".vert", "\nout vec4 v_x;\nvoid main() { gl_Position = v_x = vec4(1.0); }\n", 2,
     "'location'"},
    {"UnknownAttribute", ".vert",
     "\nlayout(location = 0) in vec3 a_place;\nvoid main() { gl_Position = vec4(a_place, 1.0); }\n", 2,
     "'a_place' : not a vertex attribute of bgfx"},
    {"SameLocationTwice", ".vert",
     "layout(location = 0) in vec3 a_position;\nlayout(location = 0) in vec3 a_normal;\n"
     "void main() { gl_Position = vec4(a_position + a_normal, 1.0); }\n",
     2, "overlapping use of location 0"},
    {"BufferSampler", ".frag", SamplerOfType("samplerBuffer", "texelFetch(s_value, 0)"), 2,
     "'s_value' : a texture has to be a sampler2D"},
    {"RectangleSampler", ".frag", SamplerOfType("sampler2DRect", "texture(s_value, vec2(0.0))"), 2,
     "'s_value' : a texture has to be a sampler2D"},
    {"MultisampleSampler", ".frag", SamplerOfType("sampler2DMS", "texelFetch(s_value, ivec2(0), 0)"), 2,
     "'s_value' : a texture has to be a sampler2D"},
    {"Sampler1D", ".frag", SamplerOfType("sampler1D", "texture(s_value, 0.0)"), 2,
     "'s_value' : a texture has to be a sampler2D"},
    {"SamplerArray", ".frag",
     kFragmentStart +
         "layout(binding = 0) uniform sampler2D s_value[2];\nvoid main() { o_color = texture(s_value[0], "
         "vec2(0.0)); }\n",
     2, "and no array"},
    {"SamplerWithoutBinding", ".frag",
     kFragmentStart + "uniform sampler2D s_value;\nvoid main() { o_color = texture(s_value, vec2(0.0)); }\n",
     2, "requires layout(binding=X)"},
    {"SeparateSampler", ".frag",
     kFragmentStart + "layout(binding = 0) uniform texture2D s_a;\nlayout(binding = 1) uniform sampler s_b;\n"
                      "void main() { o_color = texture(sampler2D(s_a, s_b), vec2(0.0)); }\n",
     2, "'s_a' : a texture has to be a sampler2D"},
    {"MultisampleImage", ".comp",
     "layout(local_size_x = 1) in;\nlayout(rgba8, binding = 0) writeonly uniform image2DMS i_a;\n"
     "void main() { imageStore(i_a, ivec2(0), 0, vec4(1.0)); }\n",
     2, "'i_a' : an image has to be"},
    {"BlockBetweenStages", ".vert",
     "\nlayout(location = 0) out Block { vec4 v_a; } v_block;\n"
     "void main() { gl_Position = v_block.v_a = vec4(1.0); }\n",
     2, "blocks between stages are not supported"},
    {"SamplerBindingOutOfRange", ".frag",
     kFragmentStart + "layout(binding = 16) uniform sampler2D s_value;\nvoid main() { o_color = "
                      "texture(s_value, vec2(0.0)); }\n",
     2, "layout(binding = 15)"},
    {"SameBindingTwice", ".frag",
     kFragmentStart +
         "layout(binding = 0) uniform sampler2D s_a;\nlayout(binding = 0) uniform sampler2D s_b;\n"
         "void main() { o_color = texture(s_a, vec2(0.0)) + texture(s_b, vec2(0.0)); }\n",
     3, "'s_b' : has the same binding as 's_a'"},
    {"SyntaxError", ".vert", "void main() {\n    gl_Position = vec4(1.0)\n}\n", 3, "syntax error"},
    {"UndeclaredName", ".frag", kFragmentStart + "void main() {\n\n    o_color = nothing;\n}\n", 4,
     "'nothing' : undeclared identifier"},
    {"NoMain", ".vert", "vec4 Colour() { return vec4(1.0); }\n", 1, "Missing entry point"},
    {"EmptyFile", ".vert", "", 1, "Missing entry point"},
    {"StatedVersion", ".vert", "\n#version 450\nvoid main() { gl_Position = vec4(0.0); }\n", 2,
     "#version is chosen by the compiler"},
    {"MissingInclude", ".vert", "\n\n#include \"nowhere.glsl\"\nvoid main() { gl_Position = vec4(0.0); }\n",
     3, "nowhere.glsl"},
    {"NotInOpenGL33", ".frag", kFragmentStart + "void main() {\n    o_color = vec4(fma(1.0, 2.0, 3.0));\n}\n",
     3, "fma"},
    {"StorageBufferInGraphics", ".frag",
     kFragmentStart + "layout(std430, binding = 0) readonly buffer B { vec4 b_values[]; };\n"
                      "void main() { o_color = b_values[0]; }\n",
     2, "std430"},
};

class RejectedShaderTest : public testing::TestWithParam<RejectedShader> {};

TEST_P(RejectedShaderTest, IsReportedAtItsLine) {
    auto const& shader = GetParam();
    ShaderFiles const files;
    auto const path = files.Write("wrong" + shader.extension, shader.text);

    Diagnostics diagnostics;
    EXPECT_FALSE(Compile(path, diagnostics).has_value());

    ASSERT_TRUE(diagnostics.HasErrors());
    auto const& first = diagnostics.All().front();
    EXPECT_EQ(first.severity, Severity::Error);
    EXPECT_EQ(first.location.file, path.string());
    EXPECT_EQ(first.location.line, shader.line);
    EXPECT_THAT(first.message, HasSubstr(shader.message));
}

INSTANTIATE_TEST_SUITE_P(All, RejectedShaderTest, testing::ValuesIn(kRejectedShaders),
                         [](auto const& row) { return row.param.title; });

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
