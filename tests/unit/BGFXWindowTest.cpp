// The window target: its surface, size, viewport, signals and log lines.
#include <zx3DQt/BGFXWindow.h>

#include <zx3DQt/Library.h>

#include <Fixtures.h>
#include <LogCapture.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QPlatformSurfaceEvent>
#include <QSignalSpy>

#include <algorithm>
#include <optional>
#include <type_traits>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

class BGFXWindowTest : public LibraryFixture {
protected:
    static void Send(BGFXWindow& window, QEvent&& event) { QCoreApplication::sendEvent(&window, &event); }

    static void SendSurface(BGFXWindow& window, QPlatformSurfaceEvent::SurfaceEventType type) {
        Send(window, QPlatformSurfaceEvent(type));
    }

    /// A window that had its surface, and whose size can be 0: platform windows insist on one pixel.
    static void CreateWithoutPlatformWindow(BGFXWindow& window) {
        window.create();
        window.destroy();
    }

    static QResizeEvent ResizeOf(BGFXWindow const& window) { return {window.size(), QSize()}; }

    /// The trace line of a handler.
    static std::string Handling(char const* eventClass, BGFXWindow const& window, QEvent const* event) {
        return Streamed("BGFXWindow", "::", eventClass, "[this:", static_cast<void const*>(&window), "]",
                        "[objectName:", window.objectName(), "]", "[event: ", event, "]");
    }

    static std::string Geometry(char const* prefix, BGFXWindow const& window) {
        return Streamed(prefix, "[size:", window.size(), "]", "[geometry:", window.geometry(), "]",
                        "[frameGeometry:", window.frameGeometry(), "]",
                        "[pixelRatio: ", window.devicePixelRatio(), "]");
    }

    /// A line about the frame buffer: its window in Qt's form, and its handle.
    static std::string FrameBufferLine(char const* prefix, BGFXWindow const& window) {
        return Streamed(prefix, static_cast<QWindow const*>(&window), "]",
                        "[handle: ", window.GetFrameBuffer().GetHandle().idx, "]");
    }

    static QMouseEvent Mouse(QEvent::Type type) {
        return {type, QPointF(1, 2), QPointF(1, 2), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier};
    }

    static QWheelEvent Wheel() {
        return {QPointF(1, 2), QPointF(1, 2),  QPoint(0, 3),      QPoint(0, 120),
                Qt::NoButton,  Qt::NoModifier, Qt::NoScrollPhase, false};
    }
};

constexpr char kSkipping[] = "Skipping early framebuffer update (not initialized yet) [this:";

} // namespace

TEST_F(BGFXWindowTest, ConstructionLogsCreatesNothingAndNamesTheWindow) {
    LogCapture const log;
    BGFXWindow const window;
    EXPECT_EQ(window.objectName(), "BGFXWindow");
    EXPECT_TRUE(window.GetViewport().isNull());
    EXPECT_EQ(window.GetViewport(), QRect());
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    EXPECT_FALSE(window.GetFrameBuffer().IsSized());
    EXPECT_EQ(window.GetRenderer().parent(), nullptr);
    EXPECT_EQ(window.surfaceType(), QWindow().surfaceType());
    EXPECT_EQ(window.parent(), nullptr);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(log.Texts(),
                ElementsAre(Streamed("Creating BGFXRenderer [this: ",
                                     static_cast<void const*>(&window.GetRenderer()), "]"),
                            Streamed("Creating BGFXWindow [this: ", static_cast<void const*>(&window), "]")));
}

TEST_F(BGFXWindowTest, AParentIsPassedOn) {
    QWindow parent;
    BGFXWindow const window(&parent);
    EXPECT_EQ(window.parent(), &parent);
}

TEST_F(BGFXWindowTest, DestructionLogsAndDestroysTheMembers) {
    LogCapture log;
    auto window = std::make_unique<BGFXWindow>();
    void const* const address = window.get();
    void const* const renderer = &window->GetRenderer();
    log.Clear();
    window.reset();
    EXPECT_THAT(log.Texts(), ElementsAre(Streamed("Destroying BGFXWindow [this: ", address, "]"),
                                         Streamed("Destroying BGFXRenderer [this: ", renderer, "]")));
}

TEST_F(BGFXWindowTest, TheMetaObjectHasItsSignalsAndSlotsInOrder) {
    QMetaObject const& meta = BGFXWindow::staticMetaObject;
    EXPECT_STREQ(meta.className(), "zarvex::zx3DQt::BGFXWindow");
    EXPECT_EQ(meta.superClass(), &QWindow::staticMetaObject);
    std::vector<std::pair<std::string, QMetaMethod::MethodType>> const expected{
        {"keyPressedEvent(QKeyEvent*)", QMetaMethod::Signal},
        {"mouseMovedEvent(QMouseEvent*)", QMetaMethod::Signal},
        {"mouseClickedEvent(QMouseEvent*)", QMetaMethod::Signal},
        {"mouseReleasedEvent(QMouseEvent*)", QMetaMethod::Signal},
        {"mouseDoubleClickedEvent(QMouseEvent*)", QMetaMethod::Signal},
        {"wheelEvent(QWheelEvent*)", QMetaMethod::Signal},
        {"updateFrameBufferEvent(zarvex::zx3DQt::UpdateFrameBufferEvent*)", QMetaMethod::Slot},
        {"updateViewPortEvent(zarvex::zx3DQt::UpdateViewportEvent*)", QMetaMethod::Slot}};
    std::vector<std::pair<std::string, QMetaMethod::MethodType>> actual;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        actual.emplace_back(meta.method(i).methodSignature().toStdString(), meta.method(i).methodType());
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(BGFXWindow::tr("text"), "text");
}

TEST_F(BGFXWindowTest, InvokingTheWheelSignalThroughTheMetaObjectEmitsIt) {
    BGFXWindow window;
    int emitted = 0;
    QObject::connect(&window, &BGFXWindow::wheelEvent, [&emitted] { ++emitted; });
    QWheelEvent wheel = Wheel();
    ASSERT_TRUE(QMetaObject::invokeMethod(&window, "wheelEvent", Q_ARG(QWheelEvent*, &wheel)));
    EXPECT_EQ(emitted, 1);
}

TEST_F(BGFXWindowTest, CreatingTheSurfaceBindsTheFrameBufferToTheWindow) {
    BGFXWindow window;
    window.resize(200, 100);
    LogCapture const log;
    window.create();
    std::vector<std::string> const texts = log.Texts();
    auto const first = std::ranges::find_if(
        texts, [](std::string const& text) { return text.starts_with("Initializing framebuffer"); });
    ASSERT_GE(texts.end() - first, 3);
    EXPECT_EQ(first[0],
              Streamed("Initializing framebuffer [this:", static_cast<QWindow const*>(&window), "]"));
    EXPECT_EQ(first[1], Streamed("Creating frame buffer [nwh:", window.winId(), "]"));
    EXPECT_EQ(first[2], Streamed("Frame buffer initialized [handle:", quint16(65535), "]"));
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 0u) << "only when a frame starts";
}

TEST_F(BGFXWindowTest, TheFrameBufferIsBGRA8AndD16OnTheNativeWindow) {
    BGFXWindow window;
    window.resize(200, 100);
    window.create();
    Send(window, ResizeOf(window));
    window.GetFrameBuffer().SubmitOnDemand();
    char handle[32];
    std::snprintf(handle, sizeof(handle), "0x%llx", static_cast<unsigned long long>(window.winId()));
    EXPECT_EQ(recorder::CallsNamed("createFrameBuffer").at(0).arguments,
              "window:" + std::string(handle) + ", 200, 100, BGRA8, D16");
    window.destroy();
}

TEST_F(BGFXWindowTest, ASecondSurfaceCreatedBindsNothing) {
    BGFXWindow window;
    window.create();
    LogCapture const log;
    SendSurface(window, QPlatformSurfaceEvent::SurfaceCreated);
    EXPECT_THAT(log.Texts(), Not(Contains(StartsWith("Initializing framebuffer"))));
    EXPECT_THAT(log.Texts(), SizeIs(1)) << "the trace line only";
}

TEST_F(BGFXWindowTest, AResizeBeforeTheSurfaceIsSkipped) {
    BGFXWindow window;
    window.SetViewport(QRect(1, 2, 3, 4));
    LogCapture const log;
    Send(window, QResizeEvent(QSize(30, 40), QSize()));
    EXPECT_THAT(log.Texts(), Contains(FrameBufferLine(kSkipping, window)));
    EXPECT_THAT(log.Texts(), Not(Contains(StartsWith("Updating framebuffer"))));
    EXPECT_EQ(window.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_FALSE(window.GetFrameBuffer().IsSized());
}

TEST_F(BGFXWindowTest, AnExposureBeforeTheSurfaceIsSkipped) {
    BGFXWindow window;
    LogCapture const log;
    QExposeEvent expose(QRegion(0, 0, 10, 10));
    window.exposeEvent(&expose);
    EXPECT_EQ(log.Texts(), (std::vector<std::string>{Handling("QExposeEvent", window, &expose),
                                                     Geometry("BGFXWindow ", window),
                                                     FrameBufferLine(kSkipping, window)}));
    EXPECT_TRUE(window.GetViewport().isNull());
}

TEST_F(BGFXWindowTest, AResizeLogsItsSteps) {
    BGFXWindow window;
    window.resize(200, 100);
    window.create();
    QResizeEvent resize = ResizeOf(window);
    LogCapture const log;
    window.resizeEvent(&resize);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", window, &resize),
                                         Geometry("Resizing BGFXWindow ", window),
                                         FrameBufferLine("Updating framebuffer [this:", window),
                                         Geometry("Resized BGFXWindow ", window)));
    for (LogLine const& line : log.Lines()) {
        EXPECT_EQ(line.level, QtDebugMsg);
        EXPECT_EQ(line.category, "zarvex.zx3dqt");
        EXPECT_FALSE(line.hasContext);
    }
}

TEST_F(BGFXWindowTest, AResizeMakesViewportAndFrameBufferFollow) {
    BGFXWindow window;
    window.create();
    window.resize(320, 200);
    Send(window, ResizeOf(window));
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 320, 200));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 320);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 200);
}

TEST_F(BGFXWindowTest, AnExposureMakesViewportAndFrameBufferFollow) {
    BGFXWindow window;
    window.create();
    window.resize(320, 200);
    window.SetViewport(QRect());
    QExposeEvent expose(QRegion(0, 0, 10, 10));
    LogCapture const log;
    window.exposeEvent(&expose);
    EXPECT_THAT(log.Texts(),
                ElementsAre(Handling("QExposeEvent", window, &expose), Geometry("BGFXWindow ", window),
                            FrameBufferLine("Updating framebuffer [this:", window)));
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 320, 200));
}

TEST_F(BGFXWindowTest, AWindowWithoutWidthCollapsesAndStillUpdates) {
    BGFXWindow window;
    CreateWithoutPlatformWindow(window);
    window.resize(0, 50);
    LogCapture const log;
    QResizeEvent resize = ResizeOf(window);
    window.resizeEvent(&resize);
    ASSERT_EQ(window.size(), QSize(0, 50));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", window, &resize),
                                         Geometry("Resizing BGFXWindow ", window),
                                         FrameBufferLine("Collapsing framebuffer [this:", window),
                                         FrameBufferLine("Updating framebuffer [this:", window),
                                         Geometry("Resized BGFXWindow ", window)));
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 0, 50));
    EXPECT_TRUE(window.GetViewport().isEmpty());
    EXPECT_TRUE(window.GetFrameBuffer().IsSized());
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 0);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 50);
}

TEST_F(BGFXWindowTest, AWindowWithoutHeightCollapses) {
    BGFXWindow window;
    CreateWithoutPlatformWindow(window);
    window.resize(50, 0);
    LogCapture const log;
    Send(window, ResizeOf(window));
    EXPECT_THAT(log.Texts(), Contains(FrameBufferLine("Collapsing framebuffer [this:", window)));
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 0);
}

TEST_F(BGFXWindowTest, BeforeItsSurfaceGoesTheFrameBufferIsDestroyed) {
    BGFXWindow window;
    window.resize(200, 100);
    window.create();
    Send(window, ResizeOf(window));
    window.GetFrameBuffer().SubmitOnDemand();
    ASSERT_TRUE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
    recorder::ClearCalls();
    window.destroy();
    EXPECT_EQ(recorder::CallTexts().at(0), "destroy(frameBuffer#0)");
    EXPECT_FALSE(bgfx::isValid(window.GetFrameBuffer().GetHandle()));
}

TEST_F(BGFXWindowTest, ALaterSurfaceIsNotBoundAgainAndSizesStillFollow) {
    BGFXWindow window;
    window.create();
    window.destroy();
    LogCapture const log;
    window.create();
    EXPECT_THAT(log.Texts(), Not(Contains(StartsWith("Initializing framebuffer"))));
    window.resize(77, 33);
    Send(window, ResizeOf(window));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 77);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 33);
}

TEST_F(BGFXWindowTest, TheDestructorAloneDestroysNoFrameBuffer) {
    {
        BGFXWindow window;
        window.resize(200, 100);
        window.create();
        Send(window, ResizeOf(window));
        window.GetFrameBuffer().SubmitOnDemand();
        recorder::ClearCalls();
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
}

TEST_F(BGFXWindowTest, WithTheCategorySilencedNothingIsLogged) {
    QLoggingCategory::setFilterRules("zarvex.zx3dqt.debug=false");
    LogCapture const log;
    {
        BGFXWindow window;
        window.create();
        Send(window, ResizeOf(window));
    }
    QLoggingCategory::setFilterRules("");
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_F(BGFXWindowTest, SetFrameBufferReplacesACopyAndDestroysNothing) {
    BGFXWindow window;
    window.resize(200, 100);
    window.create();
    Send(window, ResizeOf(window));
    window.GetFrameBuffer().SubmitOnDemand();
    zx3D::FrameBuffer old = window.GetFrameBuffer();
    zx3D::FrameBuffer other(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    other.RequestResize(8, 4);
    recorder::ClearCalls();
    window.SetFrameBuffer(other);
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 8);
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
    EXPECT_TRUE(bgfx::isValid(old.GetHandle()));
    old.Destroy();
}

TEST_F(BGFXWindowTest, SetViewportReplacesTheViewport) {
    BGFXWindow window;
    window.SetViewport(QRect(1, 2, 3, 4));
    EXPECT_EQ(window.GetViewport(), QRect(1, 2, 3, 4));
    window.GetViewport().setWidth(9);
    EXPECT_EQ(window.GetViewport().width(), 9);
}

TEST_F(BGFXWindowTest, MouseAndKeyEventsAreEmittedOnceAndPassedOn) {
    BGFXWindow window;
    QSignalSpy keyPressed(&window, &BGFXWindow::keyPressedEvent);
    QSignalSpy moved(&window, &BGFXWindow::mouseMovedEvent);
    QSignalSpy clicked(&window, &BGFXWindow::mouseClickedEvent);
    QSignalSpy released(&window, &BGFXWindow::mouseReleasedEvent);
    QSignalSpy doubleClicked(&window, &BGFXWindow::mouseDoubleClickedEvent);
    auto const counts = [&] {
        return std::array<qsizetype, 5>{keyPressed.count(), moved.count(), clicked.count(), released.count(),
                                        doubleClicked.count()};
    };
    Send(window, QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier));
    EXPECT_THAT(counts(), ElementsAre(1, 0, 0, 0, 0));
    Send(window, Mouse(QEvent::MouseMove));
    EXPECT_THAT(counts(), ElementsAre(1, 1, 0, 0, 0));
    Send(window, Mouse(QEvent::MouseButtonPress));
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 0, 0));
    Send(window, Mouse(QEvent::MouseButtonRelease));
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 1, 0));
    Send(window, Mouse(QEvent::MouseButtonDblClick));
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 1, 1));
    Send(window, QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier));
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 1, 1)) << "key releases are not republished";
}

namespace {

/// Notes which of QWindow's handlers are reached, and when.
class HandlerWindow : public BGFXWindow {
public:
    std::vector<std::string> order;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        order.emplace_back("handler");
        BGFXWindow::mousePressEvent(event);
    }
};

} // namespace

TEST_F(BGFXWindowTest, TheSignalComesBeforeQWindowsOwnHandler) {
    HandlerWindow window;
    QObject::connect(&window, &BGFXWindow::mouseClickedEvent, [&] { window.order.emplace_back("signal"); });
    Send(window, Mouse(QEvent::MouseButtonPress));
    EXPECT_THAT(window.order, ElementsAre("signal", "handler"));
}

TEST_F(BGFXWindowTest, TheSignalCarriesTheEventItself) {
    BGFXWindow window;
    QMouseEvent press = Mouse(QEvent::MouseButtonPress);
    QMouseEvent* received = nullptr;
    QObject::connect(&window, &BGFXWindow::mouseClickedEvent, [&](QMouseEvent* event) { received = event; });
    window.event(&press);
    EXPECT_EQ(received, &press);
}

TEST_F(BGFXWindowTest, TheResultIsThatOfQWindow) {
    BGFXWindow window;
    QWindow plain;
    QMouseEvent press = Mouse(QEvent::MouseButtonPress);
    QEvent user(QEvent::User);
    EXPECT_EQ(window.event(&press), static_cast<QObject&>(plain).event(&press));
    EXPECT_EQ(window.event(&user), static_cast<QObject&>(plain).event(&user));
}

TEST_F(BGFXWindowTest, AWheelEventGivesOneSignalAndNoHandlingOfQWindow) {
    BGFXWindow window;
    int emitted = 0;
    QObject::connect(&window, &BGFXWindow::wheelEvent, [&emitted] { ++emitted; });
    QWheelEvent wheel = Wheel();
    wheel.accept();
    window.event(&wheel);
    EXPECT_EQ(emitted, 1);
    EXPECT_TRUE(wheel.isAccepted()) << "QWindow's handler would have ignored it";
}

TEST_F(BGFXWindowTest, EveryEventIsTraced) {
    BGFXWindow window;
    QEvent user(QEvent::User);
    LogCapture const log;
    window.event(&user);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QEvent", window, &user)));
}

TEST_F(BGFXWindowTest, TraceLinesNameTheObjectAsItIsNamedNow) {
    BGFXWindow window;
    window.setObjectName("Main \"view\"");
    QEvent user(QEvent::User);
    LogCapture const log;
    window.event(&user);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QEvent", window, &user)));
    EXPECT_THAT(log.Texts(), ElementsAre(HasSubstr("Main")));
}

TEST_F(BGFXWindowTest, UpdateFrameBufferEventUsesTheWindowsOwnSize) {
    BGFXWindow window;
    window.create();
    window.resize(320, 200);
    window.SetViewport(QRect());
    UpdateFrameBufferEvent event(QSize(1, 1));
    LogCapture const log;
    window.updateFrameBufferEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(0, 0, 320, 200));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 320);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("UpdateFrameBufferEvent", window, &event),
                                         FrameBufferLine("Updating framebuffer [this:", window)));
}

TEST_F(BGFXWindowTest, UpdateViewPortEventTakesTheBoundsAndLeavesTheFrameBuffer) {
    BGFXWindow window;
    window.create();
    window.resize(320, 200);
    Send(window, ResizeOf(window));
    recorder::ClearCalls();
    UpdateViewportEvent event(QRegion(10, 20, 30, 40) + QRegion(100, 5, 2, 2));
    LogCapture const log;
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(10, 5, 92, 55));
    EXPECT_EQ(window.GetFrameBuffer().GetWidth(), 320);
    EXPECT_EQ(window.GetFrameBuffer().GetHeight(), 200);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("UpdateViewportEvent", window, &event)));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXWindowTest, UpdateViewPortEventWorksBeforeTheSurface) {
    BGFXWindow window;
    UpdateViewportEvent event(QRegion(10, 20, 30, 40));
    window.updateViewPortEvent(&event);
    EXPECT_EQ(window.GetViewport(), QRect(10, 20, 30, 40));
}

TEST_F(BGFXWindowTest, UpdateViewPortEventWithoutARegionThrows) {
    BGFXWindow window;
    window.SetViewport(QRect(1, 2, 3, 4));
    UpdateViewportEvent event;
    LogCapture const log;
    try {
        window.updateViewPortEvent(&event);
        FAIL() << "nothing was thrown";
    } catch (std::bad_optional_access const& exception) {
        EXPECT_STREQ(exception.what(), std::bad_optional_access().what());
    }
    EXPECT_EQ(window.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("UpdateViewportEvent", window, &event)));
}

TEST_F(BGFXWindowTest, NativeEventsAreLeftToQWindow) {
    BGFXWindow window;
    qintptr result = 0;
    EXPECT_FALSE(window.nativeEvent("type", nullptr, &result));
}

TEST_F(BGFXWindowTest, AWindowThatOutlivesShutdownMakesNoCall) {
    auto window = std::make_unique<BGFXWindow>();
    window->resize(200, 100);
    window->create();
    Send(*window, ResizeOf(*window));
    ASSERT_TRUE(window->GetRenderer().StartFrame(window->GetFrameBuffer()));
    Shutdown();
    recorder::ClearCalls();
    window.reset();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    ExpectLeaks(); // the renderer's uniforms went with bgfx
}

TEST_F(BGFXWindowTest, ItHasOneSampleAndADepthOfSixteenBitsUntilToldOtherwise) {
    BGFXWindow window;
    EXPECT_EQ(window.GetSampleCount(), 1u);
    EXPECT_EQ(window.GetDepthFormat(), bgfx::TextureFormat::D16);
    EXPECT_EQ(window.GetFrameBuffer().GetOptions(), zx3D::FrameBufferOptions());
    window.SetSampleCount(4);
    window.create();
    EXPECT_EQ(window.GetFrameBuffer().GetOptions().sampleCount, 4u) << "of the one on the surface, too";
    window.SetDepthFormat(bgfx::TextureFormat::D32F);
    EXPECT_EQ(window.GetDepthFormat(), bgfx::TextureFormat::D32F);
    EXPECT_EQ(window.GetFrameBuffer().GetOptions(),
              (zx3D::FrameBufferOptions{.sampleCount = 4, .depthFormat = bgfx::TextureFormat::D32F}));
}
