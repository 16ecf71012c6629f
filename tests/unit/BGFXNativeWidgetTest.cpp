// The native widget: its embedded window, the relays between the two, its log lines, and pictures of it.
#include <zx3DQt/BGFXNativeWidget.h>

#include <zx3DQt/Library.h>

#include <Fixtures.h>
#include <LogCapture.h>
#include <Picture.h>
#include <PrivateMember.h>
#include <TopLevels.h>
#include <Warnings.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QPlatformSurfaceEvent>
#include <QPointer>
#include <QScreen>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

struct WindowMember {
    using Type = std::unique_ptr<BGFXWindow> BGFXNativeWidget::*;
};
template struct Reveal<WindowMember, &BGFXNativeWidget::m_window>;

struct ContainerMember {
    using Type = std::unique_ptr<QWidget> BGFXNativeWidget::*;
};
template struct Reveal<ContainerMember, &BGFXNativeWidget::m_container>;

namespace {

constexpr std::uint64_t kBlit = BGFX_CAPS_TEXTURE_BLIT;
constexpr std::uint64_t kReadBack = BGFX_CAPS_TEXTURE_READ_BACK;

/// A widget as an application derives it, which draws what it is told to and notes what it receives.
class Widget : public BGFXNativeWidget {
public:
    explicit Widget(QWidget* parent = nullptr, Qt::WindowFlags flags = {})
        : BGFXNativeWidget(parent, flags) {}
    ~Widget() override = default;

    using BGFXNativeWidget::ConnectRenderTargetWindowSignals;
    using BGFXNativeWidget::DisconnectRenderTargetWindowSignals;
    using BGFXNativeWidget::eventFilter;
    using BGFXNativeWidget::GetPixelRatio;

    BGFXWindow& Window() { return *(this->*Revealed<WindowMember>::pointer); }
    QWidget& Container() { return *(this->*Revealed<ContainerMember>::pointer); }

    bool event(QEvent* event) override {
        received.push_back(event->type());
        if (onEvent)
            onEvent(*event);
        return BGFXNativeWidget::event(event);
    }

    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        ++paints;
        if (draw)
            draw(event);
    }

    [[nodiscard]] auto Received(QEvent::Type type) const { return std::ranges::count(received, type); }

    std::vector<QEvent::Type> received;
    std::function<void(QEvent&)> onEvent;
    std::function<void(QPaintEvent*)> draw;
    int paints = 0;
};

class BGFXNativeWidgetTest : public LibraryFixture {
protected:
    static bool Send(QObject& receiver, QEvent&& event) {
        return QCoreApplication::sendEvent(&receiver, &event);
    }

    /// The trace line of a handler.
    static std::string Handling(char const* eventClass, Widget const& widget, QEvent const* event) {
        return Streamed("BGFXNativeWidget", "::", eventClass, "[this:", Address(widget), "]",
                        "[objectName:", widget.objectName(), "]", "[event: ", event, "]");
    }

    /// The trace line of a handler of the embedded window.
    static std::string WindowHandling(char const* eventClass, BGFXWindow const& window, QEvent const* event) {
        return Streamed("BGFXWindow", "::", eventClass, "[this:", static_cast<void const*>(&window), "]",
                        "[objectName:", window.objectName(), "]", "[event: ", event, "]");
    }

    /// A line of the event filter.
    static std::string Filtering(char const* prefix, Widget const& widget, QObject const& watched,
                                 QEvent const* event) {
        return Streamed(prefix, Address(widget), "]", "[receiver: ", &watched, "]", "[event: ", event, "]");
    }

    static void const* Address(Widget const& widget) { return static_cast<BGFXNativeWidget const*>(&widget); }

    static QMouseEvent Mouse(QEvent::Type type, Qt::MouseButton button = Qt::LeftButton) {
        return {type, QPointF(10, 20), QPointF(110, 120), button, button, Qt::ControlModifier};
    }

    static QWheelEvent Wheel() {
        return {QPointF(1, 2), QPointF(1, 2),  QPoint(0, 3),      QPoint(0, 120),
                Qt::NoButton,  Qt::NoModifier, Qt::NoScrollPhase, false};
    }

    static std::string NativeHandle(BGFXWindow const& window) {
        char text[32];
        std::snprintf(text, sizeof(text), "window:0x%llx", static_cast<unsigned long long>(window.winId()));
        return text;
    }

    static QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
        return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
    }

    static std::vector<std::string> Warnings(LogCapture const& log) {
        std::vector<std::string> texts;
        for (LogLine const& line : log.Lines()) {
            if (line.level == QtWarningMsg)
                texts.push_back(line.text);
        }
        return texts;
    }
};

/// With the widget, 200 × 100, at (10, 20) of a shown window, all paints done.
class ShownNativeWidgetTest : public BGFXNativeWidgetTest {
protected:
    void SetUp() override {
        BGFXNativeWidgetTest::SetUp();
        m_top = std::make_unique<QWidget>();
        m_top->resize(300, 200);
        m_widget = new Widget(m_top.get());
        m_widget->setGeometry(10, 20, 200, 100);
        m_top->show();
        Settle();
        ASSERT_TRUE(m_widget->Window().isExposed());
        ForgetThePast();
    }

    void TearDown() override {
        m_top.reset();
        BGFXNativeWidgetTest::TearDown();
    }

    void ForgetThePast() {
        recorder::ClearCalls();
        m_widget->received.clear();
        m_widget->paints = 0;
    }

    BGFXWindow& Window() { return m_widget->Window(); }

    /// The bgfx object of the frame buffer exists, as after the first frame.
    void CreateFrameBufferObject() {
        m_widget->GetFrameBuffer().SubmitOnDemand();
        ASSERT_TRUE(bgfx::isValid(m_widget->GetFrameBuffer().GetHandle()));
        recorder::ClearCalls();
    }

    std::unique_ptr<QWidget> m_top;
    Widget* m_widget = nullptr;
};

} // namespace

// Construction and destruction.

TEST_F(BGFXNativeWidgetTest, ConstructionIsLoggedBeforeTheWindowIsCreated) {
    LogCapture const log;
    Widget widget;
    std::vector<std::string> const texts = log.Texts();
    ASSERT_THAT(texts, SizeIs(testing::Gt(3u)));
    EXPECT_EQ(texts[0], Streamed("Creating BGFXNativeWidget [this: ", Address(widget), "]"));
    EXPECT_THAT(texts, Contains(Streamed(
                           "Creating BGFXWindow [this: ", static_cast<void const*>(&widget.Window()), "]")));
    for (LogLine const& line : log.Lines()) {
        EXPECT_EQ(line.level, QtDebugMsg) << line;
        EXPECT_EQ(line.category, "zarvex.zx3dqt");
        EXPECT_FALSE(line.hasContext);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXNativeWidgetTest, ConstructionNamesTheWidgetAndSetsItsAttributes) {
    Widget const widget;
    EXPECT_EQ(widget.objectName(), "BGFXNativeWidget");
    EXPECT_TRUE(widget.testAttribute(Qt::WA_NoSystemBackground));
    EXPECT_TRUE(widget.testAttribute(Qt::WA_PaintOnScreen));
    EXPECT_TRUE(widget.testAttribute(Qt::WA_OpaquePaintEvent));
    EXPECT_EQ(widget.focusPolicy(), Qt::StrongFocus);
}

TEST_F(BGFXNativeWidgetTest, ParentAndFlagsArePassedOn) {
    QWidget parent;
    Widget const child(&parent);
    EXPECT_EQ(child.parentWidget(), &parent);
    EXPECT_FALSE(child.isWindow());
    Widget const tool(&parent, Qt::Tool | Qt::WindowStaysOnTopHint);
    EXPECT_EQ(tool.windowType(), Qt::Tool);
    EXPECT_TRUE(tool.windowFlags() & Qt::WindowStaysOnTopHint);
}

TEST_F(BGFXNativeWidgetTest, TheOnlyChildIsTheContainerInALayoutWithoutMargins) {
    QWidget parent;
    Widget widget(&parent);
    EXPECT_THAT(widget.findChildren<QWidget*>(Qt::FindDirectChildrenOnly), ElementsAre(&widget.Container()));
    auto const* const layout = qobject_cast<QVBoxLayout*>(widget.layout());
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(layout->contentsMargins(), QMargins());
    ASSERT_EQ(layout->count(), 1);
    EXPECT_EQ(layout->itemAt(0)->widget(), &widget.Container());
    EXPECT_EQ(layout->stretch(0), 0);
    EXPECT_EQ(layout->itemAt(0)->alignment(), Qt::Alignment());
    EXPECT_THAT(parent.findChildren<QWidget*>(Qt::FindDirectChildrenOnly),
                ElementsAre(static_cast<QWidget*>(&widget)))
        << "the container has moved to the widget";
}

TEST_F(BGFXNativeWidgetTest, TheContainerHasNoFrameAndTheWidgetsFlags) {
    Widget plain;
    EXPECT_TRUE(plain.Container().windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(plain.Container().windowFlags() & Qt::CustomizeWindowHint);
    EXPECT_FALSE(plain.Container().windowFlags() & Qt::WindowStaysOnTopHint);
    Widget onTop(nullptr, Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(onTop.Container().windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_FALSE(onTop.Container().isWindow());
}

TEST_F(BGFXNativeWidgetTest, WindowAndContainerEmitAndUpdate) {
    Widget widget;
    EXPECT_FALSE(widget.Window().signalsBlocked());
    EXPECT_FALSE(widget.Container().signalsBlocked());
    EXPECT_TRUE(widget.Container().updatesEnabled());
    EXPECT_TRUE(widget.updatesEnabled());
}

TEST_F(BGFXNativeWidgetTest, TheKeyboardFocusIsTheWidgetsAlone) {
    Widget widget;
    EXPECT_TRUE(widget.Window().flags() & Qt::WindowDoesNotAcceptFocus);
    EXPECT_EQ(widget.Container().focusPolicy(), Qt::NoFocus);
}

TEST_F(BGFXNativeWidgetTest, DestructionDeletesTheContainerAndTheWindowOnce) {
    auto widget = std::make_unique<Widget>();
    QPointer<QWidget> const container(&widget->Container());
    BGFXWindow* const window = &widget->Window();
    QPointer<QWindow> const guard(window);
    std::string const destroying =
        Streamed("Destroying BGFXWindow [this: ", static_cast<void const*>(window), "]");
    LogCapture const log;
    widget.reset();
    EXPECT_TRUE(container.isNull());
    EXPECT_TRUE(guard.isNull());
    EXPECT_EQ(std::ranges::count(log.Texts(), destroying), 1);
}

TEST_F(BGFXNativeWidgetTest, ItIsQtThatDeletesTheContainer) {
    auto widget = std::make_unique<Widget>();
    std::vector<std::string> order;
    QObject::connect(widget.get(), &QObject::destroyed, [&] { order.emplace_back("widget"); });
    QObject::connect(&widget->Container(), &QObject::destroyed, [&] { order.emplace_back("container"); });
    QObject::connect(&widget->Window(), &QObject::destroyed, [&] { order.emplace_back("window"); });
    widget.reset();
    EXPECT_THAT(order, ElementsAre("widget", "window", "container"));
}

TEST_F(ShownNativeWidgetTest, DeletingTheWidgetWhileShownLeavesNothingBehind) {
    ASSERT_TRUE(m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer()));
    delete m_widget;
    Settle();
    Shutdown();
    EXPECT_THAT(recorder::Errors(), IsEmpty());
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

TEST_F(ShownNativeWidgetTest, AWidgetThatOutlivesShutdownMakesNoCall) {
    ASSERT_TRUE(m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer()));
    Shutdown();
    recorder::ClearCalls();
    m_widget->resize(50, 40);
    m_widget->hide();
    m_widget->show();
    Settle();
    delete m_widget;
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    ExpectLeaks(); // the renderer's uniforms went with bgfx
}

// Members and meta-object.

TEST_F(BGFXNativeWidgetTest, RendererFrameBufferAndViewportAreTheWindows) {
    Widget widget;
    Widget const& constant = widget;
    EXPECT_EQ(&widget.GetRenderer(), &widget.Window().GetRenderer());
    EXPECT_EQ(&constant.GetRenderer(), &widget.Window().GetRenderer());
    EXPECT_EQ(&widget.GetFrameBuffer(), &widget.Window().GetFrameBuffer());
    EXPECT_EQ(&constant.GetFrameBuffer(), &widget.Window().GetFrameBuffer());
    EXPECT_EQ(&widget.GetViewport(), &widget.Window().GetViewport());
    EXPECT_EQ(&constant.GetViewport(), &widget.Window().GetViewport());
}

TEST_F(ShownNativeWidgetTest, SetFrameBufferCopiesAndDestroysNothing) {
    CreateFrameBufferObject();
    zx3D::FrameBuffer old = m_widget->GetFrameBuffer();
    zx3D::FrameBuffer other(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    other.RequestResize(8, 4);
    m_widget->SetFrameBuffer(other);
    EXPECT_EQ(SizeOf(Window().GetFrameBuffer()), QSize(8, 4));
    EXPECT_TRUE(bgfx::isValid(old.GetHandle()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    old.Destroy();
}

TEST_F(BGFXNativeWidgetTest, SetViewportReplacesTheWindows) {
    Widget widget;
    widget.SetViewport(QRect(1, 2, 3, 4));
    EXPECT_EQ(widget.Window().GetViewport(), QRect(1, 2, 3, 4));
}

TEST_F(BGFXNativeWidgetTest, TheMetaObjectHasTwoSignalsAndNothingElse) {
    QMetaObject const& meta = BGFXNativeWidget::staticMetaObject;
    EXPECT_STREQ(meta.className(), "zarvex::zx3DQt::BGFXNativeWidget");
    EXPECT_EQ(meta.superClass(), &QWidget::staticMetaObject);
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    QMetaMethod const first = meta.method(meta.methodOffset());
    QMetaMethod const second = meta.method(meta.methodOffset() + 1);
    EXPECT_EQ(first.methodSignature(), "updateFrameBufferEvent(zarvex::zx3DQt::UpdateFrameBufferEvent*)");
    EXPECT_EQ(second.methodSignature(), "updateViewPortEvent(zarvex::zx3DQt::UpdateViewportEvent*)");
    EXPECT_EQ(first.methodType(), QMetaMethod::Signal);
    EXPECT_EQ(second.methodType(), QMetaMethod::Signal);
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(BGFXNativeWidget::tr("text"), "text");
}

TEST_F(BGFXNativeWidgetTest, ThePixelRatioIsTheScreens) {
    Widget const widget;
    ASSERT_NE(widget.screen(), nullptr);
    EXPECT_EQ(widget.GetPixelRatio(), std::max(widget.screen()->devicePixelRatio(), 1.0));
}

TEST_F(BGFXNativeWidgetTest, ThereIsNoPaintEngineAndNoWarningAboutIt) {
    Widget const widget;
    LogCapture const log;
    EXPECT_EQ(widget.paintEngine(), nullptr);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(BGFXNativeWidgetTest, NativeEventsAreLeftToQWidget) {
    Widget widget;
    qintptr result = 0;
    EXPECT_FALSE(widget.nativeEvent("type", nullptr, &result));
}

TEST_F(BGFXNativeWidgetTest, WithTheCategorySilencedNothingIsLogged) {
    QLoggingCategory::setFilterRules("zarvex.zx3dqt.debug=false");
    LogCapture const log;
    {
        QWidget top;
        Widget widget(&top);
        top.show();
        Settle();
        top.hide();
    }
    QLoggingCategory::setFilterRules("");
    EXPECT_THAT(log.Texts(), IsEmpty());
}

// Connections.

namespace {

class ConnectingWidget : public Widget {
public:
    static inline int connections = 0;

protected:
    void ConnectRenderTargetWindowSignals() override { ++connections; }
};

} // namespace

TEST_F(BGFXNativeWidgetTest, TheConstructorMakesItsOwnConnectionsNotThoseOfASubclass) {
    ConnectingWidget::connections = 0;
    ConnectingWidget widget;
    EXPECT_EQ(ConnectingWidget::connections, 0);
    Send(widget.Window(), QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier));
    EXPECT_EQ(widget.Received(QEvent::KeyPress), 1);
}

TEST_F(BGFXNativeWidgetTest, BothUpdatesReachTheWindowAtOnce) {
    Widget widget;
    UpdateFrameBufferEvent sizeUpdate(QSize(3, 4));
    UpdateViewportEvent viewportUpdate(QRegion(1, 2, 3, 4));
    LogCapture const log;
    emit widget.updateFrameBufferEvent(&sizeUpdate);
    emit widget.updateViewPortEvent(&viewportUpdate);
    std::vector<std::string> const texts = log.Texts();
    ASSERT_THAT(texts, SizeIs(3));
    EXPECT_EQ(texts[0], WindowHandling("UpdateFrameBufferEvent", widget.Window(), &sizeUpdate));
    EXPECT_THAT(texts[1], StartsWith("Skipping early framebuffer update"));
    EXPECT_EQ(texts[2], WindowHandling("UpdateViewportEvent", widget.Window(), &viewportUpdate));
    EXPECT_EQ(widget.GetViewport(), QRect(1, 2, 3, 4));
}

namespace {

/// The input events that the window republishes.
std::vector<std::shared_ptr<QEvent>> RepublishedInput() {
    std::vector<std::shared_ptr<QEvent>> events{
        std::make_shared<QKeyEvent>(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a")};
    for (QEvent::Type const type : {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                    QEvent::MouseButtonDblClick}) {
        events.push_back(std::make_shared<QMouseEvent>(type, QPointF(1, 2), QPointF(1, 2), Qt::LeftButton,
                                                       Qt::LeftButton, Qt::NoModifier));
    }
    events.push_back(std::make_shared<QWheelEvent>(QPointF(1, 2), QPointF(1, 2), QPoint(0, 3), QPoint(0, 120),
                                                   Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false));
    return events;
}

/// Notes which of QWidget's input handlers are reached.
class InputWidget : public Widget {
public:
    std::vector<std::string> handled;

protected:
    void keyPressEvent(QKeyEvent* event) override { Note("key", event); }
    void mouseMoveEvent(QMouseEvent* event) override { Note("move", event); }
    void mousePressEvent(QMouseEvent* event) override { Note("press", event); }
    void mouseReleaseEvent(QMouseEvent* event) override { Note("release", event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { Note("double click", event); }
    void wheelEvent(QWheelEvent* event) override { Note("wheel", event); }

private:
    void Note(char const* handler, QEvent* event) {
        handled.emplace_back(handler);
        event->accept();
    }
};

} // namespace

TEST_F(BGFXNativeWidgetTest, EveryInputEventOfTheWindowReachesEventOnce) {
    for (std::shared_ptr<QEvent> const& event : RepublishedInput()) {
        Widget widget;
        int signalled = 0;
        QObject::connect(&widget.Window(), &BGFXWindow::keyPressedEvent, [&] { ++signalled; });
        std::vector<QEvent*> arrived;
        widget.onEvent = [&](QEvent& received) {
            if (received.isInputEvent())
                arrived.push_back(&received);
        };
        QCoreApplication::sendEvent(&widget.Window(), event.get());
        EXPECT_THAT(arrived, ElementsAre(event.get())) << "type " << event->type();
        EXPECT_EQ(signalled, event->type() == QEvent::KeyPress ? 1 : 0);
    }
}

TEST_F(BGFXNativeWidgetTest, EveryInputEventOfTheWindowReachesItsHandlerOnce) {
    InputWidget widget;
    for (std::shared_ptr<QEvent> const& event : RepublishedInput())
        QCoreApplication::sendEvent(&widget.Window(), event.get());
    EXPECT_THAT(widget.handled, ElementsAre("key", "move", "press", "release", "double click", "wheel"));
}

TEST_F(BGFXNativeWidgetTest, InputIsTracedByTheFilterTheWindowAndTheWidget) {
    Widget widget;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    LogCapture const log;
    QCoreApplication::sendEvent(&widget.Window(), &press);
    EXPECT_THAT(log.Texts(),
                ElementsAre(Filtering("Intercepted event [this:", widget, widget.Window(), &press),
                            Filtering("Forwarding intercepted event [this:", widget, widget.Window(), &press),
                            WindowHandling("QEvent", widget.Window(), &press),
                            Handling("QEvent", widget, &press)));
}

TEST_F(ShownNativeWidgetTest, DisconnectingStopsSizesAndViewports) {
    m_widget->DisconnectRenderTargetWindowSignals();
    QSignalSpy const sizes(m_widget, &BGFXNativeWidget::updateFrameBufferEvent);
    QRect const viewport = m_widget->GetViewport();
    UpdateFrameBufferEvent sizeUpdate(QSize(3, 4));
    UpdateViewportEvent viewportUpdate(QRegion(1, 2, 3, 4));
    LogCapture const log;
    emit m_widget->updateFrameBufferEvent(&sizeUpdate);
    emit m_widget->updateViewPortEvent(&viewportUpdate);
    EXPECT_THAT(log.Texts(), IsEmpty());
    EXPECT_EQ(m_widget->GetViewport(), viewport);
    EXPECT_EQ(sizes.count(), 1) << "other receivers still hear of them";
}

TEST_F(BGFXNativeWidgetTest, DisconnectingLeavesTheInput) {
    InputWidget widget;
    widget.DisconnectRenderTargetWindowSignals();
    for (std::shared_ptr<QEvent> const& event : RepublishedInput())
        QCoreApplication::sendEvent(&widget.Window(), event.get());
    EXPECT_THAT(widget.handled, ElementsAre("key", "move", "press", "release", "double click", "wheel"));
}

TEST_F(BGFXNativeWidgetTest, ConnectingAgainAfterDisconnectingRestoresTheUpdates) {
    Widget widget;
    widget.DisconnectRenderTargetWindowSignals();
    widget.ConnectRenderTargetWindowSignals();
    UpdateViewportEvent viewportUpdate(QRegion(1, 2, 3, 4));
    emit widget.updateViewPortEvent(&viewportUpdate);
    EXPECT_EQ(widget.GetViewport(), QRect(1, 2, 3, 4));
}

// The event filter.

TEST_F(BGFXNativeWidgetTest, BeforeTheExposurePaintEventsAreSwallowed) {
    Widget widget;
    ASSERT_FALSE(widget.Window().isExposed());
    QSignalSpy const sizes(&widget, &BGFXNativeWidget::updateFrameBufferEvent);
    QSignalSpy const viewports(&widget, &BGFXNativeWidget::updateViewPortEvent);
    QObject* const watched[] = {&widget.Container(), &widget.Window()};
    for (QObject* const object : watched) {
        QPaintEvent paint(QRect(1, 2, 3, 4));
        LogCapture const log;
        EXPECT_TRUE(widget.eventFilter(object, &paint));
        EXPECT_THAT(log.Texts(),
                    ElementsAre(Filtering("Intercepted event [this:", widget, *object, &paint),
                                Filtering("Skipping early paint event [this:", widget, *object, &paint)));
    }
    EXPECT_EQ(sizes.count(), 0);
    EXPECT_EQ(viewports.count(), 0);
    EXPECT_TRUE(widget.GetViewport().isNull());
}

TEST_F(BGFXNativeWidgetTest, BeforeTheExposureAPaintEventNeverReachesTheContainer) {
    Widget widget;
    QPaintEvent paint(QRect(1, 2, 3, 4));
    LogCapture const log;
    EXPECT_TRUE(QCoreApplication::sendEvent(&widget.Container(), &paint)) << "the filter is installed";
    EXPECT_THAT(log.Texts(), SizeIs(2));
}

TEST_F(BGFXNativeWidgetTest, OtherEventsAreForwarded) {
    Widget widget;
    QObject* const watched[] = {&widget.Container(), &widget.Window()};
    for (QObject* const object : watched) {
        QEvent user(QEvent::User);
        LogCapture const log;
        EXPECT_FALSE(widget.eventFilter(object, &user));
        EXPECT_THAT(log.Texts(),
                    ElementsAre(Filtering("Intercepted event [this:", widget, *object, &user),
                                Filtering("Forwarding intercepted event [this:", widget, *object, &user)));
    }
}

TEST_F(BGFXNativeWidgetTest, TheFilterSitsOnWindowAndContainer) {
    Widget widget;
    QObject* const watched[] = {&widget.Container(), &widget.Window()};
    for (QObject* const object : watched) {
        QEvent user(QEvent::User);
        LogCapture const log;
        QCoreApplication::sendEvent(object, &user);
        EXPECT_THAT(log.Texts(), Contains(Filtering("Intercepted event [this:", widget, *object, &user)));
    }
}

TEST_F(ShownNativeWidgetTest, AfterTheExposureAPaintEventGivesOneUpdateOfEachKindAndGoesOn) {
    QRegion const region = QRegion(10, 20, 30, 40) + QRegion(100, 50, 2, 2);
    std::vector<std::string> order;
    QObject::connect(m_widget, &BGFXNativeWidget::updateFrameBufferEvent, [&](UpdateFrameBufferEvent* event) {
        order.emplace_back("size");
        EXPECT_EQ(event->maybeSize(), QSize(92, 40)) << "of the event's rectangle";
        EXPECT_EQ(m_widget->GetViewport(), QRect(0, 0, 200, 100)) << "the window followed first";
    });
    QObject::connect(m_widget, &BGFXNativeWidget::updateViewPortEvent, [&](UpdateViewportEvent* event) {
        order.emplace_back("viewport");
        EXPECT_EQ(event->maybeRegion(), region);
    });
    QObject* const watched[] = {&m_widget->Container(), &Window()};
    for (QObject* const object : watched) {
        order.clear();
        m_widget->SetViewport(QRect());
        QPaintEvent paint(region);
        EXPECT_FALSE(m_widget->eventFilter(object, &paint));
        EXPECT_THAT(order, ElementsAre("size", "viewport"));
        EXPECT_EQ(m_widget->GetViewport(), region.boundingRect());
        EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    }
}

TEST_F(ShownNativeWidgetTest, AProcessedPaintEventIsLoggedBeforeItsUpdates) {
    QPaintEvent paint(QRect(1, 2, 3, 4));
    LogCapture const log;
    m_widget->eventFilter(&m_widget->Container(), &paint);
    std::vector<std::string> const texts = log.Texts();
    ASSERT_THAT(texts, SizeIs(5));
    EXPECT_EQ(texts[0], Filtering("Intercepted event [this:", *m_widget, m_widget->Container(), &paint));
    EXPECT_EQ(texts[1], Filtering("Processing paint event [this:", *m_widget, m_widget->Container(), &paint));
    EXPECT_THAT(texts[2], StartsWith("BGFXWindow :: UpdateFrameBufferEvent"));
    EXPECT_THAT(texts[3], StartsWith("Updating framebuffer [this:"));
    EXPECT_THAT(texts[4], StartsWith("BGFXWindow :: UpdateViewportEvent"));
}

TEST_F(ShownNativeWidgetTest, WhenItsWindowIsUncoveredTheWidgetPaints) {
    QPaintEvent paint(QRect(1, 2, 3, 4));
    m_widget->eventFilter(&Window(), &paint);
    Settle();
    EXPECT_EQ(m_widget->paints, 1);
}

TEST_F(ShownNativeWidgetTest, APaintOfTheContainerAloneAsksForNoFrame) {
    QPaintEvent paint(QRect(1, 2, 3, 4));
    m_widget->eventFilter(&m_widget->Container(), &paint);
    Settle();
    EXPECT_EQ(m_widget->paints, 0);
}

TEST_F(ShownNativeWidgetTest, APaintOfTheContainerThatFindsAnotherSizeAsksForAFrame) {
    m_widget->GetFrameBuffer().RequestResize(199, 100);
    QPaintEvent paint(QRect(1, 2, 3, 4));
    m_widget->eventFilter(&m_widget->Container(), &paint);
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    Settle();
    EXPECT_EQ(m_widget->paints, 1);
}

TEST_F(ShownNativeWidgetTest, AResizeIsOnePaint) {
    for (int i = 1; i <= 30; ++i) {
        m_widget->resize(100 + i, 90);
        Settle();
        EXPECT_EQ(m_widget->paints, i);
    }
}

TEST_F(ShownNativeWidgetTest, AnUpdateIsOnePaint) {
    for (int i = 1; i <= 5; ++i) {
        m_widget->update();
        m_widget->update();
        Settle();
        EXPECT_EQ(m_widget->paints, i);
    }
}

TEST_F(ShownNativeWidgetTest, AResizeOfTheWindowAsksForAFrame) {
    Send(Window(), QResizeEvent(Window().size(), QSize()));
    Settle();
    EXPECT_EQ(m_widget->paints, 1);
}

TEST_F(ShownNativeWidgetTest, EventsOfTheContainerChangeNothing) {
    QResizeEvent resize(QSize(200, 100), QSize());
    QMouseEvent press = Mouse(QEvent::MouseButtonPress, Qt::RightButton);
    m_widget->eventFilter(&m_widget->Container(), &resize);
    m_widget->eventFilter(&m_widget->Container(), &press);
    Settle();
    EXPECT_EQ(m_widget->paints, 0);
    EXPECT_EQ(m_widget->Received(QEvent::ContextMenu), 0);
    EXPECT_FALSE(m_widget->hasFocus());
}

// Focus, context menu, cursor.

TEST_F(ShownNativeWidgetTest, APressTakesTheFocus) {
    m_top->activateWindow();
    Settle();
    ASSERT_FALSE(m_widget->hasFocus());
    Send(Window(), Mouse(QEvent::MouseButtonPress));
    EXPECT_TRUE(m_widget->hasFocus());
}

TEST_F(ShownNativeWidgetTest, TheFocusComesByTheMouse) {
    Qt::FocusReason reason = Qt::OtherFocusReason;
    m_widget->onEvent = [&](QEvent& event) {
        if (event.type() == QEvent::FocusIn)
            reason = static_cast<QFocusEvent&>(event).reason();
    };
    m_top->activateWindow();
    Settle();
    Send(Window(), Mouse(QEvent::MouseButtonPress));
    EXPECT_EQ(reason, Qt::MouseFocusReason);
}

TEST_F(ShownNativeWidgetTest, APressLeavesTheFocusWhereTheWidgetDoesNotWantIt) {
    m_top->activateWindow();
    for (Qt::FocusPolicy const policy : {Qt::NoFocus, Qt::TabFocus}) {
        m_widget->setFocusPolicy(policy);
        Send(Window(), Mouse(QEvent::MouseButtonPress));
        EXPECT_FALSE(m_widget->hasFocus());
    }
}

TEST_F(ShownNativeWidgetTest, APressActivatesTheTopLevelWindow) {
    QWidget other;
    other.show();
    other.activateWindow();
    Settle();
    ASSERT_FALSE(m_widget->isActiveWindow());
    Send(Window(), Mouse(QEvent::MouseButtonPress));
    Settle();
    EXPECT_TRUE(m_widget->isActiveWindow());
    EXPECT_TRUE(m_widget->hasFocus());
}

TEST_F(ShownNativeWidgetTest, AMoveOrAReleaseTakesNoFocus) {
    m_top->activateWindow();
    Settle();
    for (QEvent::Type const type : {QEvent::MouseMove, QEvent::MouseButtonRelease})
        Send(Window(), Mouse(type));
    EXPECT_FALSE(m_widget->hasFocus());
}

TEST_F(ShownNativeWidgetTest, ARightPressAsksForAContextMenuAfterThePress) {
    std::vector<QEvent::Type> order;
    m_widget->onEvent = [&](QEvent& event) {
        if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::ContextMenu)
            order.push_back(event.type());
        if (event.type() == QEvent::ContextMenu) {
            auto const& menu = static_cast<QContextMenuEvent&>(event);
            EXPECT_EQ(menu.reason(), QContextMenuEvent::Mouse);
            EXPECT_EQ(menu.pos(), QPoint(10, 20));
            EXPECT_EQ(menu.globalPos(), QPoint(110, 120));
            EXPECT_EQ(menu.modifiers(), Qt::ControlModifier);
        }
    };
    Send(Window(), Mouse(QEvent::MouseButtonPress, Qt::RightButton));
    EXPECT_THAT(order, ElementsAre(QEvent::MouseButtonPress));
    Settle();
    EXPECT_THAT(order, ElementsAre(QEvent::MouseButtonPress, QEvent::ContextMenu));
}

TEST_F(ShownNativeWidgetTest, OtherPressesAskForNoContextMenu) {
    Send(Window(), Mouse(QEvent::MouseButtonPress, Qt::LeftButton));
    Send(Window(), Mouse(QEvent::MouseButtonPress, Qt::MiddleButton));
    Send(Window(), Mouse(QEvent::MouseButtonRelease, Qt::RightButton));
    Settle();
    EXPECT_EQ(m_widget->Received(QEvent::ContextMenu), 0);
}

TEST_F(BGFXNativeWidgetTest, TheWindowShowsTheWidgetsCursor) {
    Widget widget;
    widget.setCursor(Qt::CrossCursor);
    EXPECT_EQ(widget.Window().cursor().shape(), Qt::CrossCursor);
    widget.unsetCursor();
    EXPECT_EQ(widget.Window().cursor().shape(), Qt::ArrowCursor);
}

// Handlers.

TEST_F(BGFXNativeWidgetTest, EveryEventIsTracedAndLeftToQWidget) {
    Widget widget;
    QWidget plain;
    QEvent user(QEvent::User);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    LogCapture const log;
    EXPECT_EQ(widget.event(&user), static_cast<QObject&>(plain).event(&user));
    EXPECT_EQ(widget.event(&press), static_cast<QObject&>(plain).event(&press));
    EXPECT_THAT(log.Texts(),
                ElementsAre(Handling("QEvent", widget, &user), Handling("QEvent", widget, &press)));
}

TEST_F(BGFXNativeWidgetTest, TraceLinesNameTheObjectAsItIsNamedNow) {
    Widget widget;
    widget.setObjectName("Main \"view\"");
    QEvent user(QEvent::User);
    LogCapture const log;
    widget.event(&user);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QEvent", widget, &user)));
    EXPECT_THAT(log.Texts(), ElementsAre(testing::HasSubstr("Main")));
}

TEST_F(ShownNativeWidgetTest, PaintingDrawsIntoTheWholeFrameBufferWhateverPartIsAskedFor) {
    m_widget->SetViewport(QRect(1, 2, 3, 4));
    QPaintEvent paint(QRect(5, 6, 7, 8));
    LogCapture const log;
    m_widget->paintEvent(&paint);
    EXPECT_EQ(m_widget->GetViewport(), QRect(0, 0, 200, 100));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QPaintEvent", *m_widget, &paint)));
}

TEST_F(ShownNativeWidgetTest, PaintingWithoutAnEventLeavesTheViewport) {
    m_widget->SetViewport(QRect(1, 2, 3, 4));
    LogCapture const log;
    m_widget->paintEvent(nullptr);
    EXPECT_EQ(m_widget->GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QPaintEvent", *m_widget, nullptr)));
}

TEST_F(ShownNativeWidgetTest, AResizeIsTracedAndRelayedWithItsNewSize) {
    QSignalSpy const viewports(m_widget, &BGFXNativeWidget::updateViewPortEvent);
    std::vector<std::optional<QSize>> sizes;
    QObject::connect(m_widget, &BGFXNativeWidget::updateFrameBufferEvent,
                     [&](UpdateFrameBufferEvent* event) { sizes.push_back(event->maybeSize()); });
    QResizeEvent resize(QSize(30, 40), QSize(50, 60));
    LogCapture const log;
    m_widget->resizeEvent(&resize);
    EXPECT_THAT(sizes, ElementsAre(QSize(30, 40)));
    EXPECT_EQ(viewports.count(), 0);
    std::vector<std::string> const texts = log.Texts();
    ASSERT_THAT(texts, SizeIs(3));
    EXPECT_EQ(texts[0], Handling("QResizeEvent", *m_widget, &resize));
    EXPECT_THAT(texts[1], StartsWith("BGFXWindow :: UpdateFrameBufferEvent"));
    EXPECT_THAT(texts[2], StartsWith("Updating framebuffer [this:"));
}

TEST_F(ShownNativeWidgetTest, AResizeWithoutAnEventIsRelayedWithoutASize) {
    std::vector<std::optional<QSize>> sizes;
    QObject::connect(m_widget, &BGFXNativeWidget::updateFrameBufferEvent,
                     [&](UpdateFrameBufferEvent* event) { sizes.push_back(event->maybeSize()); });
    m_widget->resizeEvent(nullptr);
    EXPECT_THAT(sizes, ElementsAre(std::nullopt));
}

TEST_F(ShownNativeWidgetTest, FrameBufferAndViewportFollowTheWidgetsSize) {
    m_widget->resize(120, 90);
    Settle();
    EXPECT_EQ(m_widget->Container().size(), QSize(120, 90));
    EXPECT_EQ(Window().size(), QSize(120, 90));
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(120, 90));
    EXPECT_EQ(m_widget->GetViewport(), QRect(0, 0, 120, 90));
    EXPECT_GE(m_widget->paints, 1);
}

TEST_F(BGFXNativeWidgetTest, ShowingIsTraced) {
    Widget widget;
    QShowEvent show;
    LogCapture const log;
    widget.showEvent(&show);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QShowEvent", widget, &show)));
}

TEST_F(BGFXNativeWidgetTest, HidingIsTracedAsAFocusEvent) {
    Widget widget;
    QHideEvent hide;
    LogCapture const log;
    widget.hideEvent(&hide);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QFocusEvent", widget, &hide)));
}

TEST_F(ShownNativeWidgetTest, HidingRepaintsTheFirstTopLevelWidgetAtOnce) {
    QWidget other;
    ShowAllTopLevels();
    PaintedTopLevels const painted;
    QHideEvent hide;
    m_widget->hideEvent(&hide);
    EXPECT_THAT(painted.Get(), ElementsAre(QApplication::topLevelWidgets().at(0)));
}

TEST_F(BGFXNativeWidgetTest, HidingWithoutAnyTopLevelWidgetIsHarmless) {
    Widget widget;
    widget.overrideWindowFlags(Qt::Desktop); // the one kind that does not count
    Shutdown();
    ASSERT_THAT(QApplication::topLevelWidgets(), IsEmpty());
    QHideEvent hide;
    LogCapture const log;
    widget.hideEvent(&hide);
    EXPECT_THAT(log.Texts(), SizeIs(1));
}

// The surface.

TEST_F(ShownNativeWidgetTest, TheFrameBufferIsOnTheWindowInItsSize) {
    m_widget->GetFrameBuffer().SubmitOnDemand();
    EXPECT_EQ(recorder::CallsNamed("createFrameBuffer").at(0).arguments,
              NativeHandle(Window()) + ", 200, 100, BGRA8, D16");
}

TEST_F(ShownNativeWidgetTest, WhenTheSurfaceGoesItsFrameBufferIsDestroyed) {
    CreateFrameBufferObject();
    Window().destroy();
    EXPECT_EQ(recorder::CallTexts().at(0), "destroy(frameBuffer#0)");
    EXPECT_FALSE(bgfx::isValid(m_widget->GetFrameBuffer().GetHandle()));
}

TEST_F(ShownNativeWidgetTest, ANewSurfaceIsBoundInTheRightSize) {
    CreateFrameBufferObject();
    WId const first = Window().winId();
    Window().destroy();
    QSignalSpy const sizes(m_widget, &BGFXNativeWidget::updateFrameBufferEvent);
    Window().create();
    EXPECT_EQ(sizes.count(), 1);
    ASSERT_NE(Window().winId(), first);
    recorder::ClearCalls();
    m_widget->GetFrameBuffer().SubmitOnDemand();
    EXPECT_EQ(recorder::CallsNamed("createFrameBuffer").at(0).arguments,
              NativeHandle(Window()) + ", 200, 100, BGRA8, D16");
    EXPECT_EQ(m_widget->GetViewport(), QRect(0, 0, 200, 100));
}

TEST_F(ShownNativeWidgetTest, SurfacesMayComeAndGoManyTimes) {
    for (int i = 0; i < 5; ++i) {
        CreateFrameBufferObject();
        Window().destroy();
        Window().create();
    }
    CreateFrameBufferObject();
    EXPECT_THAT(recorder::Alive(), Contains(StartsWith("frameBuffer#")).Times(1));
}

TEST_F(BGFXNativeWidgetTest, TheFirstSurfaceIsLeftToTheWindow) {
    QWidget top;
    Widget* const widget = new Widget(&top);
    QSignalSpy const sizes(widget, &BGFXNativeWidget::updateFrameBufferEvent);
    LogCapture const log;
    widget->Window().create();
    EXPECT_EQ(sizes.count(), 0);
    EXPECT_THAT(log.Texts(), Contains(StartsWith("Initializing framebuffer [this:")).Times(1));
    EXPECT_THAT(log.Texts(), Not(Contains(StartsWith("Updating framebuffer [this:"))));
}

// Pictures.

TEST_F(ShownNativeWidgetTest, APictureTakesTheseCallsInThisOrder) {
    CreateFrameBufferObject();
    m_widget->draw = [](QPaintEvent*) { bgfx::touch(7); };
    m_widget->RenderPixmap(32, 16);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("destroy(frameBuffer#0)", "frame(false)", "frame(false)", // the surface is free
                            StartsWith("createTexture2D(32, 16, false, 1, RGBA8, "),
                            StartsWith("createTexture2D(32, 16, false, 1, D16, "),
                            "createFrameBuffer(texture#0, texture#1, true)",
                            "createTexture2D(32, 16, false, 1, RGBA8, 0xc00000000000)",
                            "touch(7)", // paintEvent
                            "getTexture(frameBuffer#0, 0)",
                            "blit(254, texture#2, 0, 0, texture#0, 0, 0, 65535, 65535)",
                            "readTexture(texture#2, 0)", "frame(false)", "frame(false)", "frame(false)",
                            "destroy(texture#2)", "destroy(frameBuffer#0)"));
}

TEST_F(ShownNativeWidgetTest, FramesAreSubmittedUntilTheOneThatThePictureIsReadyIn) {
    recorder::SetNextFrameNumber(10);
    for (std::uint32_t const latency : {0, 1, 2, 3, 4, 5}) {
        Configure([latency](auto& settings) { settings.readLatency = latency; });
        Picture const picture;
        picture.Deliver();
        recorder::ClearCalls();
        QPixmap const pixmap = m_widget->RenderPixmap(32, 16);
        picture.ExpectIn(pixmap.toImage());
        EXPECT_EQ(recorder::CountCalls("frame"), latency + 1);
    }
}

TEST_F(ShownNativeWidgetTest, ThePictureIsWhatWasDrawn) {
    Picture const picture;
    picture.Deliver();
    QPixmap const pixmap = m_widget->RenderPixmap(32, 16);
    ASSERT_EQ(pixmap.size(), QSize(32, 16));
    EXPECT_EQ(pixmap.devicePixelRatio(), 1.0);
    picture.ExpectIn(pixmap.toImage());
}

TEST_F(ShownNativeWidgetTest, ThePictureIsTurnedWhereTheOriginIsAtTheBottom) {
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    Picture const picture;
    picture.Deliver();
    picture.ExpectFlippedIn(m_widget->RenderPixmap(33, 17).toImage());
}

TEST_F(ShownNativeWidgetTest, AnOpaqueSceneIsOpaqueAndATransparentOneStaysTransparent) {
    Picture(255).Deliver();
    EXPECT_EQ(m_widget->RenderPixmap(5, 3).toImage().pixelColor(4, 2).alpha(), 255);
    Picture(0).Deliver();
    EXPECT_EQ(m_widget->RenderPixmap(5, 3).toImage().pixelColor(4, 2).alpha(), 0);
}

TEST_F(ShownNativeWidgetTest, TheSceneIsDrawnOnceIntoAFrameBufferOfThePicturesSize) {
    m_widget->SetViewport(QRect(1, 2, 3, 4));
    m_widget->draw = [this](QPaintEvent* event) {
        EXPECT_EQ(event, nullptr);
        EXPECT_EQ(m_widget->GetViewport(), QRect(0, 0, 32, 16));
        EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(32, 16));
        EXPECT_TRUE(bgfx::isValid(m_widget->GetFrameBuffer().GetHandle()));
    };
    m_widget->RenderPixmap(32, 16);
    EXPECT_EQ(m_widget->paints, 1);
}

TEST_F(ShownNativeWidgetTest, AfterThePictureViewportAndFrameBufferAreAsBefore) {
    CreateFrameBufferObject();
    m_widget->SetViewport(QRect(1, 2, 3, 4));
    m_widget->draw = [this](QPaintEvent*) {
        m_widget->SetViewport(QRect(9, 9, 9, 9));
        m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer());
    };
    m_widget->RenderPixmap(32, 16);
    EXPECT_EQ(m_widget->GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    recorder::ClearCalls();
    m_widget->GetFrameBuffer().SubmitOnDemand();
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createFrameBuffer(" + NativeHandle(Window()) + ", 200, 100, BGRA8, D16)"))
        << "the window's surface again, in its size";
}

TEST_F(ShownNativeWidgetTest, AfterThePictureTheWidgetAsksForAFrame) {
    m_widget->RenderPixmap(32, 16);
    ASSERT_EQ(m_widget->paints, 1);
    Settle();
    EXPECT_EQ(m_widget->paints, 2);
}

TEST_F(ShownNativeWidgetTest, AFrameBufferThatTheSceneExchangesIsReadAndKept) {
    zx3D::FrameBuffer own(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    own.RequestResize(32, 16);
    own.SubmitOnDemand();
    std::string const texture = "texture#" + std::to_string(bgfx::getTexture(own.GetHandle(), 0).idx);
    m_widget->draw = [&](QPaintEvent*) { m_widget->SetFrameBuffer(own); };
    std::vector<std::string> const alive = recorder::Alive();
    m_widget->RenderPixmap(32, 16);
    EXPECT_THAT(recorder::CallsNamed("blit").at(0).arguments, testing::HasSubstr(texture));
    EXPECT_EQ(recorder::Alive(), alive) << "the temporary is gone, the scene's own is not";
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    own.Destroy();
}

TEST_F(ShownNativeWidgetTest, WithoutATextureToReadThePictureHasItsSizeAndNothingIsRead) {
    ExpectWarning("picture.not-taken");
    m_widget->draw = [this](QPaintEvent*) { m_widget->GetFrameBuffer().Destroy(); };
    EXPECT_EQ(m_widget->RenderPixmap(32, 16).size(), QSize(32, 16));
    EXPECT_EQ(recorder::CountCalls("getTexture"), 0u);
    EXPECT_EQ(recorder::CountCalls("blit"), 0u);
    EXPECT_EQ(recorder::CountCalls("readTexture"), 0u);
}

TEST_F(ShownNativeWidgetTest, WithoutATextureToReadBackFromNothingIsReadAndNothingLost) {
    ExpectWarning("picture.not-taken");
    m_widget->draw = [](QPaintEvent*) {};
    TextureHog const hog(2); // enough for a frame buffer
    std::vector<std::string> const alive = recorder::Alive();
    EXPECT_EQ(m_widget->RenderPixmap(32, 16).size(), QSize(32, 16));
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), 3u);
    EXPECT_EQ(recorder::CountCalls("blit"), 0u);
    EXPECT_EQ(recorder::Alive(), alive);
}

TEST_F(ShownNativeWidgetTest, APictureThatCannotBeTakenIsTransparentAndAWarning) {
    m_widget->draw = [this](QPaintEvent*) { m_widget->GetFrameBuffer().Destroy(); };
    LogCapture const log;
    QImage const picture = m_widget->RenderPixmap(32, 16).toImage();
    ASSERT_EQ(picture.size(), QSize(32, 16));
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x)
            ASSERT_EQ(picture.pixelColor(x, y), QColor(0, 0, 0, 0)) << x << ", " << y;
    }
    EXPECT_THAT(Warnings(log),
                ElementsAre("a picture of 32 x 16 pixels could not be taken [picture.not-taken]"));
}

TEST_F(ShownNativeWidgetTest, AnExceptionFromTheSceneRestoresEverything) {
    CreateFrameBufferObject();
    m_widget->SetViewport(QRect(1, 2, 3, 4));
    m_widget->draw = [](QPaintEvent*) { throw std::runtime_error("no"); };
    EXPECT_THROW(m_widget->RenderPixmap(32, 16), std::runtime_error);
    EXPECT_EQ(m_widget->GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    EXPECT_THAT(recorder::Alive(), Not(Contains(StartsWith("texture#"))));
    EXPECT_THAT(recorder::Alive(), Not(Contains(StartsWith("frameBuffer#"))));
    m_widget->draw = nullptr;
    Settle();
    EXPECT_EQ(m_widget->paints, 2) << "and the widget asks for a frame";
}

TEST_F(ShownNativeWidgetTest, AThousandPicturesLeaveNothingBehind) {
    m_widget->draw = [this](QPaintEvent*) {
        ASSERT_TRUE(m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer()));
    };
    m_widget->RenderPixmap(8, 4);
    m_widget->GetFrameBuffer().SubmitOnDemand();
    std::vector<std::string> const alive = recorder::Alive();
    for (int i = 0; i < 1000; ++i) {
        recorder::ClearCalls();
        ASSERT_FALSE(m_widget->RenderPixmap(8 + i % 5, 4).isNull());
    }
    m_widget->GetFrameBuffer().SubmitOnDemand();
    EXPECT_EQ(recorder::Alive(), alive);
}

TEST_F(BGFXNativeWidgetTest, APictureNeedsNoWindowOnTheScreen) {
    Widget widget;
    Picture const picture;
    picture.Deliver();
    picture.ExpectIn(widget.RenderPixmap(6, 5).toImage());
    EXPECT_TRUE(widget.GetViewport().isNull());
    EXPECT_FALSE(widget.GetFrameBuffer().IsSized());
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

namespace {

/// Whatever a refused picture must not touch.
class RefusedPictureTest : public ShownNativeWidgetTest {
protected:
    void SetUp() override {
        ShownNativeWidgetTest::SetUp();
        CreateFrameBufferObject();
        m_widget->SetViewport(QRect(1, 2, 3, 4));
    }

    /// A null pixmap, and nothing else but these warnings.
    void ExpectRefusal(int width, int height, std::vector<std::string> const& warnings) {
        bgfx::FrameBufferHandle const handle = m_widget->GetFrameBuffer().GetHandle();
        recorder::ClearCalls();
        LogCapture const log;
        EXPECT_TRUE(m_widget->RenderPixmap(width, height).isNull());
        EXPECT_EQ(log.Texts(), warnings);
        for (LogLine const& line : log.Lines()) {
            EXPECT_EQ(line.level, QtWarningMsg);
            EXPECT_FALSE(line.hasContext);
        }
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_EQ(m_widget->GetViewport(), QRect(1, 2, 3, 4));
        EXPECT_EQ(m_widget->GetFrameBuffer().GetHandle().idx, handle.idx);
        EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
        EXPECT_EQ(m_widget->paints, 0);
        Settle();
        EXPECT_EQ(m_widget->paints, 0) << "and no frame is asked for";
    }
};

} // namespace

TEST_F(RefusedPictureTest, ImpossibleSizesGiveANullPixmapAndOneWarning) {
    for (QSize const size :
         {QSize(0, 16), QSize(16, 0), QSize(0, 0), QSize(-1, 16), QSize(16, -1), QSize(65536, 16),
          QSize(16, 65536), QSize(16385, 16), QSize(16, 16385), QSize(65552, 16)}) {
        ExpectRefusal(size.width(), size.height(),
                      {Streamed("A picture of", size.width(), "x", size.height(),
                                "pixels cannot be rendered: each side must be 1 to", 16384)});
    }
}

TEST_F(RefusedPictureTest, WithoutBlitOrReadBackThereIsNoPicture) {
    for (std::uint64_t const missing : {kBlit, kReadBack, kBlit | kReadBack}) {
        Configure([missing](auto& settings) { settings.supported = ~missing; });
        ExpectRefusal(32, 16, {});
    }
}

TEST_F(RefusedPictureTest, WithoutCapabilitiesThereIsNoPicture) {
    Configure([](auto& settings) { settings.hasCaps = false; });
    ExpectRefusal(32, 16, {});
}

TEST_F(ShownNativeWidgetTest, AfterShutdownThereIsNoPicture) {
    Shutdown();
    recorder::ClearCalls();
    LogCapture const log;
    EXPECT_TRUE(m_widget->RenderPixmap(32, 16).isNull());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_F(ShownNativeWidgetTest, TheLargestPicturesAreThoseOfTheLargestTextures) {
    EXPECT_EQ(m_widget->RenderPixmap(16384, 1).size(), QSize(16384, 1));
    EXPECT_EQ(m_widget->RenderPixmap(1, 16384).size(), QSize(1, 16384));
    EXPECT_EQ(m_widget->RenderPixmap(4096, 4096).size(), QSize(4096, 4096));
}

TEST_F(ShownNativeWidgetTest, PicturesHaveItsSamplesAndSoHasTheWidgetAfterwards) {
    EXPECT_EQ(m_widget->GetSampleCount(), 1u);
    EXPECT_EQ(m_widget->GetDepthFormat(), bgfx::TextureFormat::D16);
    m_widget->SetSampleCount(4);
    m_widget->SetDepthFormat(bgfx::TextureFormat::D32F);
    zx3D::FrameBufferOptions const expected{.sampleCount = 4, .depthFormat = bgfx::TextureFormat::D32F};
    EXPECT_EQ(m_widget->GetFrameBuffer().GetOptions(), expected);
    m_widget->draw = [&](QPaintEvent*) {
        EXPECT_EQ(m_widget->GetFrameBuffer().GetOptions(), expected);
        EXPECT_EQ(m_widget->GetFrameBuffer().GetSampleCount(), 4u);
        m_widget->SetSampleCount(2);
    };
    m_widget->RenderPixmap(32, 16);
    m_widget->draw = nullptr;
    EXPECT_EQ(m_widget->GetSampleCount(), 2u);
    EXPECT_EQ(m_widget->GetFrameBuffer().GetOptions().sampleCount, 2u) << "of the one on the screen";
    Window().destroy();
    Window().create();
    EXPECT_EQ(m_widget->GetFrameBuffer().GetOptions().sampleCount, 2u) << "of a new surface";
}

TEST_F(ShownNativeWidgetTest, AnotherSampleCountOrDepthAsksForAFrameAndTheSameDoesNot) {
    m_widget->SetSampleCount(1);
    m_widget->SetDepthFormat(bgfx::TextureFormat::D16);
    Settle();
    EXPECT_EQ(m_widget->paints, 0);
    m_widget->SetSampleCount(4);
    Settle();
    EXPECT_EQ(m_widget->paints, 1);
    m_widget->SetDepthFormat(bgfx::TextureFormat::D32F);
    Settle();
    EXPECT_EQ(m_widget->paints, 2);
}
