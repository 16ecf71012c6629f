// Includes: what is expanded, where lines come from, which files a shader depends on.
#include "SourceText.h"
#include "ShaderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zarvex::zx3D::ShaderCompiler {
namespace {

using testing::ElementsAre;

TEST(SourceTextTest, IncludedLinesKeepTheirPlaces) {
    ShaderFiles const files;
    auto const inner = files.Write("inner.glsl", "inner 1\ninner 2\n");
    auto const outer = files.Write("outer.vert", "outer 1\n  # include \"inner.glsl\" // why\nouter 3");
    Diagnostics diagnostics;

    auto const loaded = LoadSource(outer, {}, diagnostics);

    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(loaded->source.text, "outer 1\ninner 1\ninner 2\nouter 3\n");
    EXPECT_THAT(loaded->files, ElementsAre(outer, inner));
    EXPECT_EQ(loaded->source.LocationOfLine(3).file, inner.string());
    EXPECT_EQ(loaded->source.LocationOfLine(3).line, 2);
    EXPECT_EQ(loaded->source.LocationOfLine(4).file, outer.string());
    EXPECT_EQ(loaded->source.LocationOfLine(4).line, 3);
    EXPECT_EQ(loaded->source.LocationOfOffset(loaded->source.text.find("inner 2")).line, 2);
}

TEST(SourceTextTest, EachFileIsExpandedOnce) {
    ShaderFiles const files;
    files.Write("a.glsl", "#include \"b.glsl\"\na\n");
    files.Write("b.glsl", "#include \"a.glsl\"\nb\n");
    auto const shader = files.Write("shader.frag", "#include \"a.glsl\"\n#include \"b.glsl\"\n");
    Diagnostics diagnostics;

    auto const loaded = LoadSource(shader, {}, diagnostics);

    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(loaded->source.text, "b\na\n");
}

TEST(SourceTextTest, IncludeDirectoriesAreSearched) {
    ShaderFiles const files;
    auto const included = files.Write("library/part.glsl", "part\n");
    auto const shader = files.Write("shader.frag", "#include \"part.glsl\"\n");
    Diagnostics diagnostics;

    auto const loaded = LoadSource(shader, {files.Path("nowhere"), files.Path("library")}, diagnostics);

    ASSERT_TRUE(loaded.has_value());
    EXPECT_THAT(loaded->files, ElementsAre(shader, included));
}

TEST(SourceTextTest, ErrorInAnIncludedFileNamesThatFile) {
    ShaderFiles const files;
    auto const included = files.Write("part.glsl", "\nvec4 Colour() { return nothing; }\n");
    auto const shader =
        files.Write("shader.vert", "#include \"part.glsl\"\nvoid main() { gl_Position = Colour(); }\n");
    Diagnostics diagnostics;

    EXPECT_FALSE(Compile(shader, diagnostics).has_value());

    ASSERT_FALSE(diagnostics.All().empty());
    EXPECT_EQ(diagnostics.All().front().location.file, included.string());
    EXPECT_EQ(diagnostics.All().front().location.line, 2);
}

TEST(SourceTextTest, WindowsLineEndsAreRead) {
    ShaderFiles const files;
    auto const shader = files.Write("shader.vert", "void main() {\r\n    gl_Position = vec4(0.0);\r\n}\r\n");
    Diagnostics diagnostics;

    auto const loaded = LoadSource(shader, {}, diagnostics);

    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(loaded->source.text, "void main() {\n    gl_Position = vec4(0.0);\n}\n");
}

} // namespace
} // namespace zarvex::zx3D::ShaderCompiler
