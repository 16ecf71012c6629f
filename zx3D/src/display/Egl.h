// OpenGL on a display, asked of EGL as bgfx asks.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::zx3D {

/// From API version 155 on not: where OpenGL's context cannot be created, and the callback returns from the
/// fatal error that says so, bgfx goes on with OpenGL all the same, draws nothing, and stops in a debug
/// build.
inline constexpr bool kBgfxNoticesMissingOpenGL = BGFX_API_VERSION < 155;

/// Whether EGL makes a context of OpenGL 4.3 on a display, the least that bgfx takes from API version 155 on.
/// The driver stays loaded and, when it does, the display open for bgfx.
bool HasOpenGL(void* nativeDisplay);

/// The visual of the EGL configuration that bgfx chooses on a display: drivers may refuse to draw into a
/// window of another visual than its configuration's. 0 when EGL cannot tell.
///
/// Call it while bgfx runs on OpenGL: EGL is then loaded and has the display open.
std::uint32_t ChooseEglVisual(void* nativeDisplay);

} // namespace zarvex::zx3D
