// Lays the container's fields out byte by byte.
#include "ShaderContainer.h"

#include "VertexAttribute.h"

#include <algorithm>
#include <concepts>
#include <limits>
#include <string_view>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

constexpr std::uint8_t kVersion = 11;

constexpr std::uint8_t kFragmentBit = 0x10;
constexpr std::uint8_t kSamplerBit = 0x20;
constexpr std::uint8_t kReadOnlyBit = 0x40;
constexpr std::uint8_t kCompareBit = 0x80;

constexpr std::uint16_t kNoAttribute = 0xFFFF;

class ByteWriter {
public:
    template<std::unsigned_integral Value>
    void Write(Value value) {
        for (int shift = 0; shift < std::numeric_limits<Value>::digits; shift += 8) {
            m_bytes.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    }

    template<typename Range>
    void WriteAll(Range const& range) {
        for (auto const element : range) {
            m_bytes.push_back(static_cast<std::uint8_t>(element));
        }
    }

    std::vector<std::uint8_t> TakeBytes() { return std::move(m_bytes); }

private:
    std::vector<std::uint8_t> m_bytes;
};

char StageLetter(ShaderStage stage) {
    switch (stage) {
    case ShaderStage::Vertex:
        return 'V';
    case ShaderStage::Fragment:
        return 'F';
    case ShaderStage::Compute:
        return 'C';
    }
    return 'V';
}

std::uint8_t TypeByte(UniformEntry const& entry, ShaderStage stage) {
    auto byte = static_cast<std::uint8_t>(entry.type);
    byte |= stage == ShaderStage::Fragment ? kFragmentBit : 0;
    byte |= entry.type == UniformType::Sampler ? kSamplerBit : 0;
    byte |= entry.isReadOnly ? kReadOnlyBit : 0;
    byte |= entry.isShadow ? kCompareBit : 0;
    return byte;
}

void WriteUniform(ByteWriter& writer, UniformEntry const& entry, ShaderStage stage) {
    writer.Write(static_cast<std::uint8_t>(entry.name.size()));
    writer.WriteAll(entry.name);
    writer.Write(TypeByte(entry, stage));
    writer.Write(entry.arraySize);
    writer.Write(entry.registerIndex);
    writer.Write(entry.registerCount);
    writer.Write(static_cast<std::uint8_t>(entry.component));
    writer.Write(static_cast<std::uint8_t>(entry.dimension));
    writer.Write(std::uint16_t{0}); // texture format: not stated
}

std::vector<std::uint16_t> AttributesByLocation(ShaderStage stage, ShaderInterface const& interface) {
    std::vector<std::uint16_t> ids;
    if (stage != ShaderStage::Vertex) {
        return ids;
    }
    for (auto const& input : interface.inputs) {
        auto const location = static_cast<std::size_t>(input.location);
        ids.resize(std::max(ids.size(), location + 1), kNoAttribute);
        ids[location] = FindVertexAttributeId(input.name).value_or(kNoAttribute);
    }
    return ids;
}

} // namespace

std::vector<std::uint8_t> WriteShaderContainer(ShaderStage stage, ShaderInterface const& interface,
                                               std::span<std::uint8_t const> code) {
    ByteWriter writer;
    writer.Write(static_cast<std::uint8_t>(StageLetter(stage)));
    writer.WriteAll(std::string_view("SH"));
    writer.Write(kVersion);
    writer.Write(stage == ShaderStage::Fragment ? HashStageVariables(interface.inputs) : 0u);
    writer.Write(stage == ShaderStage::Vertex ? HashStageVariables(interface.outputs) : 0u);

    writer.Write(static_cast<std::uint16_t>(interface.uniforms.size()));
    for (auto const& uniform : interface.uniforms) {
        WriteUniform(writer, uniform, stage);
    }

    writer.Write(static_cast<std::uint32_t>(code.size()));
    writer.WriteAll(code);
    writer.Write(std::uint8_t{0});

    auto const attributes = AttributesByLocation(stage, interface);
    writer.Write(static_cast<std::uint8_t>(attributes.size()));
    for (auto const attribute : attributes) {
        writer.Write(attribute);
    }
    writer.Write(interface.uniformBlockSize);
    return writer.TakeBytes();
}

} // namespace zarvex::zx3D::ShaderCompiler
