// The last ids of bgfx's views, which are the libraries'.
#pragma once

#include <bgfx/bgfx.h>

namespace zarvex::zx3D {

/// In which samples are resolved, of a frame's first frame buffer that has several; for further ones the ids
/// before the next.
constexpr bgfx::ViewId kLastView = 255;

/// In which pictures are copied, to be read.
constexpr bgfx::ViewId kCaptureView = 254;

} // namespace zarvex::zx3D
