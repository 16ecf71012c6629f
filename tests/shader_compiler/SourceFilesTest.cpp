// Includes: what is compiled, where messages point, which files a shader depends on.
#include "SourceFiles.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::ElementsAre;

char const* const kMain = "void main() { gl_Position = Place(); }\n";

std::string Messages(Diagnostics const& diagnostics) {
    std::ostringstream stream;
    diagnostics.Print(stream);
    return stream.str();
}

TEST(SourceFilesTest, IncludesAreFoundAndListed) {
    ShaderFiles const files;
    auto const inner = files.Write("inner.glsl", "vec4 Place() { return vec4(0.0); }"); // without a line end
    auto const middle = files.Write("middle.glsl", "#include \"inner.glsl\"\n");
    auto const shader =
        files.Write("shader.vert", std::string("  # include \"middle.glsl\" // why\n") + kMain);
    Diagnostics diagnostics;

    auto const compiled = Compile(shader, diagnostics);

    ASSERT_TRUE(compiled.has_value()) << Messages(diagnostics);
    EXPECT_THAT(compiled->files, ElementsAre(shader, middle, inner));
}

TEST(SourceFilesTest, EachFileIsIncludedOnce) {
    ShaderFiles const files;
    files.Write("a.glsl", "#include \"b.glsl\"\nvec4 Place() { return vec4(kOne); }\n");
    files.Write("b.glsl", "#include \"a.glsl\"\nconst float kOne = 1.0;\n");
    files.Write("empty.glsl", "");
    auto const shader = files.Write(
        "shader.vert", std::string("#include \"a.glsl\"\n#include \"empty.glsl\"\n#include \"b.glsl\"\n"
                                   "#include \"./a.glsl\"\n#include \"shader.vert\"\n") +
                           kMain);
    Diagnostics diagnostics;

    EXPECT_TRUE(Compile(shader, diagnostics).has_value()) << Messages(diagnostics);
}

TEST(SourceFilesTest, IncludeDirectoriesAreSearched) {
    ShaderFiles const files;
    auto const included = files.Write("library/part.glsl", "vec4 Place() { return vec4(0.0); }\n");
    CompilationOptions options;
    options.source = files.Write("shader.vert", std::string("#include \"part.glsl\"\n") + kMain);
    options.includeDirectories = {files.Path("nowhere"), files.Path("library")};
    Diagnostics diagnostics;

    auto const compiled = CompileShader(options, diagnostics);

    ASSERT_TRUE(compiled.has_value()) << Messages(diagnostics);
    EXPECT_THAT(compiled->files, ElementsAre(options.source, included));
}

TEST(SourceFilesTest, ErrorInAnIncludedFileNamesThatFile) {
    ShaderFiles const files;
    auto const included = files.Write("part.glsl", "\nvec4 Place() { return nothing; }\n");
    auto const shader = files.Write("shader.vert", std::string("#include \"part.glsl\"\n") + kMain);
    Diagnostics diagnostics;

    EXPECT_FALSE(Compile(shader, diagnostics).has_value());

    ASSERT_FALSE(diagnostics.All().empty());
    EXPECT_EQ(diagnostics.All().front().location.file, included.string());
    EXPECT_EQ(diagnostics.All().front().location.line, 2);
}

TEST(SourceFilesTest, WhatBgfxCannotSupplyIsFoundInTheIncludedFile) {
    ShaderFiles const files;
    auto const included =
        files.Write("part.glsl", "// u_value, in a comment\n/* u_value */\nuniform float u_value;\n");
    auto const shader = files.Write(
        "shader.vert", "\n#include \"part.glsl\"\n\nvoid main() { gl_Position = vec4(u_value); }\n");
    Diagnostics diagnostics;

    EXPECT_FALSE(Compile(shader, diagnostics).has_value());

    ASSERT_FALSE(diagnostics.All().empty());
    EXPECT_EQ(diagnostics.All().front().location.file, included.string());
    EXPECT_EQ(diagnostics.All().front().location.line, 3);
}

TEST(SourceFilesTest, ErrorAfterAnIncludeHasItsOwnLine) {
    ShaderFiles const files;
    files.Write("part.glsl", "\n\n\n");
    auto const shader =
        files.Write("shader.vert", "#include \"part.glsl\"\r\n\r\nvoid main() { nothing; }\r\n");
    Diagnostics diagnostics;

    EXPECT_FALSE(Compile(shader, diagnostics).has_value());

    ASSERT_FALSE(diagnostics.All().empty());
    EXPECT_EQ(diagnostics.All().front().location.file, shader.string());
    EXPECT_EQ(diagnostics.All().front().location.line, 3);
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
