// What draw operations ask of bgfx in views of several samples.
#include <DrawFixture.h>

#include <zx3DQt/PointBatch.h>
#include <zx3DQt/Shapes.h>

#include <zx3D/FrameBuffer.h>

#include <functional>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::IsEmpty;
using testing::Not;

namespace {

class MultisampledViewTest : public DrawFixture {
protected:
    /// The states of all draws of every operation, in a view of a frame buffer of so many samples.
    std::vector<std::uint64_t> StatesWith(std::uint32_t sampleCount) {
        zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8,
                                      zx3D::FrameBufferOptions{.sampleCount = sampleCount});
        frameBuffer.RequestResize(64, 48);
        EXPECT_TRUE(m_renderer->StartFrame(frameBuffer));
        m_view.Submit(frameBuffer);
        recorder::ClearCalls();
        DrawEverything();
        std::vector<std::uint64_t> states;
        for (recorder::Draw const& draw : recorder::Draws()) {
            if (!draw.isDispatch)
                states.push_back(draw.state.value());
        }
        frameBuffer.Destroy();
        return states;
    }

    void DrawEverything() {
        zx3D::Vertex::Pos3fColorRGBA const corners[3] = {};
        zx3D::Vertex::Pos3fNormal3fColorRGBA const litCorners[3] = {};
        std::uint16_t const indices[] = {0, 1, 2};
        zx3D::Line const lines[1] = {};
        m_renderer->DrawLines(m_view, lines);
        m_renderer->DrawLines(m_view, lines, 3.0f);
        m_renderer->DrawPoints(m_view, corners);
        m_renderer->DrawPoints(m_view, corners, std::uint16_t{5});
        m_renderer->DrawTriangles(m_view, corners, indices);
        m_renderer->DrawTriangles(m_view, litCorners, indices);
        m_renderer->DrawTriangles(m_view, corners, indices, std::nullopt, BGFXRenderer::STATE_MARKER_OVERLAY);
        DrawCircle(*m_renderer, m_view, QVector2D(), 1.0f, zx3D::Color(), 0.0f, BGFXRenderer::STATE_OPAQUE);
        m_renderer->DrawFullscreenTexture(m_view, BGFX_INVALID_HANDLE);
        m_batch.Set(zx3D::DataSpan<ColoredPoint const>(m_point, 1));
        m_batch.Draw(*m_renderer, m_view);
        m_batch.Draw(*m_renderer, m_view, {.size = 5.0f});
    }

private:
    ColoredPoint const m_point[1] = {};
    PointBatch m_batch;
};

} // namespace

TEST_F(MultisampledViewTest, EveryOperationAsksForSmoothEdgesThereAndNowhereElse) {
    std::vector<std::uint64_t> const plain = StatesWith(1);
    std::vector<std::uint64_t> const smooth = StatesWith(4);
    ASSERT_THAT(plain, Not(IsEmpty()));
    ASSERT_EQ(plain.size(), smooth.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        EXPECT_EQ(plain[i] & BGFX_STATE_MSAA, 0u) << i;
        EXPECT_EQ(smooth[i], plain[i] | BGFX_STATE_MSAA) << i;
    }
}

TEST_F(MultisampledViewTest, ItIsTheViewThatCountsAndNotWhatTheFrameWasStartedOn) {
    StatesWith(4);
    zx3D::FrameBuffer window(nullptr, bgfx::TextureFormat::RGBA8, zx3D::FrameBufferOptions{.sampleCount = 4});
    zx3D::FrameBuffer picture(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    for (zx3D::FrameBuffer* const frameBuffer : {&window, &picture})
        frameBuffer->RequestResize(64, 48);
    picture.SubmitOnDemand();
    ASSERT_TRUE(m_renderer->StartFrame(window));
    BGFXViewContext const other(6);
    m_view.Submit(picture);
    other.Submit(window);
    recorder::ClearCalls();
    zx3D::Line const lines[1] = {};
    m_renderer->DrawLines(m_view, lines);
    m_renderer->DrawLines(other, lines);
    ASSERT_EQ(recorder::Draws().size(), 2u);
    EXPECT_EQ(recorder::Draws()[0].state, BGFXRenderer::STATE_LINES.GetValue());
    EXPECT_EQ(recorder::Draws()[1].state, BGFXRenderer::STATE_LINES.GetValue() | BGFX_STATE_MSAA);
    window.Destroy();
    picture.Destroy();
}
