// Frames of many large points use the memory of the frames before, from the first ones on.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>

#include <gtest/gtest.h>

#include <vector>

#include <sys/prctl.h>
#include <sys/resource.h>

using namespace zarvex;

namespace {

/// What the points of a frame take in bgfx's memory: 32 bytes each.
constexpr long kPagesOfAFrame = 1'000'000 * 32 / 4096;

long CountPageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

} // namespace

TEST(PageFaultTest, FramesOfAMillionLargePointsTakeNoNewPages) {
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); // of which a frame would take but a few
    zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
    ASSERT_TRUE(zx3D::Context::Initialize(zx3D::ContextOptions::Create(
        nullptr, 64, 64, nullptr, zx3D::ContextOptions::ThreadMode::MultiThreaded, false)));
    {
        std::vector<zx3D::Vertex::Pos3fColorRGBA> const points(1'000'000);
        zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
        frameBuffer.RequestResize(64, 64);
        zx3DQt::BGFXRenderer renderer;
        zx3DQt::BGFXViewContext view(0);
        view.SetViewport(QRect(0, 0, 64, 64));
        auto const drawFrame = [&] {
            ASSERT_TRUE(renderer.StartFrame(frameBuffer));
            view.Submit(frameBuffer);
            renderer.DrawPoints(view, points, 2);
            renderer.PresentCurrentAndSubmitNextFrame(false);
        };
        for (int frame = 0; frame < 4; ++frame) // as many as bgfx has under way, and one
            drawFrame();
        long const before = CountPageFaults();
        for (int frame = 0; frame < 20; ++frame)
            drawFrame();
        // Not 20 times. The render thread may still hold the blocks that a quicker one had let go of.
        EXPECT_LE(CountPageFaults() - before, 2 * kPagesOfAFrame + 1000);
    }
    zx3D::Context::Shutdown();
}
