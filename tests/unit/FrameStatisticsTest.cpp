// What a frame consists of, what is left out of it, and what is said about that.
#include <DrawFixture.h>
#include <LogCapture.h>
#include <Warnings.h>

#include <zx3DQt/Library.h>

#include <array>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

class FrameStatisticsTest : public DrawFixture {
protected:
    std::uint32_t LeftOut(LeftOutReason reason) const {
        return m_renderer->GetFrameStatistics().CountLeftOut(reason);
    }

    /// Draws a frame in which a call has not enough transient space.
    void DrawTooMuch() {
        ASSERT_TRUE(StartFrame());
        m_renderer->DrawLines(m_view, std::vector<zx3D::Line>(100));
    }

    std::array<Vertex, 3> const m_vertices{};
    std::array<std::uint16_t, 6> const m_indices{0, 1, 2, 2, 1, 0};
    std::array<zx3D::Line, 2> const m_lines{};
};

} // namespace

TEST_F(FrameStatisticsTest, EveryOperationIsCountedWithItsPrimitivesAndBytes) {
    auto expectMore = [&, last = FrameStatistics()](std::uint64_t primitives, std::uint64_t bytes) mutable {
        FrameStatistics const now = m_renderer->GetFrameStatistics();
        EXPECT_EQ(now.calls, last.calls + 1);
        EXPECT_EQ(now.primitives, last.primitives + primitives);
        EXPECT_EQ(now.bytes, last.bytes + bytes);
        EXPECT_EQ(now.CountLeftOut(), 0u);
        last = now;
    };
    m_renderer->DrawLines(m_view, m_lines);
    expectMore(2, 4 * (sizeof(Vertex) + 2));
    m_renderer->DrawLines(m_view, m_lines, 3.0f);
    expectMore(2, 2 * 48);
    m_renderer->DrawPoints(m_view, m_vertices);
    expectMore(3, 3 * sizeof(Vertex));
    m_renderer->DrawPoints(m_view, m_vertices, std::uint16_t(4));
    expectMore(3, 3 * 32);
    m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
    expectMore(2, 3 * sizeof(Vertex) + 12);
    DisableCompute();
    m_renderer->DrawPoints(m_view, m_vertices, std::uint16_t(4));
    expectMore(3, 3 * 6 * 48);
}

TEST_F(FrameStatisticsTest, TheyAreOfTheFrameBeingRecordedOrTheLast) {
    ASSERT_TRUE(StartFrame());
    m_renderer->DrawLines(m_view, m_lines);
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_EQ(m_renderer->GetFrameStatistics().calls, 1u);
    EXPECT_FALSE(StartFrame(0, 50));
    EXPECT_EQ(m_renderer->GetFrameStatistics().calls, 1u) << "a collapsed frame is none";
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(m_renderer->GetFrameStatistics().calls, 0u);
}

TEST_F(FrameStatisticsTest, LinesPointsAndTrianglesWithoutTransientSpaceAreCountedAndWarnedAboutOnce) {
    RestartWithTransientSpace(100, 100);
    ASSERT_TRUE(StartFrame());
    m_renderer->DrawLines(m_view, std::vector<zx3D::Line>(100));
    EXPECT_EQ(LeftOut(LeftOutReason::NoTransientSpace), 1u);
    m_renderer->DrawTriangles(m_view, std::vector<Vertex>(100), m_indices);
    EXPECT_EQ(LeftOut(LeftOutReason::NoTransientSpace), 2u);
    m_renderer->DrawPoints(m_view, std::vector<Vertex>(100));
    EXPECT_EQ(LeftOut(LeftOutReason::NoTransientSpace), 3u);
    EXPECT_EQ(m_renderer->GetFrameStatistics().primitives, 3u) << "the points that fit";
    EXPECT_THAT(TakeWarnings("draw.no-transient-space"), SizeIs(1));
}

TEST_F(FrameStatisticsTest, ACauseIsSaidAgainAfterAFrameWithoutIt) {
    RestartWithTransientSpace(100, 100);
    DrawTooMuch();
    DrawTooMuch();
    EXPECT_THAT(TakeWarnings("draw.no-transient-space"), SizeIs(1));
    ASSERT_TRUE(StartFrame());
    DrawTooMuch();
    EXPECT_THAT(TakeWarnings("draw.no-transient-space"), SizeIs(1));
}

TEST_F(FrameStatisticsTest, AnInvalidProgramDrawsNothing) {
    ExpectWarning("draw.no-program");
    std::array<zx3D::Vertex::Pos3fNormal3fColorRGBA, 3> const vertices{};
    m_renderer->DrawTriangles(m_view, vertices, m_indices, std::nullopt, std::nullopt,
                              bgfx::ProgramHandle BGFX_INVALID_HANDLE);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(LeftOut(LeftOutReason::NoProgram), 1u);
}

TEST_F(FrameStatisticsTest, WithoutInitializeNothingIsDrawn) {
    ExpectWarning("draw.no-program");
    BGFXRenderer renderer;
    renderer.DrawLines(m_view, m_lines);
    renderer.DrawLines(m_view, m_lines, 3.0f);
    renderer.DrawPoints(m_view, m_vertices);
    renderer.DrawTriangles(m_view, m_vertices, m_indices);
    renderer.DrawFullscreenTexture(0, BGFX_INVALID_HANDLE);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(renderer.GetFrameStatistics().CountLeftOut(LeftOutReason::NoProgram), 5u);
}

TEST_F(FrameStatisticsTest, AFrameBufferThatCannotBeCreatedStartsNoFrame) {
    LogCapture const log;
    std::vector<bgfx::FrameBufferHandle> taken;
    for (;;) {
        taken.push_back(bgfx::createFrameBuffer(8, 8, bgfx::TextureFormat::RGBA8));
        if (!bgfx::isValid(taken.back()))
            break;
    }
    taken.pop_back();
    EXPECT_FALSE(StartFrame());
    EXPECT_EQ(LeftOut(LeftOutReason::NoFrameBuffer), 1u);
    EXPECT_THAT(log.Texts(), Contains(HasSubstr("[draw.no-frame-buffer]")));
    for (bgfx::FrameBufferHandle const frameBuffer : taken)
        bgfx::destroy(frameBuffer);
    bgfx::frame();
    EXPECT_TRUE(StartFrame());
}

TEST_F(FrameStatisticsTest, WithoutUniformsTheRendererDrawsNothingUntilThereAreSome) {
    zx3DQt::Shutdown();
    ASSERT_TRUE(Init(false));
    std::vector<bgfx::UniformHandle> taken;
    for (int i = 0;; ++i) {
        taken.push_back(bgfx::createUniform(("u_" + std::to_string(i)).c_str(), bgfx::UniformType::Vec4));
        if (!bgfx::isValid(taken.back()))
            break;
    }
    taken.pop_back();
    // With enough for the renderer's own, but not for those that its shaders name, too.
    for (std::size_t const left : {0, 4, 20}) {
        while (taken.size() > 512 - left) {
            bgfx::destroy(taken.back());
            taken.pop_back();
        }
        bgfx::frame();
        LogCapture const log;
        BGFXRenderer renderer;
        recorder::ClearCalls();
        renderer.Initialize();
        EXPECT_THAT(log.Texts(), Contains(HasSubstr("[renderer.no-uniforms]"))) << left;
        EXPECT_EQ(recorder::CountCalls("createProgram"), 0u);
        EXPECT_FALSE(bgfx::isValid(renderer.GetBasicProgram()));
        renderer.DrawLines(m_view, m_lines);
        EXPECT_EQ(recorder::CountCalls("submit"), 0u);
        bgfx::frame();
    }
    for (bgfx::UniformHandle const uniform : taken)
        bgfx::destroy(uniform);
    bgfx::frame();
    BGFXRenderer renderer;
    renderer.Initialize();
    renderer.DrawLines(m_view, m_lines);
    EXPECT_EQ(renderer.GetFrameStatistics().primitives, 2u);
}
