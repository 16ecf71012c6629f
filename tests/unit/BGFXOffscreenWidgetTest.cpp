// The off-screen widget: its frame buffer and blit target, its way onto the screen, its log lines, and
// pictures of it.
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <zx3DQt/Library.h>

#include <zx3D/ContextListener.h>

#include <Fixtures.h>

#include <LogCapture.h>
#include <Picture.h>
#include <TopLevels.h>
#include <Warnings.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr std::uint64_t kBlit = BGFX_CAPS_TEXTURE_BLIT;
constexpr std::uint64_t kReadBack = BGFX_CAPS_TEXTURE_READ_BACK;
constexpr quint16 kInvalid = 65535;

/// A widget as an application derives it, which draws what it is told to and notes how it is painted.
class Widget : public BGFXOffscreenWidget {
public:
    explicit Widget(QWidget* parent = nullptr, Qt::WindowFlags flags = {})
        : BGFXOffscreenWidget(parent, flags) {}
    ~Widget() override = default;

    using BGFXOffscreenWidget::GetPixelRatio;
    using BGFXOffscreenWidget::GrabFrameBuffer;
    using BGFXOffscreenWidget::hideEvent;
    using BGFXOffscreenWidget::resizeEvent;
    using BGFXOffscreenWidget::showEvent;

    void paintEvent(QPaintEvent* event) override {
        QPaintEvent part(QRect(5, 6, 7, 8));
        BGFXOffscreenWidget::paintEvent(event != nullptr && paintsPartsOnly ? &part : event);
        viewports.push_back(GetViewport());
        if (draw)
            draw(event);
    }

    bool paintsPartsOnly = false;
    std::vector<QRect> viewports; ///< one for each paint
    std::function<void(QPaintEvent*)> draw;
};

class BGFXOffscreenWidgetTest : public LibraryFixture {
protected:
    /// The widget gets this size and hears of it.
    static void Resize(Widget& widget, int width, int height) {
        QResizeEvent event(QSize(width, height), widget.size());
        widget.resize(width, height);
        widget.resizeEvent(&event);
    }

    /// As after the first frame; the calls of it are not in the records.
    static void ResizeAndCreate(Widget& widget, int width, int height) {
        Resize(widget, width, height);
        widget.GetFrameBuffer().SubmitOnDemand();
        ASSERT_TRUE(bgfx::isValid(widget.GetFrameBuffer().GetHandle()));
        recorder::ClearCalls();
    }

    static void const* Address(Widget const& widget) {
        return static_cast<BGFXOffscreenWidget const*>(&widget);
    }

    /// The trace line of a handler.
    static std::string Handling(char const* eventClass, Widget const& widget, QEvent const* event) {
        return Streamed("BGFXOffscreenWidget", "::", eventClass, "[this:", Address(widget), "]",
                        "[objectName:", widget.objectName(), "]", "[event: ", event, "]");
    }

    /// A line about the widget, in Qt's form, and a handle.
    static std::string HandleLine(char const* prefix, Widget const& widget, quint16 handle) {
        return Streamed(prefix, static_cast<QWidget const*>(&widget), "]", "[handle: ", handle, "]");
    }

    /// The lines of a new blit target for these pixels.
    static std::vector<std::string> BlitTargetLines(Widget const& widget, QSize pixels, quint16 oldHandle,
                                                    quint16 newHandle) {
        return {HandleLine("Resizing offscreen blit target texture [this:", widget, oldHandle),
                Streamed("Creating offscreen blit target texture [viewPort: ", QRect(QPoint(), pixels), "]"),
                Streamed("Updated offscreen blit target texture [handle: ", newHandle, "]"),
                Streamed("Destroying outdated offscreen blit target texture [handle: ", oldHandle, "]")};
    }

    static std::vector<std::string> Joined(std::initializer_list<std::vector<std::string>> const& parts) {
        std::vector<std::string> all;
        for (std::vector<std::string> const& part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }

    static QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
        return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
    }

    /// The textures that are alive, with their sizes.
    static std::vector<std::string> Textures() {
        std::vector<std::string> textures = recorder::Alive();
        std::erase_if(textures, [](std::string const& text) { return !text.starts_with("texture#"); });
        return textures;
    }

    /// The widget as it paints itself.
    static QImage Painted(Widget& widget, QRegion const& part) {
        QImage image(widget.size(), QImage::Format_ARGB32);
        image.fill(Qt::magenta);
        widget.render(&image, part.boundingRect().topLeft(), part);
        return image;
    }
};

/// With the widget, 200 × 100, in a shown window, all paints done.
class ShownOffscreenWidgetTest : public BGFXOffscreenWidgetTest {
protected:
    void SetUp() override {
        BGFXOffscreenWidgetTest::SetUp();
        m_top = std::make_unique<QWidget>();
        m_top->resize(300, 200);
        m_widget = new Widget(m_top.get());
        m_widget->setGeometry(10, 20, 200, 100);
        m_top->show();
        Settle();
        ForgetThePast();
    }

    void TearDown() override {
        m_top.reset();
        BGFXOffscreenWidgetTest::TearDown();
    }

    void ForgetThePast() {
        recorder::ClearCalls();
        m_widget->viewports.clear();
    }

    std::unique_ptr<QWidget> m_top;
    Widget* m_widget = nullptr;
};

} // namespace

// Construction and destruction.

TEST_F(BGFXOffscreenWidgetTest, ConstructionLogsItsStepsAndCreatesNothing) {
    LogCapture const log;
    Widget const widget;
    EXPECT_THAT(
        log.Texts(),
        ElementsAre(
            Streamed("Creating BGFXRenderer [this: ", static_cast<void const*>(&widget.GetRenderer()), "]"),
            Streamed("Creating BGFXOffscreenWidget [this: ", Address(widget), "]"),
            Streamed("Initializing offscreen framebuffer [this:", static_cast<QWidget const*>(&widget), "]"),
            Streamed("Frame buffer initialized [handle:", kInvalid, "]")));
    for (LogLine const& line : log.Lines()) {
        EXPECT_EQ(line.level, QtDebugMsg);
        EXPECT_EQ(line.category, "zarvex.zx3dqt");
        EXPECT_FALSE(line.hasContext);
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, ConstructionNamesTheWidgetAndLaysItOut) {
    Widget const widget;
    EXPECT_EQ(widget.objectName(), "BGFXOffscreenWidget");
    EXPECT_TRUE(widget.testAttribute(Qt::WA_OpaquePaintEvent));
    EXPECT_FALSE(widget.testAttribute(Qt::WA_PaintOnScreen));
    EXPECT_FALSE(widget.testAttribute(Qt::WA_NativeWindow));
    EXPECT_TRUE(widget.updatesEnabled());
    ASSERT_NE(qobject_cast<QVBoxLayout*>(widget.layout()), nullptr);
    EXPECT_EQ(widget.layout()->count(), 0);
    EXPECT_THAT(widget.findChildren<QWidget*>(), IsEmpty());
    EXPECT_EQ(widget.GetRenderer().parent(), nullptr);
    EXPECT_EQ(widget.GetViewport(), QRect());
    EXPECT_FALSE(widget.GetFrameBuffer().IsSized());
}

TEST_F(BGFXOffscreenWidgetTest, ParentAndFlagsArePassedOn) {
    QWidget parent;
    Widget const child(&parent);
    EXPECT_EQ(child.parentWidget(), &parent);
    Widget const tool(&parent, Qt::Tool | Qt::WindowStaysOnTopHint);
    EXPECT_EQ(tool.windowType(), Qt::Tool);
    EXPECT_TRUE(tool.windowFlags() & Qt::WindowStaysOnTopHint);
}

TEST_F(BGFXOffscreenWidgetTest, TheFrameBufferHasNoWindowAndIsRGBA8AndD16) {
    EXPECT_EQ(BGFXOffscreenWidget::TEXTURE_FORMAT, bgfx::TextureFormat::RGBA8);
    Widget widget;
    Resize(widget, 200, 100);
    recorder::ClearCalls();
    widget.GetFrameBuffer().SubmitOnDemand();
    EXPECT_THAT(recorder::CallTexts(), ElementsAre(StartsWith("createTexture2D(200, 100, false, 1, RGBA8, "),
                                                   StartsWith("createTexture2D(200, 100, false, 1, D16, "),
                                                   StartsWith("createFrameBuffer(texture#")));
}

using OffscreenWidgetDeathTest = BGFXOffscreenWidgetTest;

TEST_F(OffscreenWidgetDeathTest, WithoutBlitOrReadBackTheProcessEnds) {
    for (std::uint64_t const missing : {kBlit, kReadBack, kBlit | kReadBack}) {
        EXPECT_DEATH(
            {
                Configure([missing](auto& settings) { settings.supported = ~missing; });
                Widget const widget;
            },
            "BGFX offscreen rendering is unsupported\\.");
    }
}

TEST_F(OffscreenWidgetDeathTest, WithoutALibraryThatRunsTheProcessEnds) {
    EXPECT_DEATH(
        {
            Shutdown();
            Widget const widget;
        },
        "BGFX offscreen rendering is unsupported\\.");
}

TEST_F(BGFXOffscreenWidgetTest, DestructionFreesTheFrameBufferThenTheBlitTarget) {
    auto widget = std::make_unique<Widget>();
    ResizeAndCreate(*widget, 200, 100);
    ASSERT_THAT(Textures(), SizeIs(3));
    void const* const address = Address(*widget);
    void const* const renderer = &widget->GetRenderer();
    LogCapture const log;
    widget.reset();
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("destroy(frameBuffer#0)", "destroy(texture#0)"));
    EXPECT_THAT(recorder::Alive(), IsEmpty());
    EXPECT_THAT(log.Texts(), ElementsAre(Streamed("Destroying BGFXOffscreenWidget [this: ", address, "]"),
                                         Streamed("Destroying BGFXRenderer [this: ", renderer, "]")));
}

TEST_F(BGFXOffscreenWidgetTest, DestructionBeforeAnySizeMakesNoCall) {
    {
        Widget const widget;
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(ShownOffscreenWidgetTest, DeletingTheWidgetWhileShownLeavesNothingBehind) {
    ASSERT_TRUE(m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer()));
    delete m_widget;
    Settle();
    Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

// The context's end.

TEST_F(ShownOffscreenWidgetTest, ShutdownFreesFrameBufferAndBlitTarget) {
    m_widget->GetFrameBuffer().SubmitOnDemand();
    Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    EXPECT_THAT(recorder::Errors(), IsEmpty());
}

TEST_F(ShownOffscreenWidgetTest, AWidgetThatOutlivesShutdownMakesNoCall) {
    m_widget->draw = [this](QPaintEvent*) { m_widget->Flush(); };
    Shutdown();
    recorder::ClearCalls();
    m_widget->resize(50, 40);
    m_widget->hide();
    m_widget->show();
    Settle();
    EXPECT_EQ(m_widget->GrabFrameBuffer(), std::nullopt);
    LogCapture const log;
    EXPECT_TRUE(m_widget->RenderPixmap(32, 16).isNull());
    EXPECT_THAT(log.Texts(), IsEmpty());
    delete m_widget;
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, WithoutAContextAResizeIsSkipped) {
    Widget widget;
    widget.SetViewport(QRect(1, 2, 3, 4));
    Shutdown();
    recorder::ClearCalls();
    QResizeEvent resize(QSize(30, 40), QSize());
    LogCapture const log;
    widget.resizeEvent(&resize);
    EXPECT_THAT(log.Texts(),
                ElementsAre(Handling("QResizeEvent", widget, &resize),
                            HandleLine("Skipping early framebuffer update (not initialized yet) [this:",
                                       widget, kInvalid)));
    EXPECT_EQ(widget.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_FALSE(widget.GetFrameBuffer().IsSized());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

// Members.

TEST_F(BGFXOffscreenWidgetTest, TheMetaObjectAddsNothing) {
    QMetaObject const& meta = BGFXOffscreenWidget::staticMetaObject;
    EXPECT_STREQ(meta.className(), "zarvex::zx3DQt::BGFXOffscreenWidget");
    EXPECT_EQ(meta.superClass(), &QWidget::staticMetaObject);
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(BGFXOffscreenWidget::tr("text"), "text");
}

TEST_F(BGFXOffscreenWidgetTest, TheAccessorsAreThoseOfItsMembers) {
    Widget widget;
    Widget const& constant = widget;
    EXPECT_EQ(&widget.GetRenderer(), &constant.GetRenderer());
    EXPECT_EQ(&widget.GetFrameBuffer(), &constant.GetFrameBuffer());
    EXPECT_EQ(&widget.GetViewport(), &constant.GetViewport());
    widget.SetViewport(QRect(1, 2, 3, 4));
    EXPECT_EQ(constant.GetViewport(), QRect(1, 2, 3, 4));
}

TEST_F(BGFXOffscreenWidgetTest, SetFrameBufferCopiesAndDestroysNothing) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    zx3D::FrameBuffer old = widget.GetFrameBuffer();
    zx3D::FrameBuffer other(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    other.RequestResize(8, 4);
    widget.SetFrameBuffer(other);
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(8, 4));
    EXPECT_TRUE(bgfx::isValid(old.GetHandle()));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    old.Destroy();
}

TEST_F(BGFXOffscreenWidgetTest, ThePixelRatioIsTheScreens) {
    Widget const widget;
    ASSERT_NE(widget.screen(), nullptr);
    EXPECT_EQ(widget.GetPixelRatio(), std::max(widget.screen()->devicePixelRatio(), 1.0));
}

TEST_F(BGFXOffscreenWidgetTest, WithTheCategorySilencedNothingIsLogged) {
    QLoggingCategory::setFilterRules("zarvex.zx3dqt.debug=false");
    LogCapture const log;
    {
        Widget widget;
        widget.show();
        Settle();
        widget.RenderPixmap(8, 4);
        widget.hide();
    }
    QLoggingCategory::setFilterRules("");
    EXPECT_THAT(log.Texts(), IsEmpty());
}

// Sizes.

TEST_F(BGFXOffscreenWidgetTest, AResizeLogsItsSteps) {
    Widget widget;
    widget.resize(200, 100);
    QResizeEvent resize(QSize(1, 1), QSize());
    LogCapture const log;
    widget.resizeEvent(&resize);
    EXPECT_EQ(log.Texts(), Joined({{Handling("QResizeEvent", widget, &resize),
                                    HandleLine("Updating framebuffer [this:", widget, kInvalid)},
                                   BlitTargetLines(widget, QSize(200, 100), kInvalid, 0)}));
}

TEST_F(BGFXOffscreenWidgetTest, AResizeMakesViewportFrameBufferAndBlitTargetFollowTheWidgetsOwnSize) {
    Widget widget;
    widget.resize(200, 100);
    QResizeEvent resize(QSize(1, 1), QSize());
    widget.resizeEvent(&resize);
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 200, 100));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(200, 100));
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createTexture2D(200, 100, false, 1, RGBA8, 0xc00000000000)"));
}

TEST_F(BGFXOffscreenWidgetTest, EachResizeReplacesTheBlitTargetNewOneFirst) {
    Widget widget;
    Resize(widget, 200, 100);
    recorder::ClearCalls();
    LogCapture const log;
    Resize(widget, 120, 90);
    EXPECT_THAT(
        recorder::CallTexts(),
        ElementsAre("createTexture2D(120, 90, false, 1, RGBA8, 0xc00000000000)", "destroy(texture#0)"));
    std::vector<std::string> const texts = log.Texts();
    ASSERT_THAT(texts, SizeIs(6));
    EXPECT_EQ(std::vector(texts.begin() + 2, texts.end()), BlitTargetLines(widget, QSize(120, 90), 0, 1));
    EXPECT_THAT(Textures(), ElementsAre("texture#1 (120 x 90 RGBA8)"));
}

TEST_F(BGFXOffscreenWidgetTest, AResizeWithoutAnEventChangesNothing) {
    Widget widget;
    widget.resize(200, 100);
    LogCapture const log;
    widget.resizeEvent(nullptr);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", widget, nullptr)));
    EXPECT_EQ(widget.GetViewport(), QRect());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, AWidgetWithoutHeightCollapsesAndStillUpdates) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    quint16 const handle = widget.GetFrameBuffer().GetHandle().idx;
    widget.resize(50, 0);
    QResizeEvent resize(widget.size(), QSize());
    LogCapture const log;
    widget.resizeEvent(&resize);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", widget, &resize),
                                         HandleLine("Collapsing framebuffer [this:", widget, handle),
                                         HandleLine("Updating framebuffer [this:", widget, handle)));
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 50, 0));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(50, 0));
    EXPECT_THAT(recorder::Calls(), IsEmpty()) << "a collapsed one makes no blit target";
}

TEST_F(BGFXOffscreenWidgetTest, AWidgetWithoutWidthCollapsesToo) {
    Widget widget;
    widget.resize(0, 50);
    QResizeEvent resize(widget.size(), QSize());
    LogCapture const log;
    widget.resizeEvent(&resize);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", widget, &resize),
                                         HandleLine("Collapsing framebuffer [this:", widget, kInvalid),
                                         HandleLine("Updating framebuffer [this:", widget, kInvalid)));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(0, 50));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, WhenNoBlitTargetCanBeCreatedThePreviousOneIsKept) {
    Widget widget;
    Resize(widget, 200, 100);
    TextureHog const hog(0);
    QResizeEvent resize(QSize(120, 90), QSize());
    widget.resize(120, 90);
    LogCapture const log;
    widget.resizeEvent(&resize);
    EXPECT_THAT(
        log.Texts(),
        ElementsAre(Handling("QResizeEvent", widget, &resize),
                    HandleLine("Updating framebuffer [this:", widget, kInvalid),
                    HandleLine("Resizing offscreen blit target texture [this:", widget, 0),
                    Streamed("Creating offscreen blit target texture [viewPort: ", QRect(0, 0, 120, 90), "]"),
                    Streamed("Updated offscreen blit target texture [handle: ", kInvalid, "]"),
                    "Updated offscreen blit target texture is invalid"));
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
    EXPECT_THAT(Textures(), Contains("texture#0 (200 x 100 RGBA8)"));
}

TEST_F(BGFXOffscreenWidgetTest, AWidgetBeyondTheLargestTexturePaintsNothing) {
    ExpectWarning("surface.too-large");
    Widget widget;
    Resize(widget, 16385, 10);
    widget.GetFrameBuffer().SubmitOnDemand();
    EXPECT_EQ(widget.GrabFrameBuffer(), std::nullopt);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(ShownOffscreenWidgetTest, TheWidgetFollowsItsSizeOnTheScreen) {
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(200, 100));
    m_widget->resize(120, 90);
    Settle();
    EXPECT_EQ(SizeOf(m_widget->GetFrameBuffer()), QSize(120, 90));
    EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(0, 0, 120, 90)));
    EXPECT_EQ(m_widget->windowHandle(), nullptr) << "no native window of its own";
}

// Handlers.

TEST_F(BGFXOffscreenWidgetTest, PaintingSetsTheViewportToTheBoundsOfTheRegion) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    QPaintEvent paint(QRegion(10, 20, 30, 40) + QRegion(100, 5, 2, 2));
    LogCapture const log;
    widget.paintEvent(&paint);
    EXPECT_EQ(widget.GetViewport(), QRect(10, 5, 92, 55));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QPaintEvent", widget, &paint)));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(200, 100));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, PaintingWithoutAnEventLeavesTheViewport) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    widget.GetFrameBuffer().RequestResize(8, 4);
    widget.SetViewport(QRect(1, 2, 3, 4));
    LogCapture const log;
    widget.paintEvent(nullptr);
    EXPECT_EQ(widget.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(8, 4));
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QPaintEvent", widget, nullptr)));
}

TEST_F(BGFXOffscreenWidgetTest, ASizeThatTheApplicationRequestsLastsUntilTheWidgetsChanges) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    widget.GetFrameBuffer().RequestResize(400, 200);
    for (int i = 0; i < 3; ++i) {
        QPaintEvent paint(QRect(10, 20, 30, 40));
        widget.paintEvent(&paint);
        EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(400, 200));
        EXPECT_EQ(widget.GetViewport(), QRect(10, 20, 30, 40));
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    Resize(widget, 120, 90);
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(120, 90));
}

TEST_F(BGFXOffscreenWidgetTest, AFrameBufferOfTheApplicationsKeepsItsSize) {
    Widget widget;
    ResizeAndCreate(widget, 200, 100);
    zx3D::FrameBuffer old = widget.GetFrameBuffer();
    zx3D::FrameBuffer own(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    own.RequestResize(64, 32);
    widget.SetFrameBuffer(own);
    QPaintEvent paint(widget.rect());
    widget.paintEvent(&paint);
    EXPECT_EQ(SizeOf(own), QSize(64, 32));
    old.Destroy();
}

TEST_F(BGFXOffscreenWidgetTest, PaintingBeforeTheFirstSizeMakesNoCall) {
    Widget widget;
    QPaintEvent paint(QRect(0, 0, 30, 40));
    widget.paintEvent(&paint);
    EXPECT_FALSE(widget.GetFrameBuffer().IsSized());
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, TraceLinesNameTheObjectAsItIsNamedNow) {
    Widget widget;
    widget.setObjectName("Main \"view\"");
    LogCapture const log;
    widget.resizeEvent(nullptr);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QResizeEvent", widget, nullptr)));
    EXPECT_THAT(log.Texts(), ElementsAre(testing::HasSubstr("Main")));
}

TEST_F(BGFXOffscreenWidgetTest, ShowingIsTraced) {
    Widget widget;
    QShowEvent show;
    LogCapture const log;
    widget.showEvent(&show);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QShowEvent", widget, &show)));
}

TEST_F(BGFXOffscreenWidgetTest, HidingIsTracedAsAFocusEvent) {
    Widget widget;
    QHideEvent hide;
    LogCapture const log;
    widget.hideEvent(&hide);
    EXPECT_THAT(log.Texts(), ElementsAre(Handling("QFocusEvent", widget, &hide)));
}

TEST_F(ShownOffscreenWidgetTest, HidingRepaintsTheFirstTopLevelWidgetAtOnce) {
    QWidget other;
    ShowAllTopLevels();
    PaintedTopLevels const painted;
    QHideEvent hide;
    m_widget->hideEvent(&hide);
    EXPECT_THAT(painted.Get(), ElementsAre(QApplication::topLevelWidgets().at(0)));
}

TEST_F(BGFXOffscreenWidgetTest, HidingWithoutAnyTopLevelWidgetIsHarmless) {
    Widget widget;
    widget.overrideWindowFlags(Qt::Desktop); // the one kind that does not count
    Shutdown();
    ASSERT_THAT(QApplication::topLevelWidgets(), IsEmpty());
    QHideEvent hide;
    LogCapture const log;
    widget.hideEvent(&hide);
    EXPECT_THAT(log.Texts(), SizeIs(1));
}

// Parts and wholes.

TEST_F(ShownOffscreenWidgetTest, AfterAPartTheWholeWidgetIsPaintedOnce) {
    m_widget->update(QRect(5, 6, 7, 8));
    Settle();
    EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(5, 6, 7, 8), QRect(0, 0, 200, 100)));
}

TEST_F(ShownOffscreenWidgetTest, AfterTheWholeWidgetNothingMoreIsPainted) {
    m_widget->update();
    Settle();
    EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(0, 0, 200, 100)));
}

TEST_F(ShownOffscreenWidgetTest, EachPartIsFollowedByTheWhole) {
    for (int i = 0; i < 3; ++i) {
        m_widget->viewports.clear();
        m_widget->update(QRect(5, 6, 7, 8));
        Settle();
        EXPECT_THAT(m_widget->viewports, SizeIs(2));
    }
}

TEST_F(ShownOffscreenWidgetTest, WhereEveryPaintIsOfAPartTheSecondDrawsTheWholeWidgetAndPaintingEnds) {
    m_widget->paintsPartsOnly = true;
    m_widget->update();
    Settle();
    EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(5, 6, 7, 8), QRect(0, 0, 200, 100)));
}

TEST_F(ShownOffscreenWidgetTest, WhatIsCoveredOrOutOfSightIsDrawnAllTheSame) {
    m_widget->move(200, 20); // the right half is outside of the parent
    Settle();
    for (int i = 0; i < 2; ++i) {
        m_widget->viewports.clear();
        m_widget->update();
        Settle();
        EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(0, 0, 100, 100), QRect(0, 0, 200, 100)));
    }
}

TEST_F(ShownOffscreenWidgetTest, OutsideOfAPaintEventOfQtNothingMoreIsAskedFor) {
    QPaintEvent part(QRect(5, 6, 7, 8));
    m_widget->paintEvent(&part);
    Settle();
    EXPECT_THAT(m_widget->viewports, ElementsAre(QRect(5, 6, 7, 8)));
}

// Reading back.

TEST_F(BGFXOffscreenWidgetTest, GrabbingTakesTheseCallsInThisOrder) {
    Configure([](auto& settings) { settings.readLatency = 1; });
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.GrabFrameBuffer();
    std::vector<std::string> const frame{"setViewFrameBuffer(0, frameBuffer#invalid)",
                                         "setViewClear(0, 0x3, 0xff0000ff, 1, 0)", "touch(0)",
                                         "frame(false)"};
    EXPECT_EQ(recorder::CallTexts(), Joined({{"getTexture(frameBuffer#0, 0)",
                                              "blit(254, texture#0, 0, 0, texture#1, 0, 0, 65535, 65535)",
                                              "readTexture(texture#0, 0)"},
                                             frame,
                                             frame}));
}

TEST_F(BGFXOffscreenWidgetTest, TheBackBufferIsClearedInEveryFrameOfTheWait) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    recorder::SetNextFrameNumber(10);
    for (std::uint32_t const latency : {0, 1, 2, 3, 4, 5}) {
        Configure([latency](auto& settings) { settings.readLatency = latency; });
        Picture const picture;
        picture.Deliver();
        recorder::ClearCalls();
        std::optional<QImage> const image = widget.GrabFrameBuffer();
        ASSERT_TRUE(image.has_value());
        picture.ExpectIn(*image);
        EXPECT_EQ(recorder::CountCalls("frame"), latency + 1);
        EXPECT_EQ(recorder::CountCalls("touch"), latency + 1);
    }
}

TEST_F(BGFXOffscreenWidgetTest, WithoutAFrameToWaitForNoneIsSubmitted) {
    Configure([](auto& settings) { settings.readLatency = 0; });
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    recorder::SetNextFrameNumber(0);
    std::optional<QImage> const image = widget.GrabFrameBuffer();
    EXPECT_TRUE(image.has_value());
    ASSERT_EQ(recorder::CallsNamed("readTexture").at(0).result, "0");
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
    EXPECT_EQ(recorder::CountCalls("touch"), 0u);
    bgfx::frame(); // answers into the image, which still exists
}

TEST_F(BGFXOffscreenWidgetTest, TheImageIsTheWholeFrameBufferUpright) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 21, 10);
    QImage const upright = widget.GrabFrameBuffer().value();
    EXPECT_EQ(upright.size(), QSize(21, 10));
    EXPECT_EQ(upright.format(), QImage::Format_RGBA8888);
    picture.ExpectIn(upright);
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    picture.ExpectFlippedIn(widget.GrabFrameBuffer().value());
}

TEST_F(BGFXOffscreenWidgetTest, TheImageOfAPartIsTheViewportsPartOfTheWholeBlitTarget) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.SetViewport(QRect(3, 2, 5, 4));
    QImage const image = widget.GrabFrameBuffer().value();
    EXPECT_EQ(image.size(), QSize(5, 4));
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888);
    picture.ExpectIn(image, QPoint(3, 2));
    EXPECT_EQ(recorder::CallsNamed("blit").at(0).arguments,
              "254, texture#0, 0, 0, texture#1, 0, 0, 65535, 65535");
}

TEST_F(BGFXOffscreenWidgetTest, APartIsCountedFromTheTopWhereTheOriginIsAtTheBottom) {
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.SetViewport(QRect(3, 2, 5, 4));
    QImage const image = widget.GrabFrameBuffer().value();
    ASSERT_EQ(image.size(), QSize(5, 4));
    picture.ExpectIn(image.mirrored(), QPoint(3, 10 - 2 - 4));
}

TEST_F(BGFXOffscreenWidgetTest, WithoutAFrameBufferThereIsNoImage) {
    Widget widget;
    Resize(widget, 20, 10);
    recorder::ClearCalls();
    EXPECT_EQ(widget.GrabFrameBuffer(), std::nullopt);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, WithoutABlitTargetThereIsNoImage) {
    Widget widget;
    widget.GetFrameBuffer().RequestResize(20, 10);
    widget.GetFrameBuffer().SubmitOnDemand();
    EXPECT_EQ(widget.GrabFrameBuffer(), std::nullopt);
    EXPECT_EQ(recorder::CountCalls("blit"), 0u);
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
}

TEST_F(BGFXOffscreenWidgetTest, AKeptBlitTargetOfAnotherSizeIsReadAsItIs) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    TextureHog const hog(0);
    Resize(widget, 40, 30);
    QImage const image = widget.GrabFrameBuffer().value();
    EXPECT_EQ(image.size(), QSize(40, 30));
    picture.ExpectIn(image.copy(0, 0, 20, 10));
    EXPECT_EQ(image.pixelColor(39, 29).alpha(), 0) << "beyond what was read";
}

// Onto the widget.

TEST_F(BGFXOffscreenWidgetTest, FlushPaintsThePicture) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    widget.draw = [&](QPaintEvent*) { widget.Flush(); };
    picture.ExpectIn(Painted(widget, widget.rect()));
    EXPECT_EQ(recorder::CountCalls("readTexture"), 1u);
}

TEST_F(BGFXOffscreenWidgetTest, WhatFlushPaintsIsOpaque) {
    Picture(0).Deliver();
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    widget.draw = [&](QPaintEvent*) { widget.Flush(); };
    Picture(255).ExpectIn(Painted(widget, widget.rect()));
}

TEST_F(BGFXOffscreenWidgetTest, FlushStretchesThePartOverTheWidgetWhereQtAskedForAPart) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    widget.draw = [&](QPaintEvent*) { widget.Flush(); };
    QImage const image = Painted(widget, QRect(0, 0, 20, 15));
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            QColor const expected = x < 20 && y < 15 ? picture.At(x / 2, y / 2) : QColor(Qt::magenta);
            ASSERT_EQ(image.pixelColor(x, y), expected) << x << ", " << y;
        }
    }
}

TEST_F(BGFXOffscreenWidgetTest, FlushScalesAllOfAFrameBufferOfRequestedSizeToTheWidget) {
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    Configure([](auto& settings) { // left half red, right half blue
        settings.pixels = [](bgfx::TextureHandle, std::uint16_t width, std::uint16_t height) {
            std::vector<std::byte> bytes;
            for (int i = 0; i < width * height; ++i) {
                bool const isLeft = i % width < width / 2;
                for (int const channel : {isLeft ? 255 : 0, 0, isLeft ? 0 : 255, 255})
                    bytes.push_back(std::byte(channel));
            }
            return bytes;
        };
    });
    Painted(widget, widget.rect()); // with it comes the size that Qt has not told of yet
    widget.GetFrameBuffer().RequestResize(80, 60);
    widget.GetFrameBuffer().SubmitOnDemand();
    widget.draw = [&](QPaintEvent*) { widget.Flush(); };
    for (int i = 0; i < 2; ++i) {
        QImage const image = Painted(widget, widget.rect());
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 40; ++x)
                ASSERT_EQ(image.pixelColor(x, y), QColor(x < 20 ? Qt::red : Qt::blue)) << x << ", " << y;
        }
    }
    EXPECT_THAT(Textures(), Contains(testing::EndsWith("(80 x 60 RGBA8)")).Times(2))
        << "its own and the one to read";
}

TEST_F(BGFXOffscreenWidgetTest, WhereTheWidgetIsLargerThanATextureItsBackgroundShowsWithOneWarning) {
    for (int const side : {20'000, 65'536, 70'000}) {
        Widget widget;
        QPalette palette;
        palette.setColor(QPalette::Window, QColor(10, 200, 30));
        widget.setPalette(palette);
        Resize(widget, side, 3);
        EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(side > 65'535 ? 0 : side, 3)) << "nothing wraps";
        widget.draw = [&](QPaintEvent*) {
            if (widget.GetRenderer().StartFrame(widget.GetFrameBuffer()))
                widget.Flush();
        };
        LogCapture const log;
        for (int i = 0; i < 3; ++i) {
            QImage const image = Painted(widget, QRect(0, 0, 50, 3));
            EXPECT_EQ(image.pixelColor(0, 0), QColor(10, 200, 30)) << side;
            EXPECT_EQ(image.pixelColor(49, 2), QColor(10, 200, 30)) << side;
        }
        std::string const start = Streamed("a widget of", side);
        EXPECT_THAT(log.Texts(), Contains(StartsWith(start)).Times(1));
    }
}

TEST_F(BGFXOffscreenWidgetTest, AfterShutdownTheBackgroundShows) {
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(10, 200, 30));
    widget.setPalette(palette);
    Shutdown();
    EXPECT_EQ(Painted(widget, widget.rect()).pixelColor(39, 29), QColor(10, 200, 30));
}

namespace {

/// Takes a picture when the context stops.
class CaptureAtStop : public zx3D::ContextListener {
public:
    explicit CaptureAtStop(Widget& widget) : m_widget(widget) {}

    std::optional<QPixmap> picture;

private:
    void OnContextStopping() override { picture = m_widget.RenderPixmap(8, 4); }

    Widget& m_widget;
};

} // namespace

TEST_F(BGFXOffscreenWidgetTest, APictureWhileTheLibraryStopsEndsAndLeavesNothingBehind) {
    auto before = std::make_unique<std::optional<CaptureAtStop>>();
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    before->emplace(widget);
    CaptureAtStop after(widget);
    Shutdown();
    EXPECT_TRUE((*before)->picture.has_value());
    EXPECT_TRUE(after.picture.has_value());
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, FlushPaintsBlackWhereTheViewportShowsNothing) {
    Widget widget;
    ResizeAndCreate(widget, 40, 30);
    widget.draw = [&](QPaintEvent*) {
        widget.SetViewport(QRect(0, 0, 0, 5));
        widget.Flush();
    };
    QImage const image = Painted(widget, widget.rect());
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(39, 29), QColor(Qt::black));
}

TEST_F(BGFXOffscreenWidgetTest, FlushWithoutAFrameBufferPaintsNothing) {
    Widget widget;
    Resize(widget, 40, 30);
    widget.draw = [&](QPaintEvent*) { widget.Flush(); };
    QImage const image = Painted(widget, widget.rect());
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::magenta));
}

TEST_F(ShownOffscreenWidgetTest, FlushOutsideAPaintEventSubmitsTheFrameAndPaintsNothing) {
    m_widget->GetFrameBuffer().SubmitOnDemand();
    recorder::ClearCalls();
    LogCapture const log;
    m_widget->Flush();
    EXPECT_EQ(recorder::CountCalls("readTexture"), 1u);
    EXPECT_THAT(log.Lines(), IsEmpty()) << "nor does QPainter complain";
    Settle();
    EXPECT_THAT(m_widget->viewports, IsEmpty());
}

TEST_F(ShownOffscreenWidgetTest, InTheNextContextTheWidgetPaintsAgain) {
    Shutdown();
    ASSERT_TRUE(Init(false));
    Picture const picture;
    picture.Deliver();
    m_widget->draw = [this](QPaintEvent*) {
        m_widget->GetFrameBuffer().SubmitOnDemand();
        m_widget->Flush();
    };
    picture.ExpectIn(Painted(*m_widget, m_widget->rect()));
}

TEST_F(ShownOffscreenWidgetTest, TheFrameReachesTheScreen) {
    Picture const picture;
    picture.Deliver();
    m_widget->draw = [this](QPaintEvent* event) {
        ASSERT_TRUE(m_widget->GetRenderer().StartFrame(m_widget->GetFrameBuffer()));
        if (event != nullptr)
            m_widget->Flush();
    };
    m_widget->update();
    Settle();
    QImage const screen = m_top->screen()->grabWindow(m_top->winId(), 10, 20, 200, 100).toImage();
    ASSERT_EQ(screen.size(), QSize(200, 100));
    picture.ExpectIn(screen);
}

// Pictures.

TEST_F(BGFXOffscreenWidgetTest, APictureTakesTheseCallsInThisOrder) {
    Configure([](auto& settings) { settings.readLatency = 0; });
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    bgfx::frame();
    recorder::ClearCalls();
    widget.draw = [](QPaintEvent*) { bgfx::touch(7); };
    widget.RenderPixmap(32, 16);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("destroy(frameBuffer#0)", StartsWith("createTexture2D(32, 16, false, 1, RGBA8, "),
                            StartsWith("createTexture2D(32, 16, false, 1, D16, "),
                            "createFrameBuffer(texture#3, texture#4, true)",
                            "createTexture2D(32, 16, false, 1, RGBA8, 0xc00000000000)", "destroy(texture#0)",
                            "touch(7)", // paintEvent
                            "getTexture(frameBuffer#1, 0)",
                            "blit(254, texture#5, 0, 0, texture#3, 0, 0, 65535, 65535)",
                            "readTexture(texture#5, 0)", "setViewFrameBuffer(0, frameBuffer#invalid)",
                            "setViewClear(0, 0x3, 0xff0000ff, 1, 0)", "touch(0)", "frame(false)",
                            "destroy(frameBuffer#1)",
                            "createTexture2D(20, 10, false, 1, RGBA8, 0xc00000000000)", // the size's
                            "destroy(texture#5)",
                            "createTexture2D(20, 10, false, 1, RGBA8, 0xc00000000000)", // its own
                            "destroy(texture#0)"));
}

TEST_F(BGFXOffscreenWidgetTest, APictureLogsItsSteps) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    bgfx::frame();
    LogCapture const log;
    widget.RenderPixmap(32, 16);
    EXPECT_EQ(log.Texts(), Joined({BlitTargetLines(widget, QSize(32, 16), 0, 5),
                                   {Handling("QPaintEvent", widget, nullptr),
                                    HandleLine("Updating framebuffer [this:", widget, kInvalid)},
                                   BlitTargetLines(widget, QSize(20, 10), 5, 0),
                                   BlitTargetLines(widget, QSize(20, 10), 0, 2)}));
}

TEST_F(BGFXOffscreenWidgetTest, ThePictureIsWhatWasDrawn) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    QPixmap const pixmap = widget.RenderPixmap(33, 17);
    ASSERT_EQ(pixmap.size(), QSize(33, 17));
    EXPECT_EQ(pixmap.devicePixelRatio(), 1.0);
    picture.ExpectIn(pixmap.toImage());
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    picture.ExpectFlippedIn(widget.RenderPixmap(33, 17).toImage());
}

TEST_F(BGFXOffscreenWidgetTest, AnOpaqueSceneIsOpaqueAndATransparentOneStaysTransparent) {
    Widget widget;
    Picture(255).Deliver();
    EXPECT_EQ(widget.RenderPixmap(5, 3).toImage().pixelColor(4, 2).alpha(), 255);
    Picture(0).Deliver();
    EXPECT_EQ(widget.RenderPixmap(5, 3).toImage().pixelColor(4, 2).alpha(), 0);
}

TEST_F(BGFXOffscreenWidgetTest, TheSceneIsDrawnOnceIntoAFrameBufferOfThePicturesSize) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.draw = [&](QPaintEvent* event) {
        EXPECT_EQ(event, nullptr);
        EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(32, 16));
        EXPECT_TRUE(bgfx::isValid(widget.GetFrameBuffer().GetHandle()));
    };
    widget.RenderPixmap(32, 16);
    EXPECT_THAT(widget.viewports, ElementsAre(QRect(0, 0, 32, 16)));
}

TEST_F(BGFXOffscreenWidgetTest, OnlyTheSizeOfARectangleCounts) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    EXPECT_EQ(widget.RenderPixmap(QRect(50, 50, 320, 200)).size(), QSize(320, 200));
    EXPECT_EQ(widget.RenderPixmap(QSize(320, 200)).size(), QSize(320, 200));
    EXPECT_EQ(widget.RenderPixmap(320, 200).size(), QSize(320, 200));
    EXPECT_THAT(widget.viewports, testing::Each(QRect(0, 0, 320, 200)));
    EXPECT_THAT(widget.viewports, SizeIs(3));
}

TEST_F(BGFXOffscreenWidgetTest, AfterThePictureViewportAndFrameBufferAreThoseOfTheWidget) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.draw = [&](QPaintEvent*) { widget.SetViewport(QRect(0, 0, 9, 9)); };
    EXPECT_EQ(widget.RenderPixmap(32, 16).size(), QSize(9, 9)) << "what the scene left in the viewport";
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 20, 10));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(20, 10));
    EXPECT_FALSE(bgfx::isValid(widget.GetFrameBuffer().GetHandle())) << "until the next frame";
    recorder::ClearCalls();
    widget.GetFrameBuffer().SubmitOnDemand();
    EXPECT_THAT(recorder::CallTexts(), ElementsAre(StartsWith("createTexture2D(20, 10, false, 1, RGBA8, "),
                                                   StartsWith("createTexture2D(20, 10, false, 1, D16, "),
                                                   StartsWith("createFrameBuffer(texture#")));
}

TEST_F(BGFXOffscreenWidgetTest, APictureAfterAPartialPaintLeavesTheViewportOfTheWholeWidget) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.SetViewport(QRect(1, 2, 3, 4));
    widget.RenderPixmap(32, 16);
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 20, 10));
}

TEST_F(BGFXOffscreenWidgetTest, ThePictureHasAFrameBufferOfItsOwn) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    zx3D::FrameBuffer const before = widget.GetFrameBuffer();
    widget.draw = [&](QPaintEvent*) {
        EXPECT_EQ(SizeOf(before), QSize(20, 10));
        EXPECT_FALSE(bgfx::isValid(before.GetHandle()));
    };
    widget.RenderPixmap(32, 16);
    EXPECT_EQ(SizeOf(before), QSize(20, 10));
}

TEST_F(BGFXOffscreenWidgetTest, OnlyTheLastBlitTargetStaysAlive) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.RenderPixmap(32, 16);
    EXPECT_THAT(Textures(), ElementsAre(testing::EndsWith("(20 x 10 RGBA8)")));
}

TEST_F(BGFXOffscreenWidgetTest, APictureNeedsNoSizeOfTheWidget) {
    Picture const picture;
    picture.Deliver();
    Widget widget;
    widget.resize(0, 0);
    Resize(widget, 0, 0);
    picture.ExpectIn(widget.RenderPixmap(32, 16).toImage());
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 0, 0));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(0, 0));
    EXPECT_THAT(Textures(), SizeIs(1));
}

TEST_F(BGFXOffscreenWidgetTest, WithoutATextureToDrawIntoThePictureIsNull) {
    ExpectWarning("picture.not-taken");
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.draw = [&](QPaintEvent*) { widget.GetFrameBuffer().Destroy(); };
    EXPECT_TRUE(widget.RenderPixmap(32, 16).isNull());
    EXPECT_EQ(recorder::CountCalls("readTexture"), 0u);
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(20, 10));
}

TEST_F(BGFXOffscreenWidgetTest, AnExceptionFromTheSceneRestoresEverything) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.draw = [](QPaintEvent*) { throw std::runtime_error("no"); };
    EXPECT_THROW(widget.RenderPixmap(32, 16), std::runtime_error);
    EXPECT_EQ(widget.GetViewport(), QRect(0, 0, 20, 10));
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(20, 10));
    EXPECT_THAT(recorder::Alive(), ElementsAre(testing::EndsWith("(20 x 10 RGBA8)")));
}

TEST_F(BGFXOffscreenWidgetTest, AThousandPicturesLeaveNothingBehind) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.draw = [&](QPaintEvent*) {
        ASSERT_TRUE(widget.GetRenderer().StartFrame(widget.GetFrameBuffer()));
    };
    widget.RenderPixmap(8, 4);
    auto const kinds = [&] { // without the numbers of the handles
        widget.GetFrameBuffer().SubmitOnDemand();
        std::vector<std::string> alive = recorder::Alive();
        for (std::string& text : alive)
            text.erase(0, text.find_first_of("(") == std::string::npos ? 0 : text.find('('));
        std::ranges::sort(alive);
        return alive;
    };
    std::vector<std::string> const before = kinds();
    for (int i = 0; i < 1000; ++i) {
        recorder::ClearCalls();
        ASSERT_FALSE(widget.RenderPixmap(8 + i % 5, 4).isNull());
    }
    EXPECT_EQ(kinds(), before);
}

TEST_F(BGFXOffscreenWidgetTest, ImpossibleSizesGiveANullPixmapOneWarningAndNothingElse) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    widget.SetViewport(QRect(1, 2, 3, 4));
    quint16 const handle = widget.GetFrameBuffer().GetHandle().idx;
    for (QSize const size :
         {QSize(0, 16), QSize(16, 0), QSize(0, 0), QSize(-1, 16), QSize(16, -1), QSize(65536, 16),
          QSize(16, 65536), QSize(16385, 16), QSize(16, 16385), QSize(65552, 16)}) {
        LogCapture const log;
        EXPECT_TRUE(widget.RenderPixmap(size).isNull());
        EXPECT_THAT(log.Lines(),
                    ElementsAre(LogLine{QtWarningMsg, "zarvex.zx3dqt",
                                        Streamed("A picture of", size.width(), "x", size.height(),
                                                 "pixels cannot be rendered: each side must be 1 to", 16384),
                                        false}));
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(widget.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(widget.GetFrameBuffer().GetHandle().idx, handle);
    EXPECT_EQ(SizeOf(widget.GetFrameBuffer()), QSize(20, 10));
    EXPECT_THAT(widget.viewports, IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, WhenBlitOrReadBackGoThereIsNoPicture) {
    Widget widget;
    ResizeAndCreate(widget, 20, 10);
    for (std::uint64_t const missing : {kBlit, kReadBack, kBlit | kReadBack}) {
        Configure([missing](auto& settings) { settings.supported = ~missing; });
        LogCapture const log;
        EXPECT_TRUE(widget.RenderPixmap(32, 16).isNull());
        EXPECT_THAT(log.Lines(), IsEmpty());
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXOffscreenWidgetTest, TheLargestPicturesAreThoseOfTheLargestTextures) {
    Widget widget;
    EXPECT_EQ(widget.RenderPixmap(16384, 1).size(), QSize(16384, 1));
    EXPECT_EQ(widget.RenderPixmap(1, 16384).size(), QSize(1, 16384));
    EXPECT_EQ(widget.RenderPixmap(4096, 4096).size(), QSize(4096, 4096));
}

TEST_F(BGFXOffscreenWidgetTest, PicturesHaveItsSamplesAndSoHasTheWidgetAfterwards) {
    Widget widget;
    EXPECT_EQ(widget.GetSampleCount(), 1u);
    EXPECT_EQ(widget.GetDepthFormat(), bgfx::TextureFormat::D16);
    widget.SetSampleCount(4);
    widget.SetDepthFormat(bgfx::TextureFormat::D32F);
    zx3D::FrameBufferOptions const expected{.sampleCount = 4, .depthFormat = bgfx::TextureFormat::D32F};
    EXPECT_EQ(widget.GetFrameBuffer().GetOptions(), expected);
    widget.draw = [&](QPaintEvent*) {
        EXPECT_EQ(widget.GetFrameBuffer().GetOptions(), expected);
        EXPECT_EQ(widget.GetFrameBuffer().GetSampleCount(), 4u);
        widget.SetSampleCount(2);
    };
    widget.RenderPixmap(32, 16);
    EXPECT_EQ(widget.GetSampleCount(), 2u);
    EXPECT_EQ(widget.GetFrameBuffer().GetOptions().sampleCount, 2u);
}

TEST_F(ShownOffscreenWidgetTest, AnotherSampleCountOrDepthAsksForAFrameAndTheSameDoesNot) {
    m_widget->viewports.clear();
    m_widget->SetSampleCount(1);
    m_widget->SetDepthFormat(bgfx::TextureFormat::D16);
    Settle();
    EXPECT_EQ(m_widget->viewports.size(), 0u);
    m_widget->SetSampleCount(4);
    Settle();
    EXPECT_EQ(m_widget->viewports.size(), 1u);
    m_widget->SetDepthFormat(bgfx::TextureFormat::D32F);
    Settle();
    EXPECT_EQ(m_widget->viewports.size(), 2u);
}
