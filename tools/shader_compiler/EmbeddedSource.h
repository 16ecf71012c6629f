// Writes compiled shaders as C++ source to be linked into a program or library.
#pragma once

#include "ShaderCompilation.h"

#include <filesystem>
#include <string>

namespace zarvex::zx3D::ShaderCompiler {

/// The text of a C++ source that defines `<space>::<name>`, a zx3D::EmbeddedShader with both containers.
std::string MakeEmbeddedSource(std::string const& space, std::string const& name,
                               CompiledShader const& shader);

/// The text of a depfile in Make's syntax: `target` depends on every file of the shader.
std::string MakeDepfile(std::filesystem::path const& target, CompiledShader const& shader);

/// Writes a file whole or not at all.
bool WriteFileAtomically(std::filesystem::path const& path, std::string const& content);

} // namespace zarvex::zx3D::ShaderCompiler
