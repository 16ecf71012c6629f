// What differs between the versions of bgfx, from API version 122 to 155. Everything else is the same for all
// of them.
#pragma once

#include <bgfx/bgfx.h>

// From 147 on bgfx.h declares what platform.h declared before.
#if BGFX_API_VERSION < 147
#include <bgfx/platform.h>
#endif

// From 139 on bgfx tells the format of a screenshot: one parameter more, between the pitch and the data. Put
// this in its place where you override `bgfx::CallbackI::screenShot`.
#if BGFX_API_VERSION < 139
#define ZX3D_SCREENSHOT_FORMAT
#else
#define ZX3D_SCREENSHOT_FORMAT bgfx::TextureFormat::Enum,
#endif

namespace zarvex::zx3D {

// From 132 on the sizes of the transient buffers are called maxima, in `bgfx::Init::Limits` as in
// `bgfx::Caps::Limits`. Use: `limits.*kTransientVbSize<bgfx::Caps::Limits>`.
#if BGFX_API_VERSION < 132
/// The size of the transient vertex buffer, bytes.
template<typename Limits>
inline constexpr auto kTransientVbSize = &Limits::transientVbSize;
/// The size of the transient index buffer, bytes.
template<typename Limits>
inline constexpr auto kTransientIbSize = &Limits::transientIbSize;
#else
template<typename Limits>
inline constexpr auto kTransientVbSize = &Limits::maxTransientVbSize;
template<typename Limits>
inline constexpr auto kTransientIbSize = &Limits::maxTransientIbSize;
#endif

} // namespace zarvex::zx3D
