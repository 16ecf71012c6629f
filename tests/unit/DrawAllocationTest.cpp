// What is drawn straight into bgfx's transient memory takes none from the heap.
#include "AllocationCounter.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <vector>

using namespace zarvex;
using zarvex::testing::CountAllocations;
using zarvex::testing::CountAllocationsOfAUniform;
using zarvex::testing::CountAllocationsOfBindings;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using LitVertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

class DrawAllocationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
        ASSERT_TRUE(zx3D::Context::Initialize(zx3D::ContextOptions::Create(
            nullptr, 64, 64, nullptr, zx3D::ContextOptions::ThreadMode::MultiThreaded, false)));
    }
    static void TearDownTestSuite() { zx3D::Context::Shutdown(); }

    void SetUp() override {
        renderer.Initialize();
        view.SetViewport(QRect(0, 0, 64, 64));
    }

    /// What the library takes from the heap in a thousand calls once frames like theirs were drawn. Each call
    /// sets as many uniforms as told, and all bind the same number of textures.
    long CountInSteadyState(int uniforms, std::function<void()> const& draw, int textures = 0) {
        long const ofBgfx =
            1000L * uniforms * CountAllocationsOfAUniform() + (1 + textures) * CountAllocationsOfBindings();
        auto const drawFrame = [&] {
            long const before = CountAllocations();
            for (int i = 0; i < 1000; ++i)
                draw();
            long const after = CountAllocations();
            bgfx::frame();
            return after - before;
        };
        for (int frame = 0; frame < 4; ++frame) // bgfx has two frames, which grow to what they hold
            drawFrame();
        return drawFrame() - ofBgfx;
    }

    zx3DQt::BGFXRenderer renderer;
    zx3DQt::BGFXViewContext view{0, zx3DQt::BGFXViewClearOptions{}};
};

} // namespace

TEST_F(DrawAllocationTest, TheCounterSeesWhatACallAllocates) {
    std::vector<zx3D::Line> const lines(20);
    EXPECT_GT(CountInSteadyState(2, [&] { renderer.DrawLines(view, lines, 4.0f); }), 0);
}

TEST_F(DrawAllocationTest, ThinLinesAllocateNothing) {
    std::vector<zx3D::Line> const lines(20);
    EXPECT_EQ(CountInSteadyState(2, [&] { renderer.DrawLines(view, lines); }), 0);
}

TEST_F(DrawAllocationTest, StippledLinesOfAModelAllocateNothing) {
    std::vector<zx3D::Line> const lines(20);
    auto const model = renderer.SetModelTransform(QMatrix4x4());
    zx3D::LineStipplePattern const stipple{0xf0f0, 2};
    EXPECT_EQ(CountInSteadyState(2, [&] { renderer.DrawLines(view, lines, 1.0f, model, stipple); }), 0);
}

TEST_F(DrawAllocationTest, PointsAllocateNothing) {
    std::vector<Vertex> const points(20);
    EXPECT_EQ(CountInSteadyState(0, [&] { renderer.DrawPoints(view, points); }), 0);
}

TEST_F(DrawAllocationTest, TrianglesAllocateNothing) {
    std::vector<Vertex> const vertices(20);
    std::vector<std::uint16_t> const indices{0, 1, 2, 3, 4, 5};
    EXPECT_EQ(CountInSteadyState(0, [&] { renderer.DrawTriangles(view, vertices, indices); }), 0);
}

TEST_F(DrawAllocationTest, LitTrianglesAllocateNothing) {
    std::vector<LitVertex> const vertices(20);
    std::vector<std::uint16_t> const indices{0, 1, 2, 3, 4, 5};
    EXPECT_EQ(CountInSteadyState(0, [&] { renderer.DrawTriangles(view, vertices, indices); }), 0);
}

TEST_F(DrawAllocationTest, RepeatedTextAllocatesNothing) {
    zx3D::FontHandle const font = *zx3D::LoadDefaultFont(12);
    QString const text = QStringLiteral("12.75 µm");
    auto const draw = [&] {
        renderer.RenderText(view, QPointF(10.0, 10.0), text, font, Qt::white, Qt::AlignRight);
    };
    EXPECT_EQ(CountInSteadyState(1, draw, 1), 0);
    zx3D::DestroyFont(font);
}
