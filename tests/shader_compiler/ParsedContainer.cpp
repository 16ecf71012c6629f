// A reader of the container, written apart from its writer.
#include "ParsedContainer.h"

#include <cstring>
#include <ostream>
#include <stdexcept>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

class ByteReader {
public:
    explicit ByteReader(std::span<std::uint8_t const> bytes) : m_bytes(bytes) {}

    std::span<std::uint8_t const> Take(std::size_t count) {
        if (count > m_bytes.size()) {
            throw std::runtime_error("the container is too short");
        }
        auto const taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }

    std::uint8_t U8() { return Take(1)[0]; }

    std::uint16_t U16() {
        auto const bytes = Take(2);
        return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
    }

    std::uint32_t U32() {
        auto const low = U16();
        return low | static_cast<std::uint32_t>(U16()) << 16;
    }

    std::string Text(std::size_t length) {
        auto const bytes = Take(length);
        return {bytes.begin(), bytes.end()};
    }

    bool IsAtEnd() const { return m_bytes.empty(); }

private:
    std::span<std::uint8_t const> m_bytes;
};

ParsedUniform ReadUniform(ByteReader& reader) {
    ParsedUniform uniform;
    uniform.name = reader.Text(reader.U8());
    uniform.type = reader.U8();
    uniform.count = reader.U8();
    uniform.registerIndex = reader.U16();
    uniform.registerCount = reader.U16();
    uniform.component = reader.U8();
    uniform.dimension = reader.U8();
    uniform.format = reader.U16();
    return uniform;
}

} // namespace

std::vector<std::uint32_t> ParsedContainer::Words() const {
    std::vector<std::uint32_t> words(code.size() / sizeof(std::uint32_t));
    std::memcpy(words.data(), code.data(), words.size() * sizeof(std::uint32_t));
    return words;
}

ParsedContainer ParseContainer(std::span<std::uint8_t const> bytes) {
    ByteReader reader(bytes);
    ParsedContainer container;
    container.stage = static_cast<char>(reader.U8());
    if (reader.Text(2) != "SH") {
        throw std::runtime_error("not a shader container");
    }
    container.version = reader.U8();
    container.hashIn = reader.U32();
    container.hashOut = reader.U32();
    auto const uniformCount = reader.U16();
    for (int index = 0; index < uniformCount; ++index) {
        container.uniforms.push_back(ReadUniform(reader));
    }
    auto const code = reader.Take(reader.U32());
    container.code.assign(code.begin(), code.end());
    if (reader.U8() != 0) {
        throw std::runtime_error("the code does not end with a zero");
    }
    auto const attributeCount = reader.U8();
    for (int index = 0; index < attributeCount; ++index) {
        container.attributes.push_back(reader.U16());
    }
    container.uniformBlockSize = reader.U16();
    if (!reader.IsAtEnd()) {
        throw std::runtime_error("the container is too long");
    }
    return container;
}

std::ostream& operator<<(std::ostream& stream, ParsedUniform const& uniform) {
    return stream << uniform.name << " {type " << int{uniform.type} << ", count " << int{uniform.count}
                  << ", register " << uniform.registerIndex << " + " << uniform.registerCount
                  << ", component " << int{uniform.component} << ", dimension " << int{uniform.dimension}
                  << ", format " << uniform.format << "}";
}

} // namespace zarvex::zx3D::ShaderCompiler
