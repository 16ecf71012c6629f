// Reads bgfx's shader container field by field, the way bgfx's loaders do.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

struct ParsedUniform {
    std::string name;
    std::uint8_t type = 0;
    std::uint8_t count = 0;
    std::uint16_t registerIndex = 0;
    std::uint16_t registerCount = 0;
    std::uint8_t component = 0;
    std::uint8_t dimension = 0;
    std::uint16_t format = 0;

    bool operator==(ParsedUniform const&) const = default;
};

struct ParsedContainer {
    char stage = 0;
    std::uint8_t version = 0;
    std::uint32_t hashIn = 0;
    std::uint32_t hashOut = 0;
    std::vector<ParsedUniform> uniforms;
    std::vector<std::uint8_t> code;
    std::vector<std::uint16_t> attributes;
    std::uint16_t uniformBlockSize = 0;

    std::string Text() const { return {code.begin(), code.end()}; }
    std::vector<std::uint32_t> Words() const;
};

/// Throws when the container is too short, too long or not marked as one.
ParsedContainer ParseContainer(std::span<std::uint8_t const> bytes);

std::ostream& operator<<(std::ostream& stream, ParsedUniform const& uniform);

} // namespace zarvex::zx3D::ShaderCompiler
