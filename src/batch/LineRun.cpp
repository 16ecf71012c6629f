// What the compute shaders are given, and where they leave what they measured.
#include "LineRun.h"

#include <zx3D/ProgramFactory.h>

#include <algorithm>
#include <bit>
#include <optional>

namespace zarvex::zx3DQt {

namespace {

/// As in line_batch_blocks.glsl: texels in a block, and blocks in a row of their texture.
constexpr std::uint32_t kBlockSize = 256;
constexpr std::uint32_t kBlocksInRow = 256;

/// Blocks that a group of cs_line_batch_lengths measures.
constexpr std::uint32_t kGroupSize = 64;

constexpr std::uint64_t kTextureFlags =
    BGFX_TEXTURE_COMPUTE_WRITE | BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP;

std::uint32_t CountRows(std::uint32_t count, std::uint32_t rowLength) {
    return (count + rowLength - 1) / rowLength;
}

zx3D::Owned<bgfx::TextureHandle> CreateTexture(std::uint32_t count, std::uint32_t rowLength) {
    return zx3D::Owned(bgfx::createTexture2D(static_cast<std::uint16_t>(rowLength),
                                             static_cast<std::uint16_t>(CountRows(count, rowLength)), false,
                                             1, bgfx::TextureFormat::R32F, kTextureFlags));
}

void SetImage(std::uint8_t stage, bgfx::TextureHandle texture) {
    bgfx::setImage(stage, texture, 0, bgfx::Access::Write, bgfx::TextureFormat::R32F);
}

} // namespace

bool LineRun::Measured::Fit(std::uint32_t count, std::uint32_t width) {
    if (count <= capacity && width == rowLength)
        return true;
    // What grows does so by doubling.
    std::uint32_t const wanted = std::bit_ceil(std::max(count, width));
    std::uint32_t const blockCount = CountRows(wanted, kBlockSize) + 1;
    capacity = 0;
    measures = CreateTexture(wanted, width);
    blocks = CreateTexture(blockCount, kBlocksInRow);
    carries = CreateTexture(blockCount, kBlocksInRow);
    if (!measures || !blocks || !carries)
        return false;
    capacity = wanted;
    rowLength = width;
    return true;
}

LineRun::Call& LineRun::NextCall(bgfx::ViewId view, std::uint64_t frame) {
    if (frame != m_frame)
        m_used.clear();
    m_frame = frame;
    std::size_t const index = m_used[view]++;
    if (index >= m_calls.size())
        m_calls.resize(index + 1);
    return m_calls[index];
}

bool LineRun::Measure(bgfx::ViewId view, std::uint64_t frame, Lines const& lines) {
    m_current = nullptr;
    auto const lengths = zx3D::ProgramFactory::Get().CreateProgram("cs_line_batch_lengths");
    auto const carries = zx3D::ProgramFactory::Get().CreateProgram("cs_line_batch_carries");
    if (!lengths || !carries)
        return false;
    BatchUniforms const& uniforms = BatchUniforms::Get();
    Call& call = NextCall(view, frame);
    std::size_t index = 0;
    std::uint32_t blocksBefore = 0;
    bool fits = true;
    lines.texels.ForEachTexture(
        0, lines.count,
        [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count, std::uint32_t rowLength) {
            if (index >= call.size())
                call.resize(index + 1);
            Measured& measured = call[index];
            fits = fits && measured.Fit(first + count, rowLength);
            if (!fits)
                return;
            measured.texels = texture;
            std::uint32_t const blocks = CountRows(first + count, kBlockSize);
            auto const setRun = [&](float a, float b) {
                uniforms.Set(BatchUniform::LineRun, a, b, lines.patternLength, static_cast<float>(blocks));
            };

            bgfx::setTransform(lines.modelId, 1);
            bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
            SetImage(1, measured.measures.Get());
            SetImage(2, measured.blocks.Get());
            uniforms.Set(BatchUniform::Range, 0.0f, static_cast<float>(rowLength));
            setRun(static_cast<float>(first), static_cast<float>(first + count));
            bgfx::dispatch(view, *lengths, CountRows(blocks, kGroupSize), 1, 1, BGFX_DISCARD_ALL);

            // Without a texture before, any will do: it is not read.
            Measured const& before = index > 0 ? call[index - 1] : measured;
            bgfx::setTexture(0, uniforms[BatchUniform::LineMeasures], measured.blocks.Get());
            bgfx::setTexture(1, uniforms[BatchUniform::LineCarries],
                             index > 0 ? before.carries.Get() : measured.blocks.Get());
            SetImage(2, measured.carries.Get());
            setRun(static_cast<float>(blocksBefore), 0.0f);
            bgfx::dispatch(view, *carries, 1, 1, 1, BGFX_DISCARD_ALL);
            blocksBefore = blocks;
            ++index;
        });
    m_current = fits ? &call : nullptr;
    m_patternLength = lines.patternLength;
    return fits;
}

void LineRun::Bind(bgfx::TextureHandle texels, BatchUniforms const& uniforms) const {
    auto const measured = std::find_if(m_current->begin(), m_current->end(), [texels](Measured const& one) {
        return one.texels.idx == texels.idx;
    });
    bgfx::setTexture(1, uniforms[BatchUniform::LineMeasures], measured->measures.Get());
    bgfx::setTexture(2, uniforms[BatchUniform::LineCarries], measured->carries.Get());
    uniforms.Set(BatchUniform::LineRun, 0.0f, 0.0f, m_patternLength);
}

} // namespace zarvex::zx3DQt
