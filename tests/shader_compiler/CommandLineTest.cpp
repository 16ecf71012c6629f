// The compiler as a process: exit status, messages, and what it writes.
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/wait.h>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

char const* const kGoodShader = "void main() { gl_Position = vec4(0.0); }\n";

class CommandLineTest : public testing::Test {
protected:
    /// Runs the compiler in the temporary folder and returns its exit status.
    int Run(std::string const& arguments) {
        auto const command = "cd '" + m_files.Folder().string() + "' && '" ZX3D_SHADER_COMPILER "' " +
                             arguments + " >stdout.txt 2>stderr.txt";
        auto const status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string StandardOutput() const { return m_files.Read("stdout.txt"); }
    std::string StandardError() const { return m_files.Read("stderr.txt"); }
    bool Exists(std::string const& name) const { return std::filesystem::exists(m_files.Path(name)); }

    ShaderFiles m_files;
};

TEST_F(CommandLineTest, WritesSourceAndDepfile) {
    m_files.Write("part.glsl", "\n");
    m_files.Write("vs_good.vert", std::string("#include \"part.glsl\"\n") + kGoodShader);

    EXPECT_EQ(Run("--namespace app_shaders --output vs_good.cpp --depfile vs_good.d vs_good.vert"), 0);

    EXPECT_THAT(StandardError(), IsEmpty());
    auto const source = m_files.Read("vs_good.cpp");
    EXPECT_THAT(source, StartsWith("// Generated"));
    EXPECT_THAT(source,
                HasSubstr("zarvex::zx3D::EmbeddedShader const vs_good = {\"vs_good\", kOpenGL, kVulkan};"));
    EXPECT_THAT(source, HasSubstr("namespace app_shaders {"));
    auto const folder = m_files.Folder().string();
    EXPECT_EQ(m_files.Read("vs_good.d"),
              folder + "/vs_good.cpp: \\\n  " + folder + "/vs_good.vert \\\n  " + folder + "/part.glsl\n");
}

TEST_F(CommandLineTest, StageOptionOverridesTheExtension) {
    m_files.Write("good.glsl", kGoodShader);
    EXPECT_EQ(Run("--stage vertex --output good.cpp good.glsl"), 0);
    EXPECT_TRUE(Exists("good.cpp"));
}

TEST_F(CommandLineTest, WrongShaderIsReportedAndNothingIsWritten) {
    m_files.Write("wrong.vert", "void main() {\n    gl_Position = nothing;\n}\n");

    EXPECT_EQ(Run("--output wrong.cpp --depfile wrong.d wrong.vert"), 1);

    EXPECT_THAT(StandardError(), StartsWith("wrong.vert:2: error: 'nothing' : undeclared identifier\n"));
    EXPECT_FALSE(Exists("wrong.cpp"));
    EXPECT_FALSE(Exists("wrong.cpp.tmp"));
    EXPECT_FALSE(Exists("wrong.d"));
}

TEST_F(CommandLineTest, MismatchedVertexShaderIsReportedAndNothingIsWritten) {
    m_files.Write("a.vert", kGoodShader);
    m_files.Write("a.frag", "layout(location = 0) out vec4 o_color;\nlayout(location = 0) in vec4 v_color;\n"
                            "void main() { o_color = v_color; }\n");

    EXPECT_EQ(Run("--vertex a.vert --output a.cpp a.frag"), 1);

    EXPECT_EQ(StandardError(),
              "a.frag:2: error: input smooth vec4 v_color at location 0 is no output of a.vert\n");
    EXPECT_FALSE(Exists("a.cpp"));
}

TEST_F(CommandLineTest, MissingSourceIsReported) {
    EXPECT_EQ(Run("--output none.cpp none.vert"), 1);
    EXPECT_EQ(StandardError(), "none.vert: error: cannot read 'none.vert'\n");
    EXPECT_FALSE(Exists("none.cpp"));
}

TEST_F(CommandLineTest, UnwritableOutputIsReported) {
    m_files.Write("good.vert", kGoodShader);
    EXPECT_EQ(Run("--output nowhere/good.cpp good.vert"), 1);
    EXPECT_EQ(StandardError(), "nowhere/good.cpp: error: cannot write the file\n");
}

TEST_F(CommandLineTest, HelpExplainsTheUsage) {
    EXPECT_EQ(Run("--help"), 0);
    EXPECT_THAT(StandardOutput(), HasSubstr("Usage: zx3d_shader_compiler"));
    EXPECT_THAT(StandardError(), IsEmpty());
}

TEST_F(CommandLineTest, WrongUsageHasItsOwnStatus) {
    m_files.Write("good.vert", kGoodShader);
    struct {
        char const* arguments;
        char const* message;
    } const rows[] = {
        {"", "SOURCE is required"},
        {"good.vert", "--output is required"},
        {"--output good.cpp", "SOURCE is required"},
        {"--output good.cpp good.vert good.vert", "not expected: good.vert"},
        {"good.vert --output", "--output: 1 required"},
        {"--colour red --output good.cpp good.vert", "--colour"},
        {"--stage geometry --output good.cpp good.vert", "geometry not in {vertex,fragment,compute}"},
        {"--output good.cpp good.txt", "names no stage"},
        {"--output good.cpp not-a-name.vert", "'not-a-name' cannot be the name of a shader"},
        {"--vertex good.vert --output good.cpp good.vert", "--vertex is for fragment shaders"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(Run(row.arguments), 2) << row.arguments;
        EXPECT_THAT(StandardError(), HasSubstr(row.message)) << row.arguments;
        EXPECT_FALSE(Exists("good.cpp")) << row.arguments;
    }
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
