// Writes bgfx's binary shader container.
#pragma once

#include "ShaderInterface.h"
#include "ShaderStage.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// The container around a backend's code: magic and version, interface hashes, uniform table, code, vertex
/// attributes by location, and the size of the uniform block. Little endian throughout.
std::vector<std::uint8_t> WriteShaderContainer(ShaderStage stage, ShaderInterface const& interface,
                                               std::span<std::uint8_t const> code);

} // namespace zarvex::zx3D::ShaderCompiler
