// Init, Shutdown and the back-buffer widget.
#include <zx3DQt/Library.h>

#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>
#include <zx3DQt/BGFXDefaultCallback.h>

#include <Fixtures.h>

#include <LogCapture.h>
#include <Warnings.h>

#include <QColor>
#include <QWidget>

#include <functional>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Tells when it is deleted.
class MortalCallback : public BGFXDefaultCallback {
public:
    explicit MortalCallback(std::function<void()> onDeath) : m_onDeath(std::move(onDeath)) {}
    ~MortalCallback() override { m_onDeath(); }

private:
    std::function<void()> m_onDeath;
};

class LibraryTest : public RecordedTest {
protected:
    void TearDown() override {
        Shutdown();
        RecordedTest::TearDown();
    }
};

} // namespace

TEST_F(LibraryTest, InitStartsBgfxOnAHiddenWidgetOf64Pixels) {
    ASSERT_TRUE(Init(false));
    QWidget* const widget = GetBackBufferWidget();
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(widget->geometry(), QRect(0, 0, 64, 64));
    EXPECT_TRUE(widget->isHidden());
    EXPECT_TRUE(widget->sizePolicy().retainSizeWhenHidden());
    EXPECT_EQ(widget->parent(), nullptr);
    EXPECT_EQ(widget->metaObject(), &QWidget::staticMetaObject);

    bgfx::Init const init = *recorder::LastInit();
    EXPECT_EQ(init.platformData.nwh, reinterpret_cast<void*>(widget->winId()));
    EXPECT_EQ(init.resolution.width, 64u);
    EXPECT_EQ(init.resolution.height, 64u);
}

namespace {

/// Calls the library while it stops.
class CallAtStop : public zx3D::ContextListener {
public:
    explicit CallAtStop(std::function<void()> call) : m_call(std::move(call)) {}

private:
    void OnContextStopping() override { m_call(); }

    std::function<void()> m_call;
};

} // namespace

TEST_F(LibraryTest, WhoeverIsToldOfTheStopMayCallTheLibrary) {
    int calls = 0;
    CallAtStop const listener([&calls] {
        ClearBackBufferWidget(Qt::red);
        EXPECT_TRUE(Init(false)) << "it still runs";
        Shutdown();
        ++calls;
    });
    ASSERT_TRUE(Init(false));
    Shutdown();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(GetBackBufferWidget(), nullptr);
    EXPECT_EQ(recorder::CountCalls("touch"), 1u);
    ASSERT_TRUE(Init(false));
}

TEST_F(LibraryTest, TheOptionsHoldTheFlagAndThreadModeZero) {
    ASSERT_TRUE(Init(true));
    EXPECT_TRUE(GetZx3DContextOptions().verticalSync);
    EXPECT_EQ(int(GetZx3DContextOptions().threadMode), 0);
    Shutdown();
    ASSERT_TRUE(Init(false));
    EXPECT_FALSE(GetZx3DContextOptions().verticalSync);
}

TEST_F(LibraryTest, TheOptionsAreThoseOfTheContext) {
    ASSERT_TRUE(Init(false));
    EXPECT_EQ(&GetZx3DContextOptions(), &zx3D::Context::GetOptions());
    EXPECT_EQ(GetZx3DContextOptions().nativeWindowHandle,
              reinterpret_cast<void*>(GetBackBufferWidget()->winId()));
}

TEST_F(LibraryTest, TheCallersCallbackIsInstalled) {
    auto callback = std::make_unique<BGFXDefaultCallback>();
    bgfx::CallbackI* const address = callback.get();
    ASSERT_TRUE(Init(false, std::move(callback)));
    EXPECT_EQ(recorder::LastInit()->callback, address);
}

TEST_F(LibraryTest, WithoutACallbackADefaultOneIsInstalled) {
    ASSERT_TRUE(Init(false, nullptr));
    EXPECT_NE(dynamic_cast<BGFXDefaultCallback*>(recorder::LastInit()->callback), nullptr);
}

TEST_F(LibraryTest, WithTheDefaultCallbackAFatalErrorEndsTheApplication) {
    auto const failInBgfx = [] {
        Init(false);
        recorder::LastInit()->callback->fatal("bgfx.cpp", 1, bgfx::Fatal::UnableToInitialize, "no GPU");
    };
    EXPECT_EXIT(failInBgfx(), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(LibraryTest, ASecondInitIsTrueDeletesItsCallbackAndKeepsTheFirst) {
    int deaths = 0;
    auto first = std::make_unique<BGFXDefaultCallback>();
    bgfx::CallbackI* const address = first.get();
    ASSERT_TRUE(Init(false, std::move(first)));
    QWidget* const widget = GetBackBufferWidget();
    EXPECT_TRUE(Init(true, std::make_unique<MortalCallback>([&deaths] { ++deaths; })));
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(recorder::CountCalls("init"), 1u);
    EXPECT_EQ(GetZx3DContextOptions().callback, address);
    EXPECT_FALSE(GetZx3DContextOptions().verticalSync);
    EXPECT_EQ(GetBackBufferWidget(), widget);
}

TEST_F(LibraryTest, AFailedInitCountsAsInitialised) {
    ExpectWarning("context.not-started");
    int deaths = 0;
    Configure([](recorder::Settings& settings) { settings.failingInits = 1; });
    EXPECT_FALSE(Init(false, std::make_unique<MortalCallback>([&deaths] { ++deaths; })));
    EXPECT_NE(GetBackBufferWidget(), nullptr);
    EXPECT_EQ(deaths, 0);
    EXPECT_TRUE(Init(false));
    EXPECT_EQ(recorder::CountCalls("init"), 1u);
    EXPECT_NE(GetBackBufferWidget(), nullptr);
    Shutdown();
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(GetBackBufferWidget(), nullptr);
}

TEST_F(LibraryTest, ShutdownStopsTheContextFirstThenFreesTheWidgetAndLastTheCallback) {
    std::vector<std::string> order;
    auto const recordState = [&order](std::string const& when) {
        order.push_back(when + (recorder::IsRunning() ? " running" : " stopped") +
                        (GetBackBufferWidget() != nullptr ? " widget" : " no widget"));
    };
    ASSERT_TRUE(Init(false, std::make_unique<MortalCallback>([&] { recordState("callback gone:"); })));
    QObject::connect(GetBackBufferWidget(), &QObject::destroyed, [&] {
        order.emplace_back(recorder::IsRunning() ? "widget gone early" : "widget gone");
    });
    Shutdown();
    EXPECT_THAT(order, ElementsAre("widget gone", "callback gone: stopped no widget"));
}

TEST_F(LibraryTest, WhenBgfxStopsWidgetAndCallbackAreThere) {
    bool callbackLives = true;
    bool sawWidget = false;
    bool sawCallback = false;
    ASSERT_TRUE(Init(false, std::make_unique<MortalCallback>([&] { callbackLives = false; })));
    std::function<void()> look = [&] {
        sawWidget = GetBackBufferWidget() != nullptr;
        sawCallback = callbackLives;
    };
    // bgfx lets this memory go when it stops, and calls back.
    std::uint16_t const index = 0;
    auto const release = [](void*, void* userData) { (*static_cast<std::function<void()>*>(userData))(); };
    bgfx::destroy(bgfx::createIndexBuffer(bgfx::makeRef(&index, sizeof(index), release, &look)));
    Shutdown();
    EXPECT_TRUE(sawWidget);
    EXPECT_TRUE(sawCallback);
    EXPECT_FALSE(callbackLives);
}

TEST_F(LibraryTest, ShutdownWithoutInitDoesNothing) {
    Shutdown();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(GetBackBufferWidget(), nullptr);
}

TEST_F(LibraryTest, ShutdownTwiceStopsOnce) {
    ASSERT_TRUE(Init(false));
    Shutdown();
    Shutdown();
    EXPECT_EQ(recorder::CountCalls("shutdown"), 1u);
}

TEST_F(LibraryTest, InitAfterShutdownStartsAgain) {
    ASSERT_TRUE(Init(false));
    Shutdown();
    EXPECT_EQ(GetBackBufferWidget(), nullptr);
    ASSERT_TRUE(Init(false));
    EXPECT_NE(GetBackBufferWidget(), nullptr);
    EXPECT_EQ(recorder::CountCalls("init"), 2u);
}

TEST_F(LibraryTest, InitAndShutdownLogNothing) {
    LogCapture const log;
    ASSERT_TRUE(Init(false));
    Shutdown();
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_F(LibraryTest, ClearBackBufferWidgetClearsViewZeroOfTheBackBuffer) {
    ASSERT_TRUE(Init(false));
    recorder::ClearCalls();
    ClearBackBufferWidget(QColor(255, 0, 0, 128));
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("setViewFrameBuffer(0, frameBuffer#invalid)",
                                                   "setViewClear(0, 0x3, 0xff000080, 1, 0)", "touch(0)"));
}

TEST_F(LibraryTest, TheClearColourTakesEveryChannel) {
    ASSERT_TRUE(Init(false));
    recorder::ClearCalls();
    ClearBackBufferWidget(QColor(1, 2, 3, 4));
    EXPECT_EQ(recorder::CallsNamed("setViewClear").at(0).Text(), "setViewClear(0, 0x3, 0x1020304, 1, 0)");
}
