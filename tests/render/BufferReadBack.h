// What a buffer on the GPU contains.
#pragma once

#include <bgfx/bgfx.h>

#include <QVector4D>

#include <cstdint>
#include <vector>

namespace zarvex::testing {

/// Submits the recorded frame and returns the first `count` vec4s of a buffer after it. bgfx reads back
/// textures only, so a compute shader copies the buffer to one. What is recorded must be in views before
/// `viewAfter`, which is used with the next one.
std::vector<QVector4D> ReadBack(bgfx::DynamicVertexBufferHandle buffer, std::uint32_t count,
                                bgfx::ViewId viewAfter);

} // namespace zarvex::testing
