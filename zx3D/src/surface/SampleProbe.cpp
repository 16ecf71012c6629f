// An edge across a small texture, and its faintest pixel.
#include "SampleProbe.h"

#include "../context/FramePump.h"
#include "PossibleOptions.h"
#include "ReservedViews.h"

#include <zx3D/Context.h>
#include <zx3D/Owned.h>
#include <zx3D/ProgramFactory.h>
#include <zx3D/Vertex.h>

#include <bgfx/bgfx.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

namespace zarvex::zx3D {

namespace {

constexpr std::uint16_t kWidth = 128;
constexpr std::uint16_t kHeight = 64;

constexpr bgfx::ViewId kEdgeView = kCaptureView;
constexpr bgfx::ViewId kCopyView = kLastView;

struct Measured {
    ContextRun run;
    std::array<std::uint32_t, 6> counts{}; ///< by the bit width of what was asked for
};

std::uint32_t& MeasuredCount(std::uint32_t asked) {
    static Measured measured;
    if (!measured.run.IsCurrent())
        measured = {ContextRun::Current(), {}};
    return measured.counts.at(static_cast<std::size_t>(std::bit_width(asked)));
}

bool CanMeasure() {
    constexpr std::uint64_t needed = BGFX_CAPS_TEXTURE_BLIT | BGFX_CAPS_TEXTURE_READ_BACK;
    return bgfx::getRendererType() != bgfx::RendererType::Noop &&
           (bgfx::getCaps()->supported & needed) == needed;
}

/// Its hypotenuse crosses the texture askew, so that it meets the samples of its pixels one by one.
bool DrawEdge(bgfx::FrameBufferHandle target) {
    using Vertex = Vertex::Pos3fColorRGBA;
    auto const program = ProgramFactory::Get().CreateProgram("vs_basic", "fs_basic");
    bgfx::VertexLayout const& layout = Vertex::Layout();
    if (!program || bgfx::getAvailTransientVertexBuffer(3, layout) < 3)
        return false;
    Color const white(1.0f, 1.0f, 1.0f, 1.0f);
    Vertex const corners[] = {Vertex({-1.0f, -1.0f, 0.5f}, white), Vertex({1.0f, 0.37f, 0.5f}, white),
                              Vertex({-1.0f, 1.0f, 0.5f}, white)};
    bgfx::TransientVertexBuffer vertices;
    bgfx::allocTransientVertexBuffer(&vertices, 3, layout);
    std::memcpy(vertices.data, corners, sizeof(corners));
    bgfx::resetView(kEdgeView);
    bgfx::setViewFrameBuffer(kEdgeView, target);
    bgfx::setViewRect(kEdgeView, 0, 0, kWidth, kHeight);
    bgfx::setViewClear(kEdgeView, BGFX_CLEAR_COLOR, 0x00000000);
    bgfx::setState(BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A | BGFX_STATE_MSAA);
    bgfx::setVertexBuffer(0, &vertices);
    bgfx::submit(kEdgeView, *program);
    return true;
}

std::vector<std::uint8_t> Read(bgfx::TextureHandle source, bgfx::TextureHandle copy,
                               bgfx::FrameBufferHandle elsewhere) {
    bgfx::resetView(kCopyView);
    bgfx::setViewFrameBuffer(kCopyView, elsewhere); // turning to it resolves the source
    bgfx::setViewRect(kCopyView, 0, 0, 1, 1);
    bgfx::touch(kCopyView);
    bgfx::blit(kCopyView, copy, 0, 0, source);
    std::vector<std::uint8_t> pixels(4u * kWidth * kHeight);
    std::uint32_t const readyFrame = bgfx::readTexture(copy, pixels.data());
    while (Context::SubmitFrame() != readyFrame) {
    }
    bgfx::resetView(kEdgeView);
    bgfx::resetView(kCopyView);
    return pixels;
}

/// The part of the faintest pixel that is drawn is one sample.
std::uint32_t CountSamples(std::vector<std::uint8_t> const& pixels) {
    std::uint32_t faintest = 256;
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        if (pixels[i] != 0)
            faintest = std::min<std::uint32_t>(faintest, pixels[i]);
    }
    return (255 + faintest / 2) / faintest;
}

std::uint32_t DrawAndCount(std::uint32_t asked) {
    constexpr bgfx::TextureFormat::Enum format = bgfx::TextureFormat::RGBA8;
    Owned color(bgfx::createTexture2D(kWidth, kHeight, false, 1, format, SampleFlags(asked)));
    Owned copy(bgfx::createTexture2D(kWidth, kHeight, false, 1, format,
                                     BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK));
    Owned elsewhere(bgfx::createFrameBuffer(1, 1, format));
    if (!color || !copy || !elsewhere)
        return asked;
    bgfx::TextureHandle const texture = color.Get();
    Owned target(bgfx::createFrameBuffer(1, &texture));
    if (!target || !DrawEdge(target.Get()))
        return asked;
    std::uint32_t const counted = CountSamples(Read(texture, copy.Get(), elsewhere.Get()));
    return counted == 0 ? asked : counted;
}

} // namespace

std::uint32_t SampleProbe::Recall(std::uint32_t asked) {
    return CanMeasure() ? MeasuredCount(asked) : asked;
}

std::uint32_t SampleProbe::Measure(std::uint32_t asked) {
    FinishRecordedFrames(); // whose views these are, too
    std::uint32_t const counted = DrawAndCount(asked);
    FinishRecordedFrames(); // so that bgfx has the handles back
    return MeasuredCount(asked) = counted;
}

} // namespace zarvex::zx3D
