// The table of attribute names and ids.
#include "VertexAttribute.h"

namespace zarvex::zx3D::ShaderCompiler {

namespace {

struct VertexAttribute {
    std::string_view name;
    std::uint16_t id;
};

constexpr VertexAttribute kVertexAttributes[] = {
    {"a_position", 0x01},  {"a_normal", 0x02},    {"a_tangent", 0x03},   {"a_bitangent", 0x04},
    {"a_color0", 0x05},    {"a_color1", 0x06},    {"a_indices", 0x0E},   {"a_weight", 0x0F},
    {"a_texcoord0", 0x10}, {"a_texcoord1", 0x11}, {"a_texcoord2", 0x12}, {"a_texcoord3", 0x13},
    {"a_texcoord4", 0x14}, {"a_texcoord5", 0x15}, {"a_texcoord6", 0x16}, {"a_texcoord7", 0x17},
};

} // namespace

std::optional<std::uint16_t> FindVertexAttributeId(std::string_view name) {
    for (auto const& attribute : kVertexAttributes) {
        if (attribute.name == name) {
            return attribute.id;
        }
    }
    return std::nullopt;
}

} // namespace zarvex::zx3D::ShaderCompiler
