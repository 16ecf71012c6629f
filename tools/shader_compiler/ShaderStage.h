// The three pipeline stages that bgfx knows, and how source files name them.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace zarvex::zx3D::ShaderCompiler {

enum class ShaderStage { Vertex, Fragment, Compute };

/// The stage called `vertex`, `fragment` or `compute`; empty for any other name.
std::optional<ShaderStage> ShaderStageFromName(std::string_view name);

/// The stage that the extension `.vert`, `.frag` or `.comp` stands for; empty for any other.
std::optional<ShaderStage> ShaderStageFromPath(std::filesystem::path const& path);

} // namespace zarvex::zx3D::ShaderCompiler
