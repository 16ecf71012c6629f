// From the buffer to a texture, to one that the processor may read, to memory.
#include "BufferReadBack.h"

#include <zx3D/ProgramFactory.h>

#include <zx3d_render_tests_shaders.h>

namespace zarvex::testing {

namespace {

constexpr std::uint16_t kTextureWidth = 1024;
constexpr std::uint32_t kGroupSize = 64;
constexpr bgfx::TextureFormat::Enum kFormat = bgfx::TextureFormat::RGBA32F;

} // namespace

std::vector<QVector4D> ReadBack(bgfx::DynamicVertexBufferHandle buffer, std::uint32_t count,
                                bgfx::ViewId viewAfter) {
    auto const height = static_cast<std::uint16_t>((count + kTextureWidth - 1) / kTextureWidth);
    bgfx::ProgramHandle const program =
        zx3D::ProgramFactory::Get().CreateProgram(zx3d_render_tests_shaders::cs_copy_to_texture).value();
    bgfx::UniformHandle const countUniform = bgfx::createUniform("u_copyCount", bgfx::UniformType::Vec4);
    bgfx::TextureHandle const copy =
        bgfx::createTexture2D(kTextureWidth, height, false, 1, kFormat, BGFX_TEXTURE_COMPUTE_WRITE);
    bgfx::TextureHandle const readable = bgfx::createTexture2D(
        kTextureWidth, height, false, 1, kFormat, BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK);

    float const countVector[] = {static_cast<float>(count), 0.0f, 0.0f, 0.0f};
    bgfx::setUniform(countUniform, countVector);
    bgfx::setBuffer(0, buffer, bgfx::Access::Read);
    bgfx::setImage(1, copy, 0, bgfx::Access::Write, kFormat);
    bgfx::dispatch(viewAfter, program, (count + kGroupSize - 1) / kGroupSize);
    bgfx::blit(static_cast<bgfx::ViewId>(viewAfter + 1), readable, 0, 0, copy);

    std::vector<QVector4D> values(std::size_t{kTextureWidth} * height);
    static_assert(sizeof(QVector4D) == 4 * sizeof(float));
    std::uint32_t const readyFrame = bgfx::readTexture(readable, values.data());
    while (bgfx::frame() < readyFrame) {
    }
    bgfx::destroy(readable);
    bgfx::destroy(copy);
    bgfx::destroy(countUniform);
    values.resize(count);
    return values;
}

} // namespace zarvex::testing
