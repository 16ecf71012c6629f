// What render targets draw into.
#pragma once

#include <bgfx/bgfx.h>

namespace zarvex::zx3DQt {

constexpr bgfx::TextureFormat::Enum kWindowColorFormat = bgfx::TextureFormat::BGRA8;
/// Also of everything that is read back.
constexpr bgfx::TextureFormat::Enum kOffscreenColorFormat = bgfx::TextureFormat::RGBA8;
constexpr bgfx::TextureFormat::Enum kDepthFormat = bgfx::TextureFormat::D16;

} // namespace zarvex::zx3DQt
