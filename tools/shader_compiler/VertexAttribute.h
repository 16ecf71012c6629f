// The vertex attributes that bgfx can feed a shader, by name and by container id.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zarvex::zx3D::ShaderCompiler {

/// The container's id of an attribute such as `a_position`; empty for a name that bgfx does not feed.
std::optional<std::uint16_t> FindVertexAttributeId(std::string_view name);

} // namespace zarvex::zx3D::ShaderCompiler
