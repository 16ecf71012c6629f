// Readable forms of bgfx's argument types, as they appear in recorded calls.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>
#include <string>
#include <type_traits>

namespace recorder {

[[nodiscard]] std::string Text(bool value);
[[nodiscard]] std::string Text(float value);
[[nodiscard]] std::string Text(char const* value);
[[nodiscard]] std::string Text(std::string const& value);
[[nodiscard]] std::string Text(bgfx::TextureFormat::Enum format);
[[nodiscard]] std::string Text(bgfx::UniformType::Enum type);
[[nodiscard]] std::string Text(bgfx::ViewMode::Enum mode);
[[nodiscard]] std::string Text(bgfx::Access::Enum access);
[[nodiscard]] std::string Text(bgfx::BackbufferRatio::Enum ratio);

/// The attributes in the order of their offsets: "Position 3 Float, Color0 4 Uint8 normalized".
[[nodiscard]] std::string Text(bgfx::VertexLayout const& layout);

template<typename T>
    requires std::is_integral_v<T>
[[nodiscard]] std::string Text(T value) {
    return std::to_string(value);
}

/// Kind of a handle as records spell it; one specialisation per handle type.
template<typename Handle>
inline constexpr char const* kKindOf = nullptr;
template<>
inline constexpr char const* kKindOf<bgfx::DynamicIndexBufferHandle> = "dynamicIndexBuffer";
template<>
inline constexpr char const* kKindOf<bgfx::DynamicVertexBufferHandle> = "dynamicVertexBuffer";
template<>
inline constexpr char const* kKindOf<bgfx::FrameBufferHandle> = "frameBuffer";
template<>
inline constexpr char const* kKindOf<bgfx::IndexBufferHandle> = "indexBuffer";
template<>
inline constexpr char const* kKindOf<bgfx::ProgramHandle> = "program";
template<>
inline constexpr char const* kKindOf<bgfx::ShaderHandle> = "shader";
template<>
inline constexpr char const* kKindOf<bgfx::TextureHandle> = "texture";
template<>
inline constexpr char const* kKindOf<bgfx::UniformHandle> = "uniform";
template<>
inline constexpr char const* kKindOf<bgfx::VertexBufferHandle> = "vertexBuffer";
template<>
inline constexpr char const* kKindOf<bgfx::VertexLayoutHandle> = "vertexLayout";

template<typename Handle>
    requires(kKindOf<Handle> != nullptr)
[[nodiscard]] std::string Text(Handle handle) {
    std::string const index = bgfx::isValid(handle) ? std::to_string(handle.idx) : "invalid";
    return std::string(kKindOf<Handle>) + "#" + index;
}

/// A name of at most `length` characters, as the functions called setName take it.
[[nodiscard]] std::string Name(char const* name, int32_t length);

[[nodiscard]] std::string Hexadecimal(uint64_t value);

[[nodiscard]] std::string Window(void const* nativeWindowHandle);

/// "a, b, c".
template<typename... Values>
[[nodiscard]] std::string Arguments(Values const&... values) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Text(values)), ...);
    return text;
}

} // namespace recorder
