// A shader's source with its includes expanded, which remembers where every line came from.
#pragma once

#include "Diagnostic.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// Text for a GLSL front end. `lines[i]` is the authored place of text line i, so a message about the text
/// can be turned into one about the author's file, whatever was inserted or rewritten in between. There is at
/// least one line.
struct SourceText {
    std::string text;
    std::vector<SourceLocation> lines;

    /// The authored place of a text line that counts from 1; the nearest one when the line is out of range.
    SourceLocation LocationOfLine(int line) const;
    /// The authored place of a character of the text.
    SourceLocation LocationOfOffset(std::size_t offset) const;
};

/// A loaded shader: its text and every file that went into it, the shader's own first.
struct LoadedSource {
    SourceText source;
    std::vector<std::filesystem::path> files;
};

/// Reads a shader and expands each `#include "name"`, which is looked up beside the including file and then
/// in the include directories. A file is expanded once: later includes of it are empty. Returns nothing, with
/// errors added, when a file cannot be read or the shader states a #version: the compiler owns the version.
std::optional<LoadedSource> LoadSource(std::filesystem::path const& path,
                                       std::vector<std::filesystem::path> const& includeDirectories,
                                       Diagnostics& diagnostics);

} // namespace zarvex::zx3D::ShaderCompiler
