// Frame buffers of several samples: what they are made of, where they are resolved, and what becomes of them.
#include <zx3D/FrameBuffer.h>

#include <zx3D/Context.h>

#include <Fixtures.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

using namespace zarvex::zx3D;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Format = bgfx::TextureFormat;

class SampleCountTest : public ContextFixture {
protected:
    FrameBuffer Attached(FrameBufferOptions const& options, int window = 0) {
        return {&m_windows[window], Format::BGRA8, options};
    }

    static FrameBuffer Unattached(FrameBufferOptions const& options) {
        return {nullptr, Format::RGBA8, options};
    }

    static FrameBuffer Sized(FrameBuffer frameBuffer, std::uint16_t width = 640, std::uint16_t height = 480) {
        frameBuffer.RequestResize(width, height);
        frameBuffer.SubmitOnDemand();
        return frameBuffer;
    }

    int m_windows[3] = {};
};

/// Lets a format have one sample only.
void TakeMultisamplingFrom(Format::Enum format) {
    const_cast<bgfx::Caps*>(bgfx::getCaps())->formats[format] &=
        static_cast<std::uint16_t>(~BGFX_CAPS_FORMAT_TEXTURE_FRAMEBUFFER_MSAA);
}

std::string Name(bgfx::FrameBufferHandle handle) {
    return "frameBuffer#" + std::to_string(handle.idx);
}

/// Views that something was submitted to, in the order of the calls.
std::vector<bgfx::ViewId> DrawnViews() {
    std::vector<bgfx::ViewId> views;
    for (recorder::Draw const& draw : recorder::Draws())
        views.push_back(draw.view);
    return views;
}

/// The calls since the last frame was submitted.
std::vector<std::string> CallsOfThisFrame() {
    std::vector<std::string> calls = recorder::CallTexts();
    auto const isFrame = [](std::string const& call) { return call.starts_with("frame("); };
    auto const last = std::find_if(calls.rbegin(), calls.rend(), isFrame);
    calls.erase(calls.begin(), last.base());
    return calls;
}

/// Textures that are alive; the frame buffers themselves are left out.
std::size_t CountTextures() {
    std::vector<std::string> const alive = recorder::Alive();
    return static_cast<std::size_t>(std::count_if(alive.begin(), alive.end(), [](std::string const& object) {
        return object.starts_with("texture#");
    }));
}

} // namespace

TEST_F(SampleCountTest, WithDefaultOptionsTheCallsAreThoseOfTheFormatsAlone) {
    for (void* const window : {static_cast<void*>(nullptr), static_cast<void*>(&m_windows[0])}) {
        auto const callsOf = [](FrameBuffer frameBuffer) {
            recorder::ClearCalls();
            Sized(frameBuffer).BindToView(3);
            frameBuffer.SubmitOnDemand();
            frameBuffer.Destroy();
            std::vector<std::string> calls = recorder::CallTexts();
            for (std::string& call : calls) // handles come back in another order
                call = std::regex_replace(call, std::regex("#[0-9]+"), "#");
            Context::SubmitFrame();
            return calls;
        };
        EXPECT_EQ(callsOf({window, Format::BGRA8, FrameBufferOptions()}),
                  callsOf({window, Format::BGRA8, Format::D16}));
    }
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(SampleCountTest, AnUnattachedOneIsMadeOfMultisampledTextures) {
    FrameBuffer const frameBuffer = Sized(Unattached({.sampleCount = 4}));
    std::vector<recorder::Call> const textures = recorder::CallsNamed("createTexture2D");
    ASSERT_THAT(textures, SizeIs(3)) << "and one to turn to";
    EXPECT_THAT(textures[0].arguments, testing::StartsWith("640, 480, false, 1, RGBA8, 0x3"));
    EXPECT_THAT(textures[1].arguments, testing::StartsWith("640, 480, false, 1, D16, 0xb"));
    EXPECT_THAT(textures[2].arguments, testing::StartsWith("1, 1, false, 1, RGBA8, 0x1"));
    EXPECT_EQ("texture#" + std::to_string(bgfx::getTexture(frameBuffer.GetHandle(), 0).idx),
              textures[0].result);
    EXPECT_EQ(frameBuffer.GetSampleCount(), 4u);
}

TEST_F(SampleCountTest, AnUnattachedOneIsResolvedByTurningToAnother) {
    FrameBuffer const frameBuffer = Sized(Unattached({.sampleCount = 4}));
    EXPECT_THAT(recorder::CallTexts(), Contains("touch(255)"));
    EXPECT_THAT(recorder::CallTexts(),
                testing::Not(Contains("setViewFrameBuffer(255, frameBuffer#invalid)")));
    EXPECT_THAT(recorder::CallTexts(),
                testing::Not(Contains("setViewFrameBuffer(255, " + Name(frameBuffer.GetHandle()) + ")")));
}

TEST_F(SampleCountTest, OnAWindowTheColoursAreShownByATriangleInTheLastView) {
    FrameBuffer const frameBuffer = Sized(Attached({.sampleCount = 4, .depthFormat = Format::D32F}));
    ASSERT_THAT(recorder::CallsNamed("createFrameBuffer"), SizeIs(2));
    recorder::Call const window = recorder::CallsNamed("createFrameBuffer")[1];
    EXPECT_THAT(window.arguments, testing::StartsWith("window:0x"));
    EXPECT_THAT(window.arguments, testing::EndsWith(", 640, 480, BGRA8, D16")) << "its depth is never used";
    EXPECT_NE(Name(frameBuffer.GetHandle()), window.result);
    EXPECT_THAT(recorder::CallTexts(), Contains("setViewFrameBuffer(255, " + window.result + ")"));
    EXPECT_THAT(recorder::CallTexts(), Contains("setViewRect(255, 0, 0, 640, 480)"));
    ASSERT_THAT(recorder::Draws(), SizeIs(1));
    recorder::Draw const draw = recorder::Draws()[0];
    EXPECT_EQ(draw.view, 255);
    EXPECT_EQ(draw.state, BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A);
    EXPECT_EQ(draw.textures.at(0).idx, bgfx::getTexture(frameBuffer.GetHandle(), 0).idx);
}

TEST_F(SampleCountTest, ViewsAreBoundToWhatHasTheSamples) {
    FrameBuffer frameBuffer = Sized(Attached({.sampleCount = 4}));
    EXPECT_FALSE(FrameBuffer::IsMultisampled(7));
    frameBuffer.BindToView(7);
    EXPECT_THAT(recorder::CallTexts(),
                Contains("setViewFrameBuffer(7, " + Name(frameBuffer.GetHandle()) + ")"));
    EXPECT_TRUE(FrameBuffer::IsMultisampled(7));
    EXPECT_FALSE(FrameBuffer::IsMultisampled(255)) << "the window has one";
    Sized(Unattached({})).BindToView(7);
    EXPECT_FALSE(FrameBuffer::IsMultisampled(7));
    frameBuffer.BindToView(7);
    frameBuffer.Destroy();
    EXPECT_FALSE(FrameBuffer::IsMultisampled(7));
    EXPECT_FALSE(FrameBuffer::IsMultisampled(65535));
}

TEST_F(SampleCountTest, EachFrameIsResolvedAndEachTargetOfItInAViewOfItsOwn) {
    FrameBuffer first = Sized(Attached({.sampleCount = 4}, 0));
    FrameBuffer second = Sized(Attached({.sampleCount = 2}, 1));
    FrameBuffer third = Sized(Attached({.sampleCount = 8}, 2));
    Context::SubmitFrame();
    recorder::ClearCalls();
    for (FrameBuffer* const frameBuffer : {&first, &second, &third})
        frameBuffer->SubmitOnDemand();
    EXPECT_THAT(DrawnViews(), ElementsAre(255, 253, 252));
    Context::SubmitFrame();
    recorder::ClearCalls();
    third.SubmitOnDemand();
    first.SubmitOnDemand();
    EXPECT_THAT(DrawnViews(), ElementsAre(255, 253)) << "in the order of this frame";
}

TEST_F(SampleCountTest, TargetsHaveViewsOfTheirOwnInFramesThatTheApplicationSubmits) {
    FrameBuffer first = Sized(Attached({.sampleCount = 4}, 0));
    bgfx::frame();
    FrameBuffer second = Sized(Attached({.sampleCount = 4}, 1));
    for (int i = 0; i < 300; ++i) {
        bgfx::frame();
        recorder::ClearCalls();
        first.SubmitOnDemand();
        second.SubmitOnDemand();
        ASSERT_THAT(DrawnViews(), ElementsAre(255, 253));
    }
}

TEST_F(SampleCountTest, WhatAnotherTargetSubmitsInBetweenTakesNoPictureAlong) {
    FrameBuffer first = Sized(Attached({.sampleCount = 4}, 0));
    FrameBuffer second = Sized(Attached({}, 1));
    Context::SubmitFrame();
    first.SubmitOnDemand();
    Sized(second, 320, 200); // which submits what was recorded
    EXPECT_THAT(CallsOfThisFrame(), Contains(testing::StartsWith("submit(255, ")));
    Context::SubmitFrame();
    Sized(second, 640, 480);
    EXPECT_THAT(CallsOfThisFrame(), testing::Not(Contains(testing::StartsWith("submit("))))
        << "not in this one";
}

TEST_F(SampleCountTest, ANewCountIsFollowedOnDemandAndOneIsAsBefore) {
    FrameBuffer frameBuffer = Sized(Attached({}));
    frameBuffer.SetOptions({.sampleCount = 4});
    EXPECT_EQ(frameBuffer.GetOptions().sampleCount, 4u);
    EXPECT_EQ(frameBuffer.GetSampleCount(), 1u) << "of what there is";
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(frameBuffer.GetSampleCount(), 4u);
    EXPECT_EQ(CountTextures(), 2u);
    frameBuffer.SetOptions({});
    frameBuffer.SubmitOnDemand();
    Context::SubmitFrame();
    EXPECT_EQ(CountTextures(), 0u);
    recorder::ClearCalls();
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    std::vector<std::string> const alive = recorder::Alive();
    for (std::uint32_t const count : {4u, 1u}) {
        frameBuffer.SetOptions({.sampleCount = count});
        frameBuffer.SubmitOnDemand();
        Context::SubmitFrame();
    }
    EXPECT_EQ(recorder::Alive().size(), alive.size());
}

TEST_F(SampleCountTest, TexturesHaveTheSizeOfTheTarget) {
    FrameBuffer frameBuffer = Sized(Attached({.sampleCount = 4}));
    for (std::uint16_t const side : {100, 900, 20}) {
        Sized(frameBuffer, side, side);
        std::string const size = std::to_string(side) + " x " + std::to_string(side) + " ";
        EXPECT_EQ(CountTextures(), 2u);
        EXPECT_THAT(recorder::Alive(), Contains(HasSubstr(size + "BGRA8")));
        EXPECT_THAT(recorder::Alive(), Contains(HasSubstr(size + "D16")));
    }
    frameBuffer.Destroy();
    EXPECT_EQ(CountTextures(), 0u);
}

TEST_F(SampleCountTest, TheEndOfTheContextLeavesNothingAndTheNextHasItAnew) {
    FrameBuffer window = Sized(Attached({.sampleCount = 4}));
    FrameBuffer texture = Sized(Unattached({.sampleCount = 4}));
    Context::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    EXPECT_EQ(window.GetSampleCount(), 1u);
    ASSERT_TRUE(Context::Initialize(Context::GetOptions()));
    recorder::ClearCalls();
    texture.SubmitOnDemand();
    window.SubmitOnDemand();
    EXPECT_EQ(window.GetSampleCount(), 4u);
    EXPECT_EQ(texture.GetSampleCount(), 4u);
    EXPECT_THAT(DrawnViews(), ElementsAre(253)) << "the texture has 255";
}

TEST_F(SampleCountTest, DestroyedInTheMidstOfAFrameItLeavesNothingBehind) {
    for (bool const isAttached : {false, true}) {
        FrameBuffer frameBuffer =
            Sized(isAttached ? Attached({.sampleCount = 4}) : Unattached({.sampleCount = 4}));
        frameBuffer.BindToView(3);
        bgfx::touch(3);
        frameBuffer.Destroy();
        Context::SubmitFrame();
        EXPECT_EQ(CountTextures(), 0u);
        recorder::ClearCalls();
        Context::SubmitFrame();
        EXPECT_THAT(recorder::CallNames(), ElementsAre("frame"));
    }
}

TEST_F(SampleCountTest, ANumberThatThereIsNotBecomesTheNextBelow) {
    struct Case {
        std::uint32_t asked, had;
    };
    for (auto const& [asked, had] : {Case{0, 1}, Case{3, 2}, Case{15, 8}, Case{4000000000u, 16}}) {
        m_callback.traces.clear();
        FrameBuffer frameBuffer = Sized(Unattached({.sampleCount = asked}));
        EXPECT_EQ(frameBuffer.GetSampleCount(), had);
        EXPECT_EQ(frameBuffer.GetOptions().sampleCount, asked);
        EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("instead of " + std::to_string(asked))));
        frameBuffer.Destroy();
    }
    m_callback.traces.clear();
    for (std::uint32_t const count : {1u, 2u, 4u, 8u, 16u}) {
        FrameBuffer frameBuffer = Sized(Unattached({.sampleCount = count}));
        EXPECT_EQ(frameBuffer.GetSampleCount(), count);
        frameBuffer.Destroy();
    }
    EXPECT_THAT(m_callback.traces, IsEmpty());
}

TEST_F(SampleCountTest, FormatsWithoutMultisamplingHaveOneAndAWarningSaysSoOnce) {
    TakeMultisamplingFrom(Format::D16);
    FrameBuffer frameBuffer = Sized(Attached({.sampleCount = 4}));
    EXPECT_EQ(frameBuffer.GetSampleCount(), 1u);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    Sized(frameBuffer, 10, 10);
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("has 1 samples for each instead of 4")));
    frameBuffer.SetOptions({.sampleCount = 4, .depthFormat = Format::D24S8});
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(frameBuffer.GetSampleCount(), 4u);
    frameBuffer.SetOptions({.sampleCount = 4});
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(m_callback.traces, SizeIs(2)) << "the cause came again";
}

TEST_F(SampleCountTest, WhatWouldBeTooLargeHasFewer) {
    FrameBuffer frameBuffer = Sized(Unattached({.sampleCount = 16}), 8192, 8192);
    EXPECT_EQ(frameBuffer.GetSampleCount(), 4u); // 1 GiB of colours
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("1 GiB")));
    Sized(frameBuffer, 6851, 4792);
    EXPECT_EQ(frameBuffer.GetSampleCount(), 8u);
}

TEST_F(SampleCountTest, WhereTexturesRanOutItHasOneSample) {
    std::vector<bgfx::TextureHandle> textures;
    while (textures.empty() || bgfx::isValid(textures.back()))
        textures.push_back(bgfx::createTexture2D(1, 1, false, 1, Format::RGBA8));
    textures.pop_back();
    for (int i = 0; i < 2; ++i) { // for colours and depth, and not for what resolves them
        bgfx::destroy(textures.back());
        textures.pop_back();
    }
    bgfx::frame();
    FrameBuffer frameBuffer = Sized(Unattached({.sampleCount = 4}));
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(frameBuffer.GetSampleCount(), 1u);
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("has 1 samples for each instead of 4")));
    for (bgfx::TextureHandle const texture : textures)
        bgfx::destroy(texture);
}

TEST_F(SampleCountTest, WithoutASizeNothingIsResolved) {
    FrameBuffer frameBuffer = Attached({.sampleCount = 4});
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    Sized(frameBuffer);
    Context::SubmitFrame();
    recorder::ClearCalls();
    Sized(frameBuffer, 0, 10);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(SampleCountTest, ADepthFormatThatTheGpuLacksBecomesAnotherAndAWarningSaysSo) {
    bgfx::Caps& caps = const_cast<bgfx::Caps&>(*bgfx::getCaps());
    caps.formats[Format::D24S8] = 0;
    FrameBuffer const frameBuffer = Sized(Unattached({.depthFormat = Format::D24S8}));
    EXPECT_THAT(recorder::CallTexts(), Contains(HasSubstr("D32F")));
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("depth format")));
    caps.formats[Format::D32F] = caps.formats[Format::D24] = 0;
    Sized(Unattached({.depthFormat = Format::RGBA8})); // no depth at all
    EXPECT_THAT(recorder::CallTexts(), Contains(HasSubstr("D16")));
}
