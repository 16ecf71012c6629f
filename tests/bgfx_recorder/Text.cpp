// Names of bgfx's enumerators and number formats for recorded calls.
#include "Text.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <utility>

namespace recorder {

namespace {

template<typename Enum, std::size_t Count>
std::string NameOf(Enum value, std::array<std::pair<Enum, char const*>, Count> const& names) {
    for (auto const& [enumerator, name] : names) {
        if (enumerator == value) {
            return name;
        }
    }
    return std::to_string(int(value));
}

} // namespace

std::string Text(bool value) {
    return value ? "true" : "false";
}

std::string Text(float value) {
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%.9g", double(value));
    float shortest = 0;
    char brief[32];
    std::snprintf(brief, sizeof(brief), "%.6g", double(value));
    std::sscanf(brief, "%f", &shortest);
    return shortest == value ? brief : buffer;
}

std::string Text(char const* value) {
    return value != nullptr ? value : "null";
}

std::string Text(std::string const& value) {
    return value;
}

std::string Text(bgfx::TextureFormat::Enum format) {
    using F = bgfx::TextureFormat;
    static constexpr std::array<std::pair<F::Enum, char const*>, 13> kNames{{
        {F::A8, "A8"},
        {F::R8, "R8"},
        {F::RG8, "RG8"},
        {F::BGRA8, "BGRA8"},
        {F::RGBA8, "RGBA8"},
        {F::RGBA16F, "RGBA16F"},
        {F::RGBA32F, "RGBA32F"},
        {F::D16, "D16"},
        {F::D24, "D24"},
        {F::D24S8, "D24S8"},
        {F::D32, "D32"},
        {F::D32F, "D32F"},
        {F::Count, "Count"},
    }};
    return NameOf(format, kNames);
}

std::string Text(bgfx::UniformType::Enum type) {
    using U = bgfx::UniformType;
    static constexpr std::array<std::pair<U::Enum, char const*>, 4> kNames{
        {{U::Sampler, "Sampler"}, {U::Vec4, "Vec4"}, {U::Mat3, "Mat3"}, {U::Mat4, "Mat4"}}};
    return NameOf(type, kNames);
}

std::string Text(bgfx::ViewMode::Enum mode) {
    using M = bgfx::ViewMode;
    static constexpr std::array<std::pair<M::Enum, char const*>, 4> kNames{
        {{M::Default, "Default"},
         {M::Sequential, "Sequential"},
         {M::DepthAscending, "DepthAscending"},
         {M::DepthDescending, "DepthDescending"}}};
    return NameOf(mode, kNames);
}

std::string Text(bgfx::Access::Enum access) {
    using A = bgfx::Access;
    static constexpr std::array<std::pair<A::Enum, char const*>, 3> kNames{
        {{A::Read, "Read"}, {A::Write, "Write"}, {A::ReadWrite, "ReadWrite"}}};
    return NameOf(access, kNames);
}

std::string Text(bgfx::BackbufferRatio::Enum ratio) {
    return "ratio:" + std::to_string(int(ratio));
}

// Newer versions of bgfx have more of both.
std::string Text(bgfx::Attrib::Enum attribute) {
    using A = bgfx::Attrib;
    static constexpr std::array<std::pair<A::Enum, char const*>, 18> kNames{{{A::Position, "Position"},
                                                                             {A::Normal, "Normal"},
                                                                             {A::Tangent, "Tangent"},
                                                                             {A::Bitangent, "Bitangent"},
                                                                             {A::Color0, "Color0"},
                                                                             {A::Color1, "Color1"},
                                                                             {A::Color2, "Color2"},
                                                                             {A::Color3, "Color3"},
                                                                             {A::Indices, "Indices"},
                                                                             {A::Weight, "Weight"},
                                                                             {A::TexCoord0, "TexCoord0"},
                                                                             {A::TexCoord1, "TexCoord1"},
                                                                             {A::TexCoord2, "TexCoord2"},
                                                                             {A::TexCoord3, "TexCoord3"},
                                                                             {A::TexCoord4, "TexCoord4"},
                                                                             {A::TexCoord5, "TexCoord5"},
                                                                             {A::TexCoord6, "TexCoord6"},
                                                                             {A::TexCoord7, "TexCoord7"}}};
    return NameOf(attribute, kNames);
}

std::string Text(bgfx::AttribType::Enum type) {
    using T = bgfx::AttribType;
    static constexpr std::array<std::pair<T::Enum, char const*>, 5> kNames{{{T::Uint8, "Uint8"},
                                                                            {T::Uint10, "Uint10"},
                                                                            {T::Int16, "Int16"},
                                                                            {T::Half, "Half"},
                                                                            {T::Float, "Float"}}};
    return NameOf(type, kNames);
}

std::string Text(bgfx::VertexLayout const& layout) {
    std::map<uint16_t, std::string> texts;
    for (int i = 0; i < bgfx::Attrib::Count; ++i) {
        auto const attribute = bgfx::Attrib::Enum(i);
        if (layout.has(attribute)) {
            uint8_t count = 0;
            bgfx::AttribType::Enum type = bgfx::AttribType::Count;
            bool normalized = false;
            bool asInt = false;
            layout.decode(attribute, count, type, normalized, asInt);
            texts[layout.getOffset(attribute)] = Text(attribute) + " " + std::to_string(count) + " " +
                                                 Text(type) + (normalized ? " normalized" : "") +
                                                 (asInt ? " integer" : "");
        }
    }
    std::string text;
    for (auto const& [offset, attribute] : texts) {
        text += (text.empty() ? "" : ", ") + attribute;
    }
    return text;
}

std::string Name(char const* name, int32_t length) {
    return {name, strnlen(name, std::size_t(length))};
}

std::string Hexadecimal(uint64_t value) {
    char buffer[24];
    std::snprintf(buffer, sizeof(buffer), "0x%" PRIx64, value);
    return buffer;
}

std::string Window(void const* nativeWindowHandle) {
    return "window:" + Hexadecimal(reinterpret_cast<uintptr_t>(nativeWindowHandle));
}

} // namespace recorder
