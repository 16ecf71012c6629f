// Vertices in bytes.
#include "MeshFormat.h"

#include <array>
#include <cmath>
#include <cstring>

namespace zarvex::zx3DQt {

namespace {

bgfx::VertexLayout MakeLayout(bool hasNormals, bool hasTextureCoordinates) {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, true);
    if (hasNormals)
        layout.add(bgfx::Attrib::Normal, 4, bgfx::AttribType::Int16, true);
    if (hasTextureCoordinates)
        layout.add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Float);
    layout.end();
    return layout;
}

template<typename T>
std::byte* Write(std::byte* place, T const& value) {
    std::memcpy(place, &value, sizeof(value));
    return place + sizeof(value);
}

/// Of length 1 in 16 bits; zeros where there is none.
std::array<std::int16_t, 4> PackNormal(bx::Vec3 const& normal) {
    double const length = std::hypot(double{normal.x}, double{normal.y}, double{normal.z});
    if (!std::isfinite(length) || length == 0.0)
        return {};
    auto const packed = [length](float part) {
        return static_cast<std::int16_t>(std::lround(part / length * 32'767.0));
    };
    return {packed(normal.x), packed(normal.y), packed(normal.z), 0};
}

} // namespace

bgfx::VertexLayout const& MeshFormat::GetLayout() const {
    static std::array<bgfx::VertexLayout, 4> const layouts{MakeLayout(false, false), MakeLayout(true, false),
                                                           MakeLayout(false, true), MakeLayout(true, true)};
    return layouts[(m_hasNormals ? 1 : 0) + (m_hasTextureCoordinates ? 2 : 0)];
}

void MeshFormat::Pack(MeshVertices const& vertices, std::uint64_t index, std::byte* place) const {
    place = Write(place, vertices.positions.data[index]);
    std::uint32_t const rgba = vertices.colors.IsEmpty() ? 0xFFFFFFFF : vertices.colors.data[index];
    place =
        Write(place, std::array{static_cast<std::uint8_t>(rgba >> 24), static_cast<std::uint8_t>(rgba >> 16),
                                static_cast<std::uint8_t>(rgba >> 8), static_cast<std::uint8_t>(rgba)});
    if (m_hasNormals)
        place = Write(place, PackNormal(vertices.normals.data[index]));
    if (m_hasTextureCoordinates)
        Write(place, vertices.textureCoordinates.data[index]);
}

} // namespace zarvex::zx3DQt
