// Reads shader files and searches in them.
#include "SourceFiles.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

namespace zarvex::zx3D::ShaderCompiler {

SourceFile const* SourceFiles::Read(std::filesystem::path const& path) {
    auto const known = std::ranges::find_if(m_files, [&](SourceFile const& file) {
        std::error_code error;
        return std::filesystem::equivalent(file.path, path, error);
    });
    if (known != m_files.end()) {
        return &*known;
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path)) {
        return nullptr;
    }
    std::ostringstream text;
    text << stream.rdbuf() << '\n'; // glslang wants every file to have a line
    return &m_files.emplace_back(path, std::move(text).str());
}

SourceFile const* SourceFiles::ReadIncluded(std::string const& name,
                                            std::filesystem::path const& includingFile) {
    auto const* found = Read(includingFile.parent_path() / name);
    for (auto const& directory : m_includeDirectories) {
        found = found != nullptr ? found : Read(directory / name);
    }
    return found;
}

SourceLocation SourceFiles::FindDeclaration(std::string const& name) const {
    std::string const code = "([^/]|/[^/*])*\\b"; // no comment
    std::regex const pattern("^" + code + "(in|out|uniform|buffer)\\b" + code + name + "\\b");
    for (auto const& file : m_files) {
        std::istringstream stream(file.text);
        std::string line;
        for (int number = 1; std::getline(stream, line); ++number) {
            if (std::regex_search(line, pattern)) {
                return {file.path.string(), number};
            }
        }
    }
    return {m_files.front().path.string(), 1};
}

std::vector<std::filesystem::path> SourceFiles::Paths() const {
    std::vector<std::filesystem::path> paths;
    std::ranges::transform(m_files, std::back_inserter(paths), &SourceFile::path);
    return paths;
}

} // namespace zarvex::zx3D::ShaderCompiler
