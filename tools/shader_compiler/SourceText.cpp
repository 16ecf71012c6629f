// Reads shader files and expands their includes line by line.
#include "SourceText.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

std::optional<std::string> ReadFile(std::filesystem::path const& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path)) {
        return std::nullopt;
    }
    std::ostringstream content;
    content << stream.rdbuf();
    return std::move(content).str();
}

class IncludeExpander {
public:
    IncludeExpander(std::vector<std::filesystem::path> const& includeDirectories, Diagnostics& diagnostics)
        : m_includeDirectories(includeDirectories),
          m_diagnostics(diagnostics) {}

    void Expand(std::filesystem::path const& path, SourceLocation const& includedFrom) {
        auto const content = ReadFile(path);
        if (!content) {
            m_diagnostics.Error(includedFrom, "cannot read '" + path.string() + "'");
            return;
        }
        m_loaded.files.push_back(path);

        std::istringstream stream(*content);
        std::string line;
        for (int number = 1; std::getline(stream, line); ++number) {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            ExpandLine(line, path, {path.string(), number});
        }
    }

    LoadedSource TakeResult() {
        if (m_loaded.source.lines.empty()) {
            // An empty shader still has a first line for messages to point at.
            m_loaded.source = {"\n", {{m_loaded.files.front().string(), 1}}};
        }
        return std::move(m_loaded);
    }

private:
    void ExpandLine(std::string const& line, std::filesystem::path const& file,
                    SourceLocation const& location) {
        static std::regex const include(R"re(^\s*#\s*include\b\s*(?:"([^"]+)"\s*(?://.*)?$)?)re");
        static std::regex const version(R"re(^\s*#\s*version\b)re");

        std::smatch match;
        if (std::regex_search(line, version)) {
            m_diagnostics.Error(location, "#version is chosen by the compiler for each backend; remove it");
        } else if (std::regex_search(line, match, include)) {
            ExpandInclude(match[1].str(), file, location);
        } else {
            m_loaded.source.text += line;
            m_loaded.source.text += '\n';
            m_loaded.source.lines.push_back(location);
        }
    }

    void ExpandInclude(std::string const& name, std::filesystem::path const& file,
                       SourceLocation const& location) {
        if (name.empty()) {
            m_diagnostics.Error(location, "#include needs a file name in double quotes");
            return;
        }
        auto const path = Find(name, file.parent_path());
        if (!path) {
            m_diagnostics.Error(location, "included file '" + name + "' not found");
        } else if (!WasExpanded(*path)) {
            Expand(*path, location);
        }
    }

    std::optional<std::filesystem::path> Find(std::string const& name,
                                              std::filesystem::path const& includingDirectory) const {
        auto const beside = includingDirectory / name;
        if (std::filesystem::exists(beside)) {
            return beside;
        }
        for (auto const& directory : m_includeDirectories) {
            if (std::filesystem::exists(directory / name)) {
                return directory / name;
            }
        }
        return std::nullopt;
    }

    bool WasExpanded(std::filesystem::path const& path) const {
        return std::ranges::any_of(m_loaded.files,
                                   [&](auto const& file) { return std::filesystem::equivalent(file, path); });
    }

    std::vector<std::filesystem::path> const& m_includeDirectories;
    Diagnostics& m_diagnostics;
    LoadedSource m_loaded;
};

} // namespace

SourceLocation SourceText::LocationOfLine(int line) const {
    auto const last = static_cast<int>(lines.size());
    return lines[static_cast<std::size_t>(std::clamp(line, 1, last) - 1)];
}

SourceLocation SourceText::LocationOfOffset(std::size_t offset) const {
    auto const end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    return LocationOfLine(static_cast<int>(std::count(text.begin(), end, '\n')) + 1);
}

std::optional<LoadedSource> LoadSource(std::filesystem::path const& path,
                                       std::vector<std::filesystem::path> const& includeDirectories,
                                       Diagnostics& diagnostics) {
    IncludeExpander expander(includeDirectories, diagnostics);
    expander.Expand(path, {path.string(), 0});
    if (diagnostics.HasErrors()) {
        return std::nullopt;
    }
    return expander.TakeResult();
}

} // namespace zarvex::zx3D::ShaderCompiler
