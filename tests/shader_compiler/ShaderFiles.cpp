// Creates temporary folders and compiles what is in them.
#include "ShaderFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>

namespace zarvex::zx3D::ShaderCompiler {

ShaderFiles::ShaderFiles() {
    auto pattern = (std::filesystem::temp_directory_path() / "shader_compiler_test_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    m_folder = pattern;
}

ShaderFiles::~ShaderFiles() {
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
}

std::filesystem::path ShaderFiles::Write(std::string const& name, std::string const& content) const {
    auto const path = Path(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

std::string ShaderFiles::Read(std::string const& name) const {
    std::ostringstream content;
    content << std::ifstream(Path(name), std::ios::binary).rdbuf();
    return content.str();
}

std::optional<CompiledShader> Compile(std::filesystem::path const& source, Diagnostics& diagnostics) {
    CompilationOptions options;
    options.source = source;
    options.stage = ShaderStageFromPath(source).value();
    return CompileShader(options, diagnostics);
}

CompiledShader CompileText(std::string const& name, std::string const& text) {
    ShaderFiles const files;
    Diagnostics diagnostics;
    auto const shader = Compile(files.Write(name, text), diagnostics);
    std::ostringstream messages;
    diagnostics.Print(messages);
    EXPECT_TRUE(shader.has_value()) << messages.str();
    return shader.value_or(CompiledShader{});
}

} // namespace zarvex::zx3D::ShaderCompiler
