// Shaders written to a folder of their own for the length of a test.
#pragma once

#include "Diagnostic.h"
#include "ShaderCompilation.h"

#include <filesystem>
#include <optional>
#include <string>

namespace zarvex::zx3D::ShaderCompiler {

/// A temporary folder that goes with the object.
class ShaderFiles {
public:
    ShaderFiles();
    ~ShaderFiles();
    ShaderFiles(ShaderFiles const&) = delete;
    ShaderFiles& operator=(ShaderFiles const&) = delete;

    std::filesystem::path const& Folder() const { return m_folder; }
    std::filesystem::path Path(std::string const& name) const { return m_folder / name; }
    std::filesystem::path Write(std::string const& name, std::string const& content) const;
    std::string Read(std::string const& name) const;

private:
    std::filesystem::path m_folder;
};

/// Compiles a file by its extension.
std::optional<CompiledShader> Compile(std::filesystem::path const& source, Diagnostics& diagnostics);

/// Compiles a shader given as text; fails the test when it is rejected.
CompiledShader CompileText(std::string const& name, std::string const& text);

} // namespace zarvex::zx3D::ShaderCompiler
