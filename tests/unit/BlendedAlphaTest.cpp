// How what is drawn is blended where the alpha counts.
#include <DrawFixture.h>

#include <zx3D/FrameBuffer.h>

#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;

namespace {

constexpr std::uint64_t kBlending = BGFX_STATE_BLEND_MASK | BGFX_STATE_BLEND_EQUATION_MASK;
constexpr std::uint64_t kWithAlpha =
    BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_SRC_ALPHA, BGFX_STATE_BLEND_INV_SRC_ALPHA,
                                   BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA);

class BlendedAlphaTest : public DrawFixture {
protected:
    /// The states of every operation's draws, in a view of such a frame buffer, given `state`.
    std::vector<std::uint64_t> States(zx3D::FrameBufferOptions const& options,
                                      std::optional<BGFXRenderState> state) {
        zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, options);
        frameBuffer.RequestResize(64, 48);
        EXPECT_TRUE(m_renderer->StartFrame(frameBuffer));
        m_view.Submit(frameBuffer);
        recorder::ClearCalls();
        DrawEverything(state);
        std::vector<std::uint64_t> states;
        for (recorder::Draw const& draw : recorder::Draws()) {
            if (!draw.isDispatch)
                states.push_back(draw.state.value());
        }
        frameBuffer.Destroy();
        return states;
    }

    void DrawEverything(std::optional<BGFXRenderState> state) {
        zx3D::Vertex::Pos3fColorRGBA const corners[3] = {};
        zx3D::Vertex::Pos3fNormal3fColorRGBA const litCorners[3] = {};
        std::uint16_t const indices[] = {0, 1, 2};
        zx3D::Line const lines[1] = {};
        m_renderer->DrawLines(m_view, lines, std::nullopt, std::nullopt, std::nullopt, state);
        m_renderer->DrawLines(m_view, lines, 3.0f, std::nullopt, std::nullopt, state);
        m_renderer->DrawPoints(m_view, corners, std::uint16_t{5}, std::nullopt, state);
        m_renderer->DrawTriangles(m_view, corners, indices, std::nullopt, state);
        m_renderer->DrawTriangles(m_view, litCorners, indices, std::nullopt, state);
    }
};

} // namespace

TEST_F(BlendedAlphaTest, WhatIsBlendedByAlphaKeepsTheAlphaThereAndNowhereElse) {
    std::vector<std::uint64_t> const plain = States({}, BGFXRenderer::STATE_TRANSPARENT);
    std::vector<std::uint64_t> const blended = States({.blendsAlpha = true}, BGFXRenderer::STATE_TRANSPARENT);
    ASSERT_EQ(plain.size(), 5u);
    ASSERT_EQ(blended.size(), 5u);
    for (std::size_t i = 0; i < plain.size(); ++i) {
        EXPECT_EQ(plain[i] & kBlending, BGFX_STATE_BLEND_ALPHA) << i;
        EXPECT_EQ(blended[i], (plain[i] & ~kBlending) | kWithAlpha) << i;
    }
}

TEST_F(BlendedAlphaTest, TheOperationsOwnStatesAreBlendedLikewise) {
    std::vector<std::uint64_t> const plain = States({}, std::nullopt);
    std::vector<std::uint64_t> const blended = States({.blendsAlpha = true}, std::nullopt);
    ASSERT_EQ(plain.size(), 5u);
    EXPECT_EQ(plain[4] & kBlending, BGFX_STATE_BLEND_ALPHA) << "lit triangles";
    EXPECT_EQ(blended[4] & kBlending, kWithAlpha);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(blended[i], plain[i]) << "not blended: " << i;
}

TEST_F(BlendedAlphaTest, OtherBlendingStaysAsTheApplicationHasIt) {
    constexpr std::uint64_t others[] = {
        BGFX_STATE_BLEND_ADD, BGFX_STATE_BLEND_NORMAL, BGFX_STATE_BLEND_MULTIPLY,
        BGFX_STATE_BLEND_ALPHA | BGFX_STATE_BLEND_EQUATION(BGFX_STATE_BLEND_EQUATION_MAX),
        BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_SRC_ALPHA, BGFX_STATE_BLEND_INV_SRC_ALPHA,
                                       BGFX_STATE_BLEND_ZERO, BGFX_STATE_BLEND_ONE)};
    for (std::uint64_t const other : others) {
        BGFXRenderState const state = BGFXRenderer::STATE_OPAQUE | other;
        EXPECT_EQ(States({.blendsAlpha = true}, state), States({}, state)) << std::hex << other;
    }
}

TEST_F(BlendedAlphaTest, TogetherWithSeveralSamplesItIsBoth) {
    for (std::uint64_t const state :
         States({.sampleCount = 4, .blendsAlpha = true}, BGFXRenderer::STATE_TRANSPARENT)) {
        EXPECT_EQ(state & kBlending, kWithAlpha);
        EXPECT_EQ(state & BGFX_STATE_MSAA, BGFX_STATE_MSAA);
    }
}

TEST_F(BlendedAlphaTest, ItIsTheViewThatCountsAndOnlyWhileItsFrameBufferExists) {
    constexpr std::uint64_t state = BGFX_STATE_WRITE_RGB | BGFX_STATE_BLEND_ALPHA;
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8,
                                  zx3D::FrameBufferOptions{.blendsAlpha = true});
    frameBuffer.RequestResize(64, 48);
    frameBuffer.BindToView(7);
    EXPECT_FALSE(zx3D::FrameBuffer::BlendsAlpha(7)) << "nothing to draw into yet";
    frameBuffer.SubmitOnDemand();
    frameBuffer.BindToView(7);
    EXPECT_TRUE(zx3D::FrameBuffer::BlendsAlpha(7));
    EXPECT_EQ(zx3D::FrameBuffer::BlendedState(7, state), BGFX_STATE_WRITE_RGB | kWithAlpha);
    EXPECT_EQ(zx3D::FrameBuffer::BlendedState(8, state), state);
    EXPECT_EQ(zx3D::FrameBuffer::BlendedState(65535, state), state);
    frameBuffer.Destroy();
    EXPECT_FALSE(zx3D::FrameBuffer::BlendsAlpha(7));
    EXPECT_EQ(zx3D::FrameBuffer::BlendedState(7, state), state);
}
