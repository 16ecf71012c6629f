// Stipples that run on along polylines: how many pixels of them come before each segment.
#pragma once

#include "BatchUniforms.h"
#include "TexelStore.h"

#include <zx3D/ContextListener.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <map>
#include <vector>

namespace zarvex::zx3DQt {

/// Measures the polylines of a batch on the screen, on the GPU, anew for each call that draws them.
///
/// bgfx runs the compute shaders of a view before what is drawn in it, in any order of calls. So each call of
/// a frame into the same view has textures of its own; other views and frames take the same ones again.
class LineRun final : private zx3D::ContextListener {
public:
    /// What a call draws.
    struct Lines {
        TexelStore const& texels;
        std::uint64_t count;   ///< of the texels that segments may begin at
        std::uint32_t modelId; ///< in bgfx's transform cache
        float patternLength;   ///< pixels of the whole stipple
    };

    /// False when bgfx has no texture or program left for it. There must be compute shaders. `frame` is the
    /// number of the frame.
    bool Measure(bgfx::ViewId view, std::uint64_t frame, Lines const& lines);

    /// For the next submission, which draws from a texture of the texels that were measured last.
    void Bind(bgfx::TextureHandle texels, BatchUniforms const& uniforms) const;

    void Clear() {
        m_calls.clear();
        m_current = nullptr;
    }

private:
    /// What was measured of one texture.
    struct Measured {
        zx3D::Owned<bgfx::TextureHandle> measures, blocks, carries;
        std::uint32_t capacity = 0; ///< texels
        std::uint32_t rowLength = 0;
        bgfx::TextureHandle texels = BGFX_INVALID_HANDLE;

        bool Fit(std::uint32_t count, std::uint32_t width);
    };
    using Call = std::vector<Measured>; ///< in the order of the textures

    void OnContextStopping() override { Clear(); }
    Call& NextCall(bgfx::ViewId view, std::uint64_t frame);

    std::vector<Call> m_calls;
    std::map<bgfx::ViewId, std::size_t> m_used; ///< of the calls, in this frame
    std::uint64_t m_frame = 0;
    Call const* m_current = nullptr;
    float m_patternLength = 0.0f;
};

} // namespace zarvex::zx3DQt
