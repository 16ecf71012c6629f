// zx3D::FrameBuffer: sizes that are asked for, the bgfx object that follows, and copies that share both.
#include <zx3D/FrameBuffer.h>

#include <zx3D/Context.h>

#include <Fixtures.h>

#include <optional>
#include <vector>

using namespace zarvex::zx3D;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class FrameBufferTest : public ContextFixture {
protected:
    FrameBuffer Attached() { return {&m_window, bgfx::TextureFormat::BGRA8, bgfx::TextureFormat::D16}; }

    static FrameBuffer Unattached() {
        return {nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16};
    }

    static FrameBuffer Sized(FrameBuffer frameBuffer) {
        frameBuffer.RequestResize(640, 480);
        frameBuffer.SubmitOnDemand();
        return frameBuffer;
    }

    int m_window = 0;
};

} // namespace

TEST_F(FrameBufferTest, ConstructionCreatesNothing) {
    FrameBuffer const frameBuffer = Attached();
    EXPECT_EQ(frameBuffer.GetWidth(), 0);
    EXPECT_EQ(frameBuffer.GetHeight(), 0);
    EXPECT_FALSE(frameBuffer.IsSized());
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, WithoutASizeNothingIsCreated) {
    FrameBuffer frameBuffer = Attached();
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, ARequestChangesTheSizeAtOnceAndTheObjectOnDemand) {
    FrameBuffer frameBuffer = Attached();
    frameBuffer.RequestResize(640, 480);
    EXPECT_EQ(frameBuffer.GetWidth(), 640);
    EXPECT_EQ(frameBuffer.GetHeight(), 480);
    EXPECT_TRUE(frameBuffer.IsSized());
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
}

TEST_F(FrameBufferTest, AnAttachedOneIsCreatedOnItsWindowInItsFormats) {
    Sized(Attached());
    ASSERT_THAT(recorder::CallsNamed("createFrameBuffer"), SizeIs(1));
    std::string const arguments = recorder::CallsNamed("createFrameBuffer")[0].arguments;
    EXPECT_THAT(arguments, testing::StartsWith("window:0x"));
    EXPECT_THAT(arguments, testing::EndsWith(", 640, 480, BGRA8, D16"));
}

TEST_F(FrameBufferTest, AnUnattachedOneOwnsAColourAndADepthTexture) {
    FrameBuffer frameBuffer = Sized(Unattached());
    std::vector<recorder::Call> const textures = recorder::CallsNamed("createTexture2D");
    ASSERT_THAT(textures, SizeIs(2));
    EXPECT_THAT(textures[0].arguments, testing::StartsWith("640, 480, false, 1, RGBA8, "));
    EXPECT_THAT(textures[1].arguments, testing::StartsWith("640, 480, false, 1, D16, "));
    EXPECT_EQ("texture#" + std::to_string(bgfx::getTexture(frameBuffer.GetHandle(), 0).idx),
              textures[0].result);
    frameBuffer.Destroy();
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(FrameBufferTest, SeveralRequestsBetweenTwoFramesCostOneCreation) {
    FrameBuffer frameBuffer = Sized(Attached());
    recorder::ClearCalls();
    frameBuffer.RequestResize(1, 1);
    frameBuffer.RequestResize(0, 7);
    frameBuffer.RequestResize(800, 600);
    frameBuffer.SubmitOnDemand();
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 1u);
    EXPECT_EQ(recorder::CountCalls("destroy"), 1u);
}

TEST_F(FrameBufferTest, ARequestOfThePresentSizeCostsNone) {
    FrameBuffer frameBuffer = Sized(Attached());
    recorder::ClearCalls();
    frameBuffer.RequestResize(800, 600);
    frameBuffer.RequestResize(640, 480);
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, AnAttachedOneLetsAFramePassBetweenDestructionAndCreation) {
    FrameBuffer frameBuffer = Sized(Attached());
    recorder::ClearCalls();
    frameBuffer.RequestResize(800, 600);
    frameBuffer.SubmitOnDemand();
    std::vector<std::string> names = recorder::CallNames();
    EXPECT_GE(recorder::CountCalls("frame"), 1u);
    std::erase(names, "frame");
    EXPECT_THAT(names, ElementsAre("destroy", "createFrameBuffer"));
    EXPECT_EQ(recorder::CallNames().back(), "createFrameBuffer");
}

TEST_F(FrameBufferTest, AnUnattachedOneIsResizedWithinAFrame) {
    FrameBuffer frameBuffer = Sized(Unattached());
    recorder::ClearCalls();
    frameBuffer.RequestResize(800, 600);
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 1u);
}

TEST_F(FrameBufferTest, ACollapsedOneIsNotCreated) {
    FrameBuffer frameBuffer = Attached();
    frameBuffer.RequestResize(0, 100);
    frameBuffer.SubmitOnDemand();
    frameBuffer.RequestResize(100, 0);
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(frameBuffer.IsSized());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, DestroyOfAnAttachedOneWaitsUntilBgfxHasLetGo) {
    FrameBuffer frameBuffer = Sized(Attached());
    recorder::ClearCalls();
    frameBuffer.Destroy();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    std::vector<std::string> const names = recorder::CallNames();
    ASSERT_GE(names.size(), 2u);
    EXPECT_EQ(names[0], "destroy");
    EXPECT_EQ(std::vector<std::string>(names.begin() + 1, names.end()),
              std::vector<std::string>(names.size() - 1, "frame"));
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(FrameBufferTest, KeepingThePictureItMakesTheCallsOfDestroy) {
    FrameBuffer frameBuffer = Sized(Attached());
    recorder::ClearCalls();
    frameBuffer.Destroy();
    std::vector<std::string> const calls = recorder::CallNames();
    frameBuffer.SubmitOnDemand();
    recorder::ClearCalls();
    frameBuffer.DestroyKeepingPicture();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(recorder::CallNames(), calls);
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(FrameBufferTest, DestroyWithoutAnObjectMakesNoCall) {
    FrameBuffer frameBuffer = Attached();
    frameBuffer.RequestResize(640, 480);
    frameBuffer.Destroy();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, DestroyTwiceDestroysOnce) {
    FrameBuffer frameBuffer = Sized(Attached());
    frameBuffer.Destroy();
    recorder::ClearCalls();
    frameBuffer.Destroy();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, AfterDestroyItIsCreatedAnewOnDemand) {
    FrameBuffer frameBuffer = Sized(Attached());
    frameBuffer.Destroy();
    recorder::ClearCalls();
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 1u);
}

TEST_F(FrameBufferTest, TheDestructorDestroysNothing) {
    {
        FrameBuffer const frameBuffer = Sized(Attached());
        FrameBuffer const other = Sized(Unattached());
        recorder::ClearCalls();
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
}

TEST_F(FrameBufferTest, CopiesSeeEachOthersSizeAndObject) {
    FrameBuffer frameBuffer = Attached();
    FrameBuffer copy = frameBuffer;
    copy.RequestResize(320, 200);
    EXPECT_EQ(frameBuffer.GetWidth(), 320);
    EXPECT_TRUE(frameBuffer.IsSized());
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(copy.GetHandle().idx, frameBuffer.GetHandle().idx);
    copy.SubmitOnDemand();
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 1u);
    copy.Destroy();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
}

TEST_F(FrameBufferTest, ACopySavedBeforeDestroyAndRestoredLaterIsCreatedAnew) {
    FrameBuffer frameBuffer = Sized(Attached());
    FrameBuffer const saved = frameBuffer;
    frameBuffer.Destroy();
    frameBuffer = FrameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    frameBuffer = saved;
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(saved.GetHandle().idx, frameBuffer.GetHandle().idx);
    frameBuffer.Destroy();
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(FrameBufferTest, ShutdownDestroysWhatIsLeft) {
    FrameBuffer attached = Sized(Attached());
    FrameBuffer unattached = Sized(Unattached());
    Context::Shutdown();
    EXPECT_FALSE(bgfx::isValid(attached.GetHandle()));
    EXPECT_FALSE(bgfx::isValid(unattached.GetHandle()));
    recorder::ClearCalls();
    attached.Destroy();
    unattached.SubmitOnDemand();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(FrameBufferTest, ShutdownDestroysWhatNoFrameBufferRefersToAnyMore) {
    {
        FrameBuffer const frameBuffer = Sized(Attached());
    }
    Context::Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

TEST_F(FrameBufferTest, OutlivesTheContextAndIsCreatedInTheNext) {
    FrameBuffer frameBuffer = Sized(Attached());
    Context::Shutdown();
    ASSERT_TRUE(Context::Initialize(Context::GetOptions()));
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(frameBuffer.GetWidth(), 640);
}

TEST_F(FrameBufferTest, BeyondTheGpusTexturesNothingIsCreated) {
    FrameBuffer frameBuffer = Unattached();
    frameBuffer.RequestResize(20000, 10);
    frameBuffer.SubmitOnDemand();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("20000 x 10")));
}

TEST_F(FrameBufferTest, WhereTexturesRanOutNothingIsCreated) {
    std::vector<bgfx::TextureHandle> textures;
    while (textures.empty() || bgfx::isValid(textures.back()))
        textures.push_back(bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8));
    textures.pop_back();
    bgfx::destroy(textures.back()); // one is left, for the colour
    textures.pop_back();
    bgfx::frame();
    FrameBuffer frameBuffer = Sized(Unattached());
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 0u);
    frameBuffer.SubmitOnDemand();
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("640 x 480"))) << "once";
    for (bgfx::TextureHandle const texture : textures)
        bgfx::destroy(texture);
    frameBuffer.SubmitOnDemand();
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
}

TEST_F(FrameBufferTest, HandlesThatWereGivenBackAreFetchedByFrames) {
    for (int i = 0; i < 500; ++i) {
        FrameBuffer frameBuffer = Sized(Unattached());
        ASSERT_TRUE(bgfx::isValid(frameBuffer.GetHandle())) << i;
        frameBuffer.Destroy();
    }
    EXPECT_LT(recorder::CountCalls("frame"), 10u) << "only where they had run out";
}

TEST_F(FrameBufferTest, DepthFormatCountMeansNoDepth) {
    FrameBuffer frameBuffer = Sized({nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::Count});
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), 1u);
}

TEST_F(FrameBufferTest, AWindowBeyondTheGpusLimitHasNoFrameBuffer) {
    FrameBuffer frameBuffer = Attached();
    frameBuffer.RequestResize(32767, 32767);
    frameBuffer.SubmitOnDemand();
    frameBuffer.SubmitOnDemand();
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_EQ(frameBuffer.GetWidth(), 32767) << "what was requested";
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("32767 x 32767"))) << "once";
    EXPECT_TRUE(bgfx::isValid(Sized(frameBuffer).GetHandle()));
}

TEST_F(FrameBufferTest, ViewsOfADestroyedFrameBufferAreUnbound) {
    FrameBuffer first = Sized(Unattached());
    FrameBuffer second = Sized(Unattached());
    first.BindToView(3);
    first.BindToView(4);
    second.BindToView(5);
    second.BindToView(4); // no longer the first one's
    recorder::ClearCalls();
    first.Destroy();
    EXPECT_THAT(recorder::CallTexts(), Contains("setViewFrameBuffer(3, frameBuffer#invalid)"));
    EXPECT_EQ(recorder::CountCalls("setViewFrameBuffer"), 1u);
    second.Destroy();
    EXPECT_EQ(recorder::CountCalls("setViewFrameBuffer"), 3u);
}
