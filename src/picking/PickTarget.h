// Where numbers are drawn, and read from.
#pragma once

#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <QSize>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::zx3DQt {

/// Four floats a pixel.
using PickPixels = std::vector<float>;

/// Two textures to draw into, with depth, and two to read from.
class PickTarget {
public:
    /// Whether the GPU can draw numbers and have them read.
    static bool IsSupported();

    /// Without textures when bgfx has none left; pixels.
    explicit PickTarget(QSize size);

    explicit operator bool() const { return static_cast<bool>(m_frameBuffer); }
    bgfx::FrameBufferHandle GetFrameBuffer() const { return m_frameBuffer.Get(); }
    bgfx::UniformHandle GetNumberUniform() const { return m_number.Get(); }

    /// Has the frame that is being recorded write both textures' pixels there, `OrderRows` ends it: the
    /// memory must last until the frame is done. `copyView` comes after what was drawn. The frame's number.
    std::uint32_t Read(bgfx::ViewId copyView, std::array<PickPixels, 2>& pixels) const;

    /// Once they are there: top row first on every backend.
    void OrderRows(std::array<PickPixels, 2>& pixels) const;

private:
    struct Texture {
        zx3D::Owned<bgfx::TextureHandle> drawn;
        zx3D::Owned<bgfx::TextureHandle> read;
    };

    QSize m_size;
    std::array<Texture, 2> m_textures;
    zx3D::Owned<bgfx::TextureHandle> m_depth;
    zx3D::Owned<bgfx::FrameBufferHandle> m_frameBuffer;
    zx3D::Owned<bgfx::UniformHandle> m_number;
};

} // namespace zarvex::zx3DQt
