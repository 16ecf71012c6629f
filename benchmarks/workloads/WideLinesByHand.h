// Wide lines that a compute shader expands to rectangles, by hand.
#pragma once

#include "runner/Floor.h"

#include <zx3D/Line.h>

#include <cstdint>
#include <span>
#include <vector>

namespace zarvex::benchmarks {

/// What the compute shader reads of a line.
bgfx::VertexLayout WideLineInputLayout();
/// What it writes, six for each line.
bgfx::VertexLayout WideLineCornerLayout();

class WideLinesByHand {
public:
    WideLinesByHand() = default;
    ~WideLinesByHand() { DestroyBuffers(); }

    WideLinesByHand(WideLinesByHand const&) = delete;
    WideLinesByHand& operator=(WideLinesByHand const&) = delete;

    /// One dispatch and one draw. `width` in pixels, `pattern` 16 bits of dashes of one pixel.
    void Submit(bgfx::ViewId view, std::span<zx3D::Line const> lines, std::uint16_t width,
                std::uint16_t pattern);

    /// Once the frame with them is handed over.
    void DestroyBuffers();

private:
    bgfx::VertexLayout m_inputLayout = WideLineInputLayout();
    bgfx::VertexLayout m_cornerLayout = WideLineCornerLayout();
    std::vector<bgfx::DynamicVertexBufferHandle> m_buffers;
    bgfx::ProgramHandle m_program = Program("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple");
    bgfx::ProgramHandle m_computeProgram = ComputeProgram("cs_rectangle_sprite");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_sprite{"u_rectangleSprite"};
    Vec4Uniform m_stipple{"u_lineStipple"};
};

} // namespace zarvex::benchmarks
