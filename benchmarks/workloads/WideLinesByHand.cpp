// Input, dispatch and draw.
#include "workloads/WideLinesByHand.h"

#include <zx3DQt/BGFXRenderer.h>

namespace zarvex::benchmarks {

namespace {

constexpr std::uint32_t kThreadsPerGroup = 64;

struct Float4 {
    float x, y, z, w;
};

struct Input {
    Float4 start, end, color;
};

} // namespace

bgfx::VertexLayout WideLineInputLayout() {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::TexCoord0, 4, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord1, 4, bgfx::AttribType::Float)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
        .end();
    return layout;
}

bgfx::VertexLayout WideLineCornerLayout() {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::TexCoord0, 4, bgfx::AttribType::Float)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord1, 4, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord2, 4, bgfx::AttribType::Float)
        .end();
    return layout;
}

void WideLinesByHand::Submit(bgfx::ViewId view, std::span<zx3D::Line const> lines, std::uint16_t width,
                             std::uint16_t pattern) {
    auto const count = static_cast<std::uint32_t>(lines.size());
    auto const input = bgfx::createDynamicVertexBuffer(count, m_inputLayout, BGFX_BUFFER_COMPUTE_READ);
    auto const corners =
        bgfx::createDynamicVertexBuffer(6 * count, m_cornerLayout, BGFX_BUFFER_COMPUTE_WRITE);
    m_buffers.insert(m_buffers.end(), {input, corners});
    bgfx::Memory const* const memory = bgfx::alloc(count * static_cast<std::uint32_t>(sizeof(Input)));
    auto* values = reinterpret_cast<Input*>(memory->data);
    for (zx3D::Line const& line : lines) {
        *values++ = {{line.start.x, line.start.y, line.start.z, 1.0f},
                     {line.end.x, line.end.y, line.end.z, 1.0f},
                     {line.color.red, line.color.green, line.color.blue, line.color.alpha}};
    }
    bgfx::update(input, 0, memory);
    m_viewport.Set(1280.0f, 720.0f);
    m_sprite.Set(static_cast<float>(count), width);
    bgfx::setBuffer(0, input, bgfx::Access::Read);
    bgfx::setBuffer(1, corners, bgfx::Access::Write);
    bgfx::dispatch(view, m_computeProgram, (count + kThreadsPerGroup - 1) / kThreadsPerGroup);
    bgfx::setVertexBuffer(0, corners);
    m_viewport.Set(1280.0f, 720.0f);
    m_sprite.Set(static_cast<float>(count), width);
    m_stipple.Set(pattern, 1.0f);
    bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
    bgfx::submit(view, m_program);
}

void WideLinesByHand::DestroyBuffers() {
    for (bgfx::DynamicVertexBufferHandle const buffer : m_buffers)
        bgfx::destroy(buffer);
    m_buffers.clear();
}

} // namespace zarvex::benchmarks
