// What render targets draw into.
#pragma once

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3DQt {

constexpr bgfx::TextureFormat::Enum kWindowColorFormat = bgfx::TextureFormat::BGRA8;
/// Also of everything that is read back.
constexpr bgfx::TextureFormat::Enum kOffscreenColorFormat = bgfx::TextureFormat::RGBA8;

/// Asks for another number of samples, or another depth, of a target and of what it draws into.
/// @{
inline void SetSampleCount(std::uint32_t count, zx3D::FrameBufferOptions& options,
                           zx3D::FrameBuffer& frameBuffer) {
    options.sampleCount = count;
    zx3D::FrameBufferOptions changed = frameBuffer.GetOptions();
    changed.sampleCount = count;
    frameBuffer.SetOptions(changed);
}

inline void SetDepthFormat(bgfx::TextureFormat::Enum format, zx3D::FrameBufferOptions& options,
                           zx3D::FrameBuffer& frameBuffer) {
    options.depthFormat = format;
    zx3D::FrameBufferOptions changed = frameBuffer.GetOptions();
    changed.depthFormat = format;
    frameBuffer.SetOptions(changed);
}
/// @}

} // namespace zarvex::zx3DQt
