// The files that a shader is made of.
#pragma once

#include "Diagnostic.h"

#include <deque>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

struct SourceFile {
    std::filesystem::path path;
    std::string text;
};

/// Reads a shader's own file and the files that it includes, each once, and keeps them in the order in which
/// they were met.
class SourceFiles {
public:
    explicit SourceFiles(std::vector<std::filesystem::path> includeDirectories)
        : m_includeDirectories(std::move(includeDirectories)) {}

    /// The file; null when it cannot be read. Lives as long as this object.
    SourceFile const* Read(std::filesystem::path const& path);
    /// The file of `#include "name"`: beside the including file, or else in the include directories.
    SourceFile const* ReadIncluded(std::string const& name, std::filesystem::path const& includingFile);

    /// The line of the input, output, uniform or buffer of this name; the first of all when there is none.
    SourceLocation FindDeclaration(std::string const& name) const;
    std::vector<std::filesystem::path> Paths() const;

private:
    std::vector<std::filesystem::path> m_includeDirectories;
    std::deque<SourceFile> m_files;
};

} // namespace zarvex::zx3D::ShaderCompiler
