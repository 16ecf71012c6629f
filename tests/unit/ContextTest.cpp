// zx3D::Context: what it starts bgfx with, how it fails, and how it stops.
#include <zx3D/Context.h>
#include <zx3D/FrameListener.h>

#include <Fixtures.h>

#include <atomic>
#include <cstdlib>

using namespace zarvex::zx3D;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using ThreadMode = ContextOptions::ThreadMode;

class ContextTest : public RecordedTest {
protected:
    void TearDown() override {
        Context::Shutdown();
        RecordedTest::TearDown();
    }

    ContextOptions Options(ThreadMode threadMode = ThreadMode::MultiThreaded, bool verticalSync = false) {
        return ContextOptions::Create(&m_window, 64, 48, &m_callback, threadMode, verticalSync);
    }

    int m_window = 0;
    TraceKeeper m_callback;
};

} // namespace

TEST(ContextOptionsTest, CreateKeepsItsArguments) {
    int window = 0;
    TraceKeeper callback;
    ContextOptions const options =
        ContextOptions::Create(&window, 64, 48, &callback, ThreadMode::SingleThreaded, true);
    EXPECT_EQ(options.nativeWindowHandle, &window);
    EXPECT_EQ(options.width, 64u);
    EXPECT_EQ(options.height, 48u);
    EXPECT_EQ(options.callback, &callback);
    EXPECT_EQ(options.threadMode, ThreadMode::SingleThreaded);
    EXPECT_TRUE(options.verticalSync);
}

TEST(ContextOptionsTest, TransientSpaceDefaultsTo28And4Mebibytes) {
    ContextOptions const options;
    EXPECT_EQ(options.transientVertexBufferSize, 28u * 1024 * 1024);
    EXPECT_EQ(options.transientIndexBufferSize, 4u * 1024 * 1024);
}

TEST(ContextOptionsTest, ThreadModesHaveFixedValues) {
    EXPECT_EQ(int(ThreadMode::MultiThreaded), 0);
    EXPECT_EQ(int(ThreadMode::SingleThreaded), 1);
}

TEST_F(ContextTest, InitializeStartsBgfxWithTheOptions) {
    ContextOptions options = Options();
    options.transientVertexBufferSize = 1 << 20;
    options.transientIndexBufferSize = 1 << 19;
    ASSERT_TRUE(Context::Initialize(options));
    EXPECT_TRUE(Context::IsInitialized());
    ASSERT_TRUE(recorder::LastInit().has_value());
    bgfx::Init const init = *recorder::LastInit();
    EXPECT_EQ(init.type, bgfx::RendererType::Noop);
    EXPECT_EQ(init.platformData.nwh, &m_window);
    EXPECT_EQ(init.resolution.width, 64u);
    EXPECT_EQ(init.resolution.height, 48u);
    EXPECT_EQ(init.resolution.reset, std::uint32_t(BGFX_RESET_NONE));
    EXPECT_EQ(init.callback, &m_callback);
    EXPECT_EQ(bgfx::getCaps()->limits.*kTransientVbSize<bgfx::Caps::Limits>, 1u << 20);
    EXPECT_EQ(bgfx::getCaps()->limits.*kTransientIbSize<bgfx::Caps::Limits>, 1u << 19);
}

TEST_F(ContextTest, VerticalSyncIsAskedForWhenWanted) {
    ASSERT_TRUE(Context::Initialize(Options(ThreadMode::MultiThreaded, true)));
    EXPECT_EQ(recorder::LastInit()->resolution.reset, std::uint32_t(BGFX_RESET_VSYNC));
}

TEST_F(ContextTest, AFrameIsInFlightUntilTheRenderThreadHasExecutedIt) {
    EXPECT_FALSE(Context::IsFrameInFlight());
    std::atomic<std::uint32_t> finished = 0;
    FrameListener const listener([&finished](std::uint32_t number) { finished = number; });
    ASSERT_TRUE(Context::Initialize(Options()));
    EXPECT_FALSE(Context::IsFrameInFlight());
    Configure([](recorder::Settings& settings) { settings.holdsFrames = true; });
    std::uint32_t const number = Context::SubmitFrame(true);
    EXPECT_EQ(recorder::Calls().back().Text(), "frame(true)");
    EXPECT_TRUE(Context::IsFrameInFlight());
    EXPECT_LT(finished, number);
    Configure([](recorder::Settings& settings) { settings.holdsFrames = false; });
    Context::SubmitFrame();
    EXPECT_FALSE(Context::IsFrameInFlight());
    EXPECT_EQ(finished, number + 1);
}

TEST_F(ContextTest, FramesOfTheApplicationItselfAreNotMistakenForOurs) {
    ASSERT_TRUE(Context::Initialize(Options()));
    Context::SubmitFrame();
    Configure([](recorder::Settings& settings) { settings.holdsFrames = true; });
    bgfx::frame();
    EXPECT_FALSE(Context::IsFrameInFlight());
    Context::SubmitFrame();
    EXPECT_TRUE(Context::IsFrameInFlight());
    Configure([](recorder::Settings& settings) { settings.holdsFrames = false; });
    bgfx::frame();
    EXPECT_FALSE(Context::IsFrameInFlight());
}

TEST_F(ContextTest, FrameNumbersMayWrapAround) {
    ASSERT_TRUE(Context::Initialize(Options()));
    recorder::SetNextFrameNumber(0xffffffff);
    Context::SubmitFrame();
    EXPECT_FALSE(Context::IsFrameInFlight());
    Context::SubmitFrame();
    EXPECT_FALSE(Context::IsFrameInFlight());
}

TEST_F(ContextTest, NoFrameIsInFlightWithoutAContext) {
    ASSERT_TRUE(Context::Initialize(Options()));
    Configure([](recorder::Settings& settings) { settings.holdsFrames = true; });
    Context::SubmitFrame();
    EXPECT_TRUE(Context::IsFrameInFlight());
    Context::Shutdown();
    EXPECT_FALSE(Context::IsFrameInFlight());
    ASSERT_TRUE(Context::Initialize(Options()));
    EXPECT_FALSE(Context::IsFrameInFlight()) << "that was another run's";
}

TEST_F(ContextTest, SecondInitializeFailsAndChangesNothing) {
    ASSERT_TRUE(Context::Initialize(Options()));
    ContextOptions const other =
        ContextOptions::Create(nullptr, 1, 1, nullptr, ThreadMode::MultiThreaded, true);
    EXPECT_FALSE(Context::Initialize(other));
    EXPECT_EQ(recorder::CountCalls("init"), 1u);
    EXPECT_EQ(Context::GetOptions().width, 64u);
    EXPECT_TRUE(Context::IsInitialized());
}

TEST_F(ContextTest, AFailedStartCanBeTriedAgain) {
    Configure([](recorder::Settings& settings) { settings.failingInits = 1; });
    EXPECT_FALSE(Context::Initialize(Options()));
    EXPECT_FALSE(Context::IsInitialized());
    EXPECT_FALSE(recorder::IsRunning());
    EXPECT_THAT(m_callback.traces, Contains(HasSubstr("bgfx does not start")));
    EXPECT_TRUE(Context::Initialize(Options()));
    EXPECT_TRUE(Context::IsInitialized());
}

TEST_F(ContextTest, WithoutADisplayARendererThatDrawsDoesNotStart) {
    Context::PreferRenderer(bgfx::RendererType::OpenGL);
    unsetenv("DISPLAY");
    EXPECT_FALSE(Context::Initialize(Options()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(m_callback.traces, ElementsAre(HasSubstr("no X display")));
}

TEST_F(ContextTest, GetOptionsGivesTheRunningOptions) {
    ASSERT_TRUE(Context::Initialize(Options(ThreadMode::MultiThreaded, true)));
    EXPECT_EQ(Context::GetOptions().nativeWindowHandle, &m_window);
    EXPECT_EQ(Context::GetOptions().callback, &m_callback);
    EXPECT_TRUE(Context::GetOptions().verticalSync);
}

TEST_F(ContextTest, ShutdownWithoutInitializeMakesNoCall) {
    Context::Shutdown();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(ContextTest, ShutdownStopsBgfxOnce) {
    ASSERT_TRUE(Context::Initialize(Options()));
    Context::Shutdown();
    Context::Shutdown();
    EXPECT_FALSE(Context::IsInitialized());
    EXPECT_THAT(recorder::CallNames(), ElementsAre("init", "shutdown"));
}

TEST_F(ContextTest, ARunLastsUntilShutdownAndDoesNotComeBack) {
    ContextRun const before = ContextRun::Current();
    ASSERT_TRUE(Context::Initialize(Options()));
    EXPECT_FALSE(before.IsCurrent());
    ContextRun const first = ContextRun::Current();
    EXPECT_TRUE(first.IsCurrent());
    Context::Shutdown();
    EXPECT_FALSE(first.IsCurrent());
    ASSERT_TRUE(Context::Initialize(Options()));
    EXPECT_FALSE(first.IsCurrent());
    EXPECT_TRUE(ContextRun::Current().IsCurrent());
}

namespace {

/// Ends the process with 0 when a single-threaded start asks bgfx, before `init`, for no render thread.
[[noreturn]] void StartSingleThreaded(ContextOptions const& options) {
    recorder::Reset();
    Context::PreferRenderer(bgfx::RendererType::Noop);
    bool const started = Context::Initialize(options);
    bool const inOrder = recorder::CallNames() == std::vector<std::string>{"renderFrame", "init"};
    std::_Exit(started && inOrder ? 0 : 1);
}

} // namespace

// In a process of its own: bgfx remembers the mode for the rest of the process.
TEST_F(ContextTest, SingleThreadedModeTellsBgfxBeforeItStarts) {
    EXPECT_EXIT(StartSingleThreaded(Options(ThreadMode::SingleThreaded)), testing::ExitedWithCode(0), "");
}
