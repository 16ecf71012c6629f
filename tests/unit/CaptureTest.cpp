// Reading textures back: what is possible, the textures for it, the wait and the row order.
#include "Capture.h"

#include <zx3D/Context.h>

#include <Fixtures.h>
#include <LogCapture.h>
#include <Picture.h>
#include <Warnings.h>

#include <sys/resource.h>

#include <functional>
#include <utility>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint64_t kBlit = BGFX_CAPS_TEXTURE_BLIT;
constexpr std::uint64_t kReadBack = BGFX_CAPS_TEXTURE_READ_BACK;

class CaptureTest : public ContextFixture {
protected:
    static std::string Refusal(QSize size, int largest) {
        return Streamed("A picture of", size.width(), "x", size.height(),
                        "pixels cannot be rendered: each side must be 1 to", largest);
    }

    /// Makes the GPU's largest texture this large.
    static void SetMaxTextureSize(std::uint32_t size) {
        const_cast<bgfx::Caps*>(bgfx::getCaps())->limits.maxTextureSize = size;
    }

    /// Reads a texture of these pixels back.
    static QImage Read(QSize size, std::function<void()> const& beforeEachFrame = [] {}) {
        bgfx::TextureHandle const source = Capture::CreateReadBackTexture(size);
        bgfx::TextureHandle const target = Capture::CreateReadBackTexture(size);
        recorder::ClearCalls();
        QImage image = Capture::Read(source, target, size, beforeEachFrame);
        bgfx::destroy(source);
        bgfx::destroy(target);
        return image;
    }
};

/// While it lives, no more than 8 GiB can be had at once. The sanitizers' own options say so already, and
/// under them the address space has other uses.
class MemoryLimit {
public:
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    MemoryLimit() {
        getrlimit(RLIMIT_AS, &m_before);
        rlimit const limited{8ull << 30, m_before.rlim_max};
        setrlimit(RLIMIT_AS, &limited);
    }
    ~MemoryLimit() { setrlimit(RLIMIT_AS, &m_before); }

private:
    rlimit m_before{};
#endif
};

} // namespace

TEST_F(CaptureTest, NeedsBlitAndReadBack) {
    constexpr std::pair<std::uint64_t, bool> table[] = {
        {0, false},    {kBlit, false},  {kReadBack, false}, {kBlit | kReadBack, true},
        {~0ull, true}, {~kBlit, false}, {~kReadBack, false}};
    for (auto const& [supported, expected] : table) {
        Configure([supported = supported](auto& settings) { settings.supported = supported; });
        EXPECT_EQ(Capture::IsSupported(), expected) << std::hex << supported;
    }
}

TEST_F(CaptureTest, NeedsCapabilitiesAndAContext) {
    ASSERT_TRUE(Capture::IsSupported());
    Configure([](auto& settings) { settings.hasCaps = false; });
    EXPECT_FALSE(Capture::IsSupported());
    Configure([](auto& settings) { settings.hasCaps = true; });
    zx3D::Context::Shutdown();
    EXPECT_FALSE(Capture::IsSupported());
}

TEST_F(CaptureTest, SidesOfOneToTheLargestTextureArePossible) {
    LogCapture const log;
    for (QSize const size : {QSize(1, 1), QSize(16384, 1), QSize(1, 16384), QSize(16384, 16384)})
        EXPECT_TRUE(Capture::IsPossible(size));
    EXPECT_THAT(log.Lines(), IsEmpty());
    for (QSize const size : {QSize(0, 1), QSize(1, 0), QSize(-1, 1), QSize(1, -1), QSize(-5, -5),
                             QSize(16385, 1), QSize(1, 16385), QSize(65536, 1), QSize(65537, 65537)}) {
        LogCapture const refusal;
        EXPECT_FALSE(Capture::IsPossible(size));
        EXPECT_THAT(refusal.Lines(),
                    ElementsAre(LogLine{QtWarningMsg, "zarvex.zx3dqt", Refusal(size, 16384), false}));
    }
}

TEST_F(CaptureTest, ASmallerGpuAllowsLess) {
    SetMaxTextureSize(4096);
    EXPECT_TRUE(Capture::IsPossible(QSize(4096, 4096)));
    LogCapture const log;
    EXPECT_FALSE(Capture::IsPossible(QSize(4097, 1)));
    EXPECT_THAT(log.Texts(), ElementsAre(Refusal(QSize(4097, 1), 4096)));
}

TEST_F(CaptureTest, SixteenBitsAreTheLimitOfEveryGpu) {
    SetMaxTextureSize(100'000);
    EXPECT_TRUE(Capture::IsPossible(QSize(65535, 1)));
    LogCapture const log;
    EXPECT_FALSE(Capture::IsPossible(QSize(1, 65536)));
    EXPECT_THAT(log.Texts(), ElementsAre(Refusal(QSize(1, 65536), 65535)));
}

TEST_F(CaptureTest, TheColourTextureIsTheFrameBuffersFirst) {
    zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    EXPECT_FALSE(bgfx::isValid(Capture::ColorTextureOf(frameBuffer)));
    EXPECT_THAT(recorder::Calls(), IsEmpty()) << "bgfx is not asked about what it does not have";
    bgfx::TextureHandle const other = Capture::CreateReadBackTexture(QSize(1, 1));
    frameBuffer.RequestResize(8, 4);
    frameBuffer.SubmitOnDemand();
    recorder::ClearCalls();
    EXPECT_EQ(Capture::ColorTextureOf(frameBuffer).idx, other.idx + 1);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("getTexture(frameBuffer#0, 0)"));
    frameBuffer.Destroy();
    bgfx::destroy(other);
}

TEST_F(CaptureTest, AReadBackTextureCanBeCopiedToAndRead) {
    bgfx::TextureHandle const texture = Capture::CreateReadBackTexture(QSize(33, 17));
    ASSERT_TRUE(bgfx::isValid(texture));
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createTexture2D(33, 17, false, 1, RGBA8, 0xc00000000000)"));
    EXPECT_THAT(recorder::Calls().at(0).payload, IsEmpty());
    bgfx::destroy(texture);
}

TEST_F(CaptureTest, AReadBackTextureOfAnImpossibleSizeIsInvalidWithoutAWord) {
    LogCapture const log;
    for (QSize const size : {QSize(0, 4), QSize(4, 0), QSize(-1, 4), QSize(16385, 4), QSize(4, 65537)})
        EXPECT_FALSE(bgfx::isValid(Capture::CreateReadBackTexture(size)));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(CaptureTest, ReadingCopiesTheWholeTextureInTheLastViewThenWaits) {
    Configure([](auto& settings) { settings.readLatency = 1; });
    Read(QSize(5, 3), [] { bgfx::touch(9); });
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("blit(254, texture#1, 0, 0, texture#0, 0, 0, 65535, 65535)",
                            "readTexture(texture#1, 0)", "touch(9)", "frame(false)", "touch(9)",
                            "frame(false)", "destroy(texture#0)", "destroy(texture#1)"));
}

TEST_F(CaptureTest, TheWaitEndsWithTheFrameThatWasNamed) {
    recorder::SetNextFrameNumber(10);
    for (std::uint32_t const latency : {0, 1, 2, 3, 4, 5}) {
        Configure([latency](auto& settings) { settings.readLatency = latency; });
        Picture const picture;
        picture.Deliver();
        std::uint32_t waits = 0;
        QImage const image = Read(QSize(5, 3), [&waits] { ++waits; });
        picture.ExpectIn(image);
        EXPECT_EQ(waits, latency + 1);
        EXPECT_EQ(recorder::CountCalls("frame"), latency + 1);
    }
}

TEST_F(CaptureTest, TheWaitGoesOnWhereFrameNumbersStartAnew) {
    Picture const picture;
    picture.Deliver();
    recorder::SetNextFrameNumber(0xFFFFFFFF); // and the picture is ready with number 1
    picture.ExpectIn(Read(QSize(5, 3)));
    EXPECT_EQ(recorder::CountCalls("frame"), 3u);
}

TEST_F(CaptureTest, WithoutAFrameToWaitForNoneIsSubmitted) {
    Configure([](auto& settings) { settings.readLatency = 0; });
    recorder::SetNextFrameNumber(0);
    int waits = 0;
    QImage const image = Read(QSize(5, 3), [&waits] { ++waits; });
    EXPECT_EQ(image.size(), QSize(5, 3));
    EXPECT_EQ(waits, 0);
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
    bgfx::frame(); // answers into the image, which still exists
}

TEST_F(CaptureTest, WhereThereIsNoMemoryForThePictureItIsNullWithAWarning) {
    SetMaxTextureSize(65535);
    ExpectWarning("picture.no-memory");
    [[maybe_unused]] MemoryLimit const limit;
    EXPECT_TRUE(Read(QSize(65535, 65535)).isNull());
    EXPECT_THAT(recorder::CallsNamed("readTexture"), IsEmpty());
}

TEST_F(CaptureTest, TheImageHasTheBytesThatWereRead) {
    Picture const picture(128);
    picture.Deliver();
    QImage const image = Read(QSize(7, 5));
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888);
    EXPECT_EQ(image.size(), QSize(7, 5));
    picture.ExpectIn(image);
}

TEST_F(CaptureTest, TheFirstRowIsOnTopUnlessTheOriginIsAtTheBottom) {
    Picture const picture;
    picture.Deliver();
    picture.ExpectIn(Read(QSize(4, 6)));
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    picture.ExpectFlippedIn(Read(QSize(4, 6)));
}
