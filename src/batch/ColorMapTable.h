// A colour map's table, and the same on the GPU.
#pragma once

#include <zx3DQt/ColorMap.h>

#include <zx3D/ContextListener.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace zarvex::zx3DQt {

/// Colours of 8-bit channels R, G, B, A.
class ColorMap::Table final : private zx3D::ContextListener {
public:
    static constexpr std::size_t kSize = 256;

    std::array<std::uint8_t, 4 * kSize> colors{};

    /// A texture of one row, made on first use in each run of the context. Invalid where bgfx has none left.
    bgfx::TextureHandle GetTexture();

private:
    void OnContextStopping() override { m_texture.Reset(); }

    zx3D::Owned<bgfx::TextureHandle> m_texture;
};

/// What draws with a colour map sees of it.
class ColorMapTexture {
public:
    static bgfx::TextureHandle Of(ColorMap const& map) { return map.m_table->GetTexture(); }
};

} // namespace zarvex::zx3DQt
