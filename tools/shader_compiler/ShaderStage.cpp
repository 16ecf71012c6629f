// Maps stage names and file extensions to stages.
#include "ShaderStage.h"

namespace zarvex::zx3D::ShaderCompiler {

std::optional<ShaderStage> ShaderStageFromName(std::string_view name) {
    if (name == "vertex") {
        return ShaderStage::Vertex;
    }
    if (name == "fragment") {
        return ShaderStage::Fragment;
    }
    if (name == "compute") {
        return ShaderStage::Compute;
    }
    return std::nullopt;
}

std::optional<ShaderStage> ShaderStageFromPath(std::filesystem::path const& path) {
    auto const extension = path.extension();
    if (extension == ".vert") {
        return ShaderStage::Vertex;
    }
    if (extension == ".frag") {
        return ShaderStage::Fragment;
    }
    if (extension == ".comp") {
        return ShaderStage::Compute;
    }
    return std::nullopt;
}

} // namespace zarvex::zx3D::ShaderCompiler
