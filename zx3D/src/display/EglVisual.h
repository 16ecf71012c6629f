// Which windows bgfx's OpenGL renderer can draw into.
#pragma once

#include <cstdint>

namespace zarvex::zx3D {

/// The visual of the EGL configuration that bgfx chooses on a display: drivers may refuse to draw into a
/// window of another visual than its configuration's. 0 when EGL cannot tell.
///
/// Call it while bgfx runs on OpenGL: EGL is then loaded and has the display open.
std::uint32_t ChooseEglVisual(void* nativeDisplay);

} // namespace zarvex::zx3D
