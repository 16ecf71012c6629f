// What a frame consists of, and what is missing in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace zarvex::zx3DQt {

/// Why something was left out of a frame.
enum class LeftOutReason : std::uint8_t {
    NoTransientSpace, ///< bgfx's transient buffers were full; `zx3D::ContextOptions` has their sizes
    NoBuffer,         ///< bgfx had no buffer left, or no texture for a batch
    NoProgram,        ///< the shader program was invalid, or the renderer is not initialised
    NoFrameBuffer,    ///< the frame buffer could not be created: `StartFrame` returned false
    Count
};

/// Counts of one frame of one renderer. A plain record. Texts count as calls, their glyphs as nothing.
struct FrameStatistics {
    std::uint32_t calls = 0;      ///< draw operations that were given something to draw
    std::uint64_t primitives = 0; ///< lines, points and triangles that were handed to bgfx
    std::uint64_t bytes = 0;      ///< of vertices and indices that were handed to bgfx

    /// Draw calls of bgfx's for wide lines and large points that went through the transient buffers, since
    /// bgfx has only so many buffers for calls of their own: slower than the others, with the same picture.
    std::uint32_t withoutOwnBuffers = 0;

    /// Draw calls of bgfx's that were left out, wholly or (thin points) in part, by reason.
    std::array<std::uint32_t, static_cast<std::size_t>(LeftOutReason::Count)> leftOut{};

    /// Those of one reason, and all.
    /// @{
    std::uint32_t CountLeftOut(LeftOutReason reason) const {
        return leftOut[static_cast<std::size_t>(reason)];
    }
    std::uint32_t CountLeftOut() const { return std::accumulate(leftOut.begin(), leftOut.end(), 0u); }
    /// @}
};

} // namespace zarvex::zx3DQt
