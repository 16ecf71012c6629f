// The buffers behind sprites, of points and of lines, on both paths: how long they live, and what happens
// when bgfx has no more of them.
#include <DrawFixture.h>

#include "../../src/render/PointSpriteExpansion.h"
#include "../../src/render/RectangleSpriteExpansion.h"
#include "../../src/render/SpriteSubmission.h"

#include <Warnings.h>

#include <zx3DQt/Library.h>

#include <array>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

struct Sprites {
    char const* name;
    bool areLines;
    bool areComputed; ///< by a compute shader

    std::size_t BuffersPerCall() const { return areComputed ? 2 : 1; }
};

class SpriteResourcesTest : public DrawFixture, public testing::WithParamInterface<Sprites> {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        if (!GetParam().areComputed)
            DisableCompute();
    }

    /// Draws one sprite at the given x.
    void Draw(float x = 1.0f) {
        if (GetParam().areLines) {
            std::array<zx3D::Line, 1> const lines{zx3D::Line{{x, 2, 3}, {4, 5, 6}, {}}};
            m_renderer->DrawLines(m_view, lines, 2.0f);
        } else {
            std::array<zx3D::Vertex::Pos3fColorRGBA, 1> points;
            points[0].position.x = x;
            m_renderer->DrawPoints(m_view, points, std::uint16_t(2));
        }
    }

    /// Dynamic vertex buffers that are alive.
    static std::size_t BuffersAlive() {
        std::size_t count = 0;
        for (std::string const& text : recorder::Alive())
            count += text.starts_with("dynamicVertexBuffer#") ? 1 : 0;
        return count;
    }

    /// Takes all buffers that bgfx has but a few.
    void TakeAllBuffersBut(std::size_t count) {
        for (;;) {
            bgfx::DynamicVertexBufferHandle const buffer =
                bgfx::createDynamicVertexBuffer(1u, zx3D::Vertex::Pos3fColorRGBA::Layout());
            if (!bgfx::isValid(buffer))
                break;
            m_taken.push_back(buffer);
        }
        GiveBack(count);
        bgfx::frame();
        recorder::ClearCalls();
    }

    void GiveBack(std::size_t count) {
        ASSERT_LE(count, m_taken.size());
        for (; count > 0; --count) {
            bgfx::destroy(m_taken.back());
            m_taken.pop_back();
        }
    }

    void ExpectNothingDrawn() {
        EXPECT_THAT(recorder::Draws(), IsEmpty());
        EXPECT_THAT(recorder::CallNames(), Not(Contains(testing::StartsWith("set"))));
    }

    std::vector<bgfx::DynamicVertexBufferHandle> m_taken;
};

std::string NameOf(testing::TestParamInfo<Sprites> const& info) {
    return info.param.name;
}

/// The ones whose data bgfx refers to.
class SpriteInputTest : public SpriteResourcesTest {
protected:
    /// Draws and tells who owns the input: the kept resource and bgfx.
    std::weak_ptr<void> DrawAndWatchInput() {
        Draw();
        if (GetParam().areLines)
            return Kept<RectangleSprite::ComputeStageInputVertexData>(FrameResource::RectangleSpriteInput)
                ->vertices;
        return Kept<PointSprite::ComputeStageInputVertexData>(FrameResource::PointSpriteInput)->vertices;
    }
};

constexpr Sprites kPointsComputed{"PointsComputed", false, true};
constexpr Sprites kPointsExpandedHere{"PointsExpandedHere", false, false};
constexpr Sprites kLinesComputed{"LinesComputed", true, true};
constexpr Sprites kLinesExpandedHere{"LinesExpandedHere", true, false};

} // namespace

INSTANTIATE_TEST_SUITE_P(All, SpriteResourcesTest,
                         testing::Values(kPointsComputed, kPointsExpandedHere, kLinesComputed,
                                         kLinesExpandedHere),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(All, SpriteInputTest, testing::Values(kPointsComputed, kLinesComputed), NameOf);

TEST_P(SpriteResourcesTest, EveryCallHasBuffersOfItsOwn) {
    Draw(1);
    Draw(2);
    EXPECT_THAT(KeptKinds(), SizeIs(2 * GetParam().BuffersPerCall()));
    EXPECT_EQ(BuffersAlive(), 2 * GetParam().BuffersPerCall());
    std::vector<recorder::Call> const updates = recorder::CallsNamed("update");
    ASSERT_THAT(updates, SizeIs(2));
    EXPECT_NE(updates[0].arguments, updates[1].arguments);
    std::vector<recorder::Draw> draws = recorder::Draws();
    std::erase_if(draws, [](recorder::Draw const& draw) { return draw.isDispatch; });
    ASSERT_THAT(draws, SizeIs(2));
    EXPECT_NE(draws[0].vertexBuffer, draws[1].vertexBuffer);
}

TEST_P(SpriteResourcesTest, TheyLivePastThePresentationUntilTheNextFrameStarts) {
    ASSERT_TRUE(StartFrame());
    Draw();
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_EQ(BuffersAlive(), GetParam().BuffersPerCall());
    recorder::ClearCalls();
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(recorder::CountCalls("destroy"), GetParam().BuffersPerCall());
    EXPECT_EQ(BuffersAlive(), 0u);
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_P(SpriteResourcesTest, ACollapsedFrameKeepsThem) {
    ASSERT_TRUE(StartFrame());
    Draw();
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_FALSE(StartFrame(0, 50));
    EXPECT_FALSE(StartFrame(100, 0));
    EXPECT_EQ(BuffersAlive(), GetParam().BuffersPerCall());
    EXPECT_THAT(KeptKinds(), SizeIs(GetParam().BuffersPerCall()));
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(BuffersAlive(), 0u);
}

TEST_P(SpriteResourcesTest, TheyMayBeRetiredBeforeAnyFrameIsPresented) {
    ASSERT_TRUE(StartFrame());
    Draw();
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(BuffersAlive(), 0u);
    Draw();
    for (int frame = 0; frame < 3; ++frame)
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_EQ(BuffersAlive(), GetParam().BuffersPerCall());
}

TEST_P(SpriteResourcesTest, TheRenderersEndDestroysThem) {
    Draw();
    m_renderer.reset();
    EXPECT_EQ(BuffersAlive(), 0u);
}

TEST_P(SpriteResourcesTest, TheContextsEndDestroysThem) {
    Draw();
    zx3DQt::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_P(SpriteResourcesTest, TwoThousandCallsInAFrameHaveTheirBuffers) {
    ASSERT_TRUE(StartFrame());
    for (int i = 0; i < 2000; ++i)
        Draw(float(i));
    EXPECT_EQ(recorder::CountCalls("submit"), 2000u);
    EXPECT_EQ(BuffersAlive(), 2000 * GetParam().BuffersPerCall());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(BuffersAlive(), 0u);
}

TEST_P(SpriteResourcesTest, WithoutABufferTransientSpaceIsUsedUntilThereAreBuffersAgain) {
    ExpectWarning("draw.shared-buffer");
    ASSERT_TRUE(StartFrame());
    TakeAllBuffersBut(0);
    Draw();
    EXPECT_EQ(TheDraw().vertexBuffer, "transient");
    GiveBack(m_taken.size());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
    recorder::ClearCalls();
    Draw();
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST_P(SpriteResourcesTest, TheLastBuffersAreUsed) {
    ASSERT_TRUE(StartFrame());
    TakeAllBuffersBut(GetParam().BuffersPerCall());
    Draw();
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
    GiveBack(m_taken.size());
}

TEST_P(SpriteResourcesTest, WithoutABufferTheVerticesAreTheSame) {
    ExpectWarning("draw.shared-buffer");
    DisableCompute();
    Draw();
    std::vector<std::byte> const expected = TheDraw().vertices;
    TakeAllBuffersBut(0);
    Draw();
    EXPECT_EQ(TheDraw().vertices, expected);
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_OPAQUE));
    GiveBack(m_taken.size());
}

TEST_P(SpriteResourcesTest, EveryFrameOfMoreCallsThanBuffersIsTheSame) {
    constexpr int kCalls = 300;
    Configure([](recorder::Settings& settings) { settings.vertexBuffers = 200; });
    RestartWithTransientSpace(1 << 20, 1 << 20);
    if (!GetParam().areComputed)
        DisableCompute();
    std::optional<FrameStatistics> first;
    for (int frame = 0; frame < 6; ++frame) {
        ASSERT_TRUE(StartFrame());
        recorder::ClearCalls();
        for (int i = 0; i < kCalls; ++i)
            Draw(float(i));
        FrameStatistics const statistics = m_renderer->GetFrameStatistics();
        first = first.value_or(statistics);
        EXPECT_EQ(recorder::CountCalls("submit"), std::size_t(kCalls)) << "frame " << frame;
        EXPECT_EQ(statistics.primitives, std::uint64_t(kCalls));
        EXPECT_EQ(statistics.withoutOwnBuffers, first->withoutOwnBuffers) << "frame " << frame;
        EXPECT_EQ(statistics.CountLeftOut(), 0u);
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
    }
    EXPECT_EQ(first->withoutOwnBuffers, kCalls - (200 / 2 - 16) / GetParam().BuffersPerCall());
    EXPECT_THAT(TakeWarnings("draw.shared-buffer"), SizeIs(1)) << "once per cause";
}

TEST_P(SpriteResourcesTest, RenderersShareTheBuffersSoThatTheirFramesStayTheSame) {
    Configure([](recorder::Settings& settings) { settings.vertexBuffers = 200; });
    RestartWithTransientSpace(1 << 20, 1 << 20);
    if (!GetParam().areComputed)
        DisableCompute();
    ExpectWarning("draw.shared-buffer");
    BGFXRenderer other;
    zx3D::FrameBuffer target(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    target.RequestResize(10, 10);
    std::array<zx3D::Line, 1> const line{};
    std::vector<std::uint32_t> ofTheOther;
    for (int frame = 0; frame < 4; ++frame) {
        ASSERT_TRUE(StartFrame());
        for (int i = 0; i < 30; ++i)
            Draw(float(i));
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
        ASSERT_TRUE(other.StartFrame(target));
        for (int i = 0; i < 100; ++i)
            other.DrawLines(m_view, line, 3.0f);
        ofTheOther.push_back(other.GetFrameStatistics().withoutOwnBuffers);
        other.PresentCurrentAndSubmitNextFrame(false);
        EXPECT_EQ(m_renderer->GetFrameStatistics().withoutOwnBuffers, 0u);
    }
    EXPECT_THAT(ofTheOther, testing::Each(ofTheOther.front()));
}

TEST_P(SpriteResourcesTest, AFailureLeavesNothingBoundForTheNextDraw) {
    ExpectWarning("draw.no-transient-space");
    RestartWithTransientSpace(100, 100);
    if (!GetParam().areComputed)
        DisableCompute();
    TakeAllBuffersBut(0);
    Draw();
    ExpectNothingDrawn();
    EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoTransientSpace), 1u);
    std::array<zx3D::Vertex::Pos3fColorRGBA, 1> const points{};
    m_renderer->DrawPoints(m_view, points);
    EXPECT_THAT(TheDraw().uniforms, IsEmpty());
    EXPECT_THAT(TheDraw().buffers, IsEmpty());
    GiveBack(m_taken.size());
}

TEST_P(SpriteInputTest, BgfxLetsGoOfItWhenItHasReadIt) {
    ASSERT_TRUE(StartFrame());
    std::weak_ptr<void> const input = DrawAndWatchInput();
    EXPECT_EQ(input.use_count(), 2);
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_EQ(input.use_count(), 1);
    ASSERT_TRUE(StartFrame());
    EXPECT_TRUE(input.expired());
}

TEST_P(SpriteInputTest, BgfxKeepsItWhenTheBuffersAreRetiredFirst) {
    ASSERT_TRUE(StartFrame());
    std::weak_ptr<void> const input = DrawAndWatchInput();
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(input.use_count(), 1);
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_EQ(input.use_count(), 1);
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    EXPECT_TRUE(input.expired());
}

TEST_P(SpriteInputTest, BgfxKeepsItWhenTheRendererEndsFirst) {
    std::weak_ptr<void> const input = DrawAndWatchInput();
    m_renderer.reset();
    EXPECT_EQ(input.use_count(), 1);
    zx3DQt::Shutdown();
    EXPECT_TRUE(input.expired());
}

TEST_P(SpriteInputTest, TheContextsEndReleasesIt) {
    std::weak_ptr<void> const input = DrawAndWatchInput();
    zx3DQt::Shutdown();
    EXPECT_TRUE(input.expired());
}

TEST_P(SpriteInputTest, WithABufferForItAloneTransientSpaceIsUsed) {
    ExpectWarning("draw.shared-buffer");
    ASSERT_TRUE(StartFrame());
    TakeAllBuffersBut(1);
    Draw();
    EXPECT_EQ(TheDraw().vertexBuffer, "transient");
    GiveBack(m_taken.size());
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(StartFrame());
    EXPECT_EQ(BuffersAlive(), 0u);
    recorder::ClearCalls();
    Draw();
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST(SpriteSubmissionTest, CallsAreCutWhereDispatchesEnd) {
    std::vector<char> const sprites(2 * 262144 + 1);
    std::vector<std::pair<std::ptrdiff_t, std::uint64_t>> parts;
    auto const note = [&](zx3D::DataSpan<char const> part) {
        parts.emplace_back(part.data - sprites.data(), part.count);
    };
    ForEachSubmission(zx3D::DataSpan<char const>(sprites.data(), 262144), note);
    EXPECT_THAT(parts, ElementsAre(std::pair(0, 262144)));
    parts.clear();
    ForEachSubmission(zx3D::DataSpan<char const>(sprites), note);
    EXPECT_THAT(parts, ElementsAre(std::pair(0, 262144), std::pair(262144, 262144), std::pair(524288, 1)));
    EXPECT_EQ(GroupCount(262144), 4096u);
}
