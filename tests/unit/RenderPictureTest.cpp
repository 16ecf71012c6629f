// Pictures with options: of windows and of both kinds of widgets.
#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <Fixtures.h>
#include <LogCapture.h>
#include <Picture.h>
#include <TopLevels.h>
#include <Warnings.h>

#include <QResizeEvent>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

/// What all three targets offer, drawing what they are told to.
class Target {
public:
    virtual ~Target() = default;

    virtual QImage Take(PictureOptions const& options) = 0;
    virtual zx3D::FrameBuffer& FrameBuffer() = 0;
    virtual QRect& Viewport() = 0;
    virtual double PixelRatio() const = 0;
    virtual void SetSamples(std::uint32_t count) = 0;
    virtual std::uint32_t Samples() const = 0;

    std::function<void()> draw = [] {};
    int draws = 0;

protected:
    void Draw() {
        ++draws;
        draw();
    }
};

class WindowTarget final : public Target, public BGFXWindow {
public:
    QImage Take(PictureOptions const& options) override {
        return RenderPicture(options, [this](double pixelRatio) {
            EXPECT_EQ(pixelRatio, GetPixelRatio());
            Draw();
        });
    }
    zx3D::FrameBuffer& FrameBuffer() override { return GetFrameBuffer(); }
    QRect& Viewport() override { return GetViewport(); }
    double PixelRatio() const override { return GetPixelRatio(); }
    void SetSamples(std::uint32_t count) override { SetSampleCount(count); }
    std::uint32_t Samples() const override { return GetSampleCount(); }
};

template<typename Widget>
class WidgetTarget final : public Target, public Widget {
public:
    WidgetTarget() = default;
    ~WidgetTarget() override = default;

    QImage Take(PictureOptions const& options) override { return Widget::RenderPicture(options); }
    zx3D::FrameBuffer& FrameBuffer() override { return Widget::GetFrameBuffer(); }
    QRect& Viewport() override { return Widget::GetViewport(); }
    double PixelRatio() const override { return Widget::GetPixelRatio(); }
    void SetSamples(std::uint32_t count) override { Widget::SetSampleCount(count); }
    std::uint32_t Samples() const override { return Widget::GetSampleCount(); }

    void paintEvent(QPaintEvent* event) override {
        Widget::paintEvent(event);
        if (event == nullptr)
            Draw();
        else
            ++paints;
    }
    void resizeEvent(QResizeEvent* event) override { Widget::resizeEvent(event); }

    int paints = 0; ///< for the screen
};

using NativeTarget = WidgetTarget<BGFXNativeWidget>;
using OffscreenTarget = WidgetTarget<BGFXOffscreenWidget>;

struct Kind {
    char const* name;
    std::unique_ptr<Target> (*create)();
};

Kind const kKinds[] = {
    {"Window", [] { return std::unique_ptr<Target>(new WindowTarget); }},
    {"NativeWidget", [] { return std::unique_ptr<Target>(new NativeTarget); }},
    {"OffscreenWidget", [] { return std::unique_ptr<Target>(new OffscreenTarget); }},
};

/// With a target that has never been shown.
class RenderPictureTest : public LibraryFixture, public testing::WithParamInterface<Kind> {
protected:
    void SetUp() override {
        LibraryFixture::SetUp();
        m_target = GetParam().create();
        recorder::ClearCalls();
    }

    void TearDown() override {
        m_target.reset();
        LibraryFixture::TearDown();
    }

    static QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
        return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
    }

    /// No picture, one warning and nothing else; the target is free for another.
    void ExpectRefusal(PictureOptions const& options, std::string const& warning) {
        LogCapture const log;
        recorder::ClearCalls();
        EXPECT_TRUE(m_target->Take(options).isNull());
        EXPECT_THAT(log.Lines(), ElementsAre(LogLine{QtWarningMsg, "zarvex.zx3dqt", warning, false}));
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_EQ(m_target->draws, 0);
    }

    std::unique_ptr<Target> m_target;
};

constexpr char kUnsupported[] = "there is no picture where the library does not run, or the GPU cannot copy "
                                "textures and read them back [picture.unsupported]";

} // namespace

// What is drawn, and into what.

TEST_P(RenderPictureTest, TakesTheseCallsInThisOrder) {
    Configure([](auto& settings) { settings.readLatency = 1; });
    m_target->draw = [] { bgfx::touch(7); };
    m_target->Take({.size = QSize(32, 16)});
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre(StartsWith("createTexture2D(32, 16, false, 1, RGBA8, "),
                            StartsWith("createTexture2D(32, 16, false, 1, D16, "),
                            "createFrameBuffer(texture#0, texture#1, true)",
                            "createTexture2D(32, 16, false, 1, RGBA8, 0xc00000000000)",
                            "touch(7)", // what is drawn
                            "getTexture(frameBuffer#0, 0)",
                            "blit(254, texture#2, 0, 0, texture#0, 0, 0, 65535, 65535)",
                            "readTexture(texture#2, 0)", "frame(false)", "frame(false)", "destroy(texture#2)",
                            "destroy(frameBuffer#0)", "frame(false)")); // the last frees all of it
}

TEST_P(RenderPictureTest, DrawsOnceIntoAFrameBufferOfThePicturesSizeAndHasItsOwnAfterwards) {
    m_target->Viewport() = QRect(1, 2, 3, 4);
    QSize const size = SizeOf(m_target->FrameBuffer());
    m_target->draw = [this] {
        EXPECT_EQ(m_target->Viewport(), QRect(0, 0, 32, 16));
        EXPECT_EQ(SizeOf(m_target->FrameBuffer()), QSize(32, 16));
        EXPECT_EQ(m_target->FrameBuffer().GetNativeWindow(), nullptr);
        EXPECT_TRUE(bgfx::isValid(m_target->FrameBuffer().GetHandle()));
        m_target->Viewport() = QRect(9, 9, 9, 9);
    };
    EXPECT_EQ(m_target->Take({.size = QSize(32, 16)}).size(), QSize(32, 16));
    EXPECT_EQ(m_target->draws, 1);
    EXPECT_EQ(m_target->Viewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(SizeOf(m_target->FrameBuffer()), size);
    EXPECT_FALSE(bgfx::isValid(m_target->FrameBuffer().GetHandle()));
}

TEST_P(RenderPictureTest, AThousandPicturesLeaveNothingBehind) {
    for (int i = 0; i < 1000; ++i) {
        recorder::ClearCalls();
        ASSERT_FALSE(m_target->Take({.size = QSize(8 + i % 5, 4)}).isNull());
    }
    EXPECT_THAT(recorder::Alive(), Not(Contains(StartsWith("texture#"))));
    EXPECT_THAT(recorder::Alive(), Not(Contains(StartsWith("frameBuffer#"))));
}

// The pixels.

TEST_P(RenderPictureTest, ThePictureIsOpaqueInTheColoursThatWereDrawnWhateverTheirAlpha) {
    for (int const alpha : {0, 1, 128, 255}) {
        Picture(alpha).Deliver();
        QImage const picture = m_target->Take({.size = QSize(33, 17)});
        EXPECT_EQ(picture.format(), QImage::Format_RGBX8888);
        EXPECT_FALSE(picture.hasAlphaChannel());
        Picture(255).ExpectIn(picture);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                ASSERT_EQ(picture.constScanLine(y)[4 * x + 3], 255) << x << ", " << y;
        }
    }
}

TEST_P(RenderPictureTest, ThePictureIsTurnedWhereTheOriginIsAtTheBottom) {
    Configure([](auto& settings) { settings.originBottomLeft = true; });
    Picture const picture;
    picture.Deliver();
    picture.ExpectFlippedIn(m_target->Take({.size = QSize(33, 17)}));
}

TEST_P(RenderPictureTest, WithAlphaColoursAreThoseThatWereDrawnUpToTheirAlpha) {
    Picture const drawn(100);
    drawn.Deliver();
    QImage const picture = m_target->Take({.size = QSize(40, 30), .hasAlpha = true});
    ASSERT_EQ(picture.format(), QImage::Format_RGBA8888_Premultiplied);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            uchar const* const pixel = picture.constScanLine(y) + 4 * x;
            QColor const color = drawn.At(x, y);
            ASSERT_EQ(pixel[0], std::min(color.red(), 100)) << x << ", " << y;
            ASSERT_EQ(pixel[1], std::min(color.green(), 100)) << x << ", " << y;
            ASSERT_EQ(pixel[2], std::min(color.blue(), 100)) << x << ", " << y;
            ASSERT_EQ(pixel[3], 100) << x << ", " << y;
        }
    }
}

TEST_P(RenderPictureTest, WithAlphaAndOnlyThenWhatIsBlendedKeepsIt) {
    for (bool const hasAlpha : {false, true}) {
        m_target->draw = [&] {
            m_target->FrameBuffer().BindToView(9);
            EXPECT_EQ(zx3D::FrameBuffer::BlendsAlpha(9), hasAlpha);
        };
        m_target->Take({.size = QSize(32, 16), .hasAlpha = hasAlpha});
        EXPECT_FALSE(zx3D::FrameBuffer::BlendsAlpha(9)) << "afterwards";
        EXPECT_FALSE(m_target->FrameBuffer().GetOptions().blendsAlpha);
    }
}

// Pixel ratio and samples.

TEST_P(RenderPictureTest, ThePixelRatioIsThePicturesWhileItIsDrawn) {
    double const own = m_target->PixelRatio();
    for (double const ratio : {0.25, 1.0, 2.0, 6.25}) {
        m_target->draw = [&] { EXPECT_EQ(m_target->PixelRatio(), ratio); };
        EXPECT_EQ(m_target->Take({.size = QSize(32, 16), .pixelRatio = ratio}).devicePixelRatio(), ratio);
        EXPECT_EQ(m_target->PixelRatio(), own);
    }
    m_target->draw = [&] { EXPECT_EQ(m_target->PixelRatio(), own); };
    EXPECT_EQ(m_target->Take({.size = QSize(32, 16)}).devicePixelRatio(), own);
    EXPECT_EQ(m_target->draws, 5);
}

TEST_P(RenderPictureTest, ThePictureHasItsSamplesOrThoseOfTheTargetAndTheTargetKeepsItsOwn) {
    m_target->draw = [this] { EXPECT_EQ(m_target->FrameBuffer().GetSampleCount(), 8u); };
    m_target->Take({.size = QSize(32, 16), .sampleCount = 8});
    EXPECT_EQ(m_target->Samples(), 1u);
    m_target->SetSamples(4);
    m_target->draw = [this] { EXPECT_EQ(m_target->FrameBuffer().GetSampleCount(), 4u); };
    m_target->Take({.size = QSize(32, 16)});
    m_target->draw = [this] { EXPECT_EQ(m_target->FrameBuffer().GetSampleCount(), 1u); };
    m_target->Take({.size = QSize(32, 16), .sampleCount = 1});
    EXPECT_EQ(m_target->draws, 3);
    EXPECT_EQ(m_target->Samples(), 4u);
    EXPECT_EQ(m_target->FrameBuffer().GetOptions().sampleCount, 4u);
}

TEST_P(RenderPictureTest, SamplesThatAreSetWhileAPictureIsDrawnAreTheTargets) {
    m_target->draw = [this] { m_target->SetSamples(2); };
    m_target->Take({.size = QSize(32, 16), .sampleCount = 8});
    EXPECT_EQ(m_target->Samples(), 2u);
    EXPECT_EQ(m_target->FrameBuffer().GetOptions().sampleCount, 2u);
}

// What there is no picture of.

TEST_P(RenderPictureTest, ImpossibleSizesAreOneWarningAndNothingElse) {
    for (QSize const size : {QSize(), QSize(0, 16), QSize(16, 0), QSize(-1, 16), QSize(16, -1),
                             QSize(16385, 16), QSize(16, 16385), QSize(65552, 16)}) {
        ExpectRefusal({.size = size}, Streamed("A picture of", size.width(), "x", size.height(),
                                               "pixels cannot be rendered: each side must be 1 to", 16384));
    }
    EXPECT_EQ(m_target->Take({.size = QSize(16384, 1)}).size(), QSize(16384, 1));
}

TEST_P(RenderPictureTest, ImpossibleRatiosAreOneWarningAndNothingElse) {
    double const infinite = std::numeric_limits<double>::infinity();
    for (double const ratio : {0.0, -1.0, infinite, -infinite, std::nan("")}) {
        ExpectRefusal({.size = QSize(32, 16), .pixelRatio = ratio},
                      QString("a picture cannot have a pixel ratio of %1: it must be more than 0 "
                              "[picture.no-ratio]")
                          .arg(ratio)
                          .toStdString());
    }
    EXPECT_FALSE(m_target->Take({.size = QSize(32, 16)}).isNull());
}

TEST_P(RenderPictureTest, WithoutBlitReadBackOrCapabilitiesThereIsAWarning) {
    for (std::uint64_t const missing : {BGFX_CAPS_TEXTURE_BLIT, BGFX_CAPS_TEXTURE_READ_BACK}) {
        Configure([missing](auto& settings) { settings.supported = ~missing; });
        ExpectRefusal({.size = QSize(32, 16)}, kUnsupported);
    }
    Configure([](auto& settings) { settings.hasCaps = false; });
    ExpectRefusal({.size = QSize(32, 16)}, kUnsupported);
}

TEST_P(RenderPictureTest, AfterShutdownThereIsAWarningAndInTheNextRunAPicture) {
    Shutdown();
    ExpectRefusal({.size = QSize(32, 16)}, kUnsupported);
    ASSERT_TRUE(Init(false));
    EXPECT_FALSE(m_target->Take({.size = QSize(32, 16)}).isNull());
}

TEST_P(RenderPictureTest, WithoutTexturesThereIsAWarning) {
    for (int const left : {0, 1, 2}) { // the last is enough for a frame buffer
        bgfx::frame();                 // gives back what was destroyed
        TextureHog const hog(left);
        std::vector<std::string> const alive = recorder::Alive();
        LogCapture const log;
        EXPECT_TRUE(m_target->Take({.size = QSize(32, 16)}).isNull());
        EXPECT_THAT(log.Texts(),
                    Contains("a picture of 32 x 16 pixels could not be taken [picture.not-taken]"));
        EXPECT_EQ(recorder::Alive(), alive);
    }
    bgfx::frame();
    EXPECT_FALSE(m_target->Take({.size = QSize(32, 16)}).isNull());
}

TEST_P(RenderPictureTest, AnExceptionComesThroughAndLeavesNothingBehind) {
    m_target->Viewport() = QRect(1, 2, 3, 4);
    double const own = m_target->PixelRatio();
    m_target->draw = [] {
        bgfx::touch(7);
        throw std::runtime_error("no");
    };
    EXPECT_THROW(m_target->Take({.size = QSize(32, 16), .pixelRatio = 5.0}), std::runtime_error);
    EXPECT_EQ(m_target->Viewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(m_target->PixelRatio(), own);
    EXPECT_THAT(recorder::Alive(), Not(Contains(StartsWith("texture#"))));
    EXPECT_EQ(recorder::CallTexts().back(), "frame(false)") << "of what had been recorded";
    m_target->draw = [] {};
    EXPECT_FALSE(m_target->Take({.size = QSize(32, 16)}).isNull());
}

TEST_P(RenderPictureTest, APictureWithinAPictureIsAWarningAndTheOuterOneIsTaken) {
    Picture const drawn;
    drawn.Deliver();
    m_target->draw = [this] { EXPECT_TRUE(m_target->Take({.size = QSize(3, 3)}).isNull()); };
    LogCapture const log;
    drawn.ExpectIn(m_target->Take({.size = QSize(32, 16)}));
    EXPECT_EQ(m_target->draws, 1);
    EXPECT_THAT(log.Texts(), Contains("a window or widget that draws a picture was asked for another one "
                                      "meanwhile [picture.in-picture]")
                                 .Times(1));
}

TEST_P(RenderPictureTest, AnotherTargetMayTakeAPictureBeforeTheFrameIsStarted) {
    std::unique_ptr<Target> const other = GetParam().create();
    m_target->draw = [&] {
        EXPECT_EQ(other->Take({.size = QSize(3, 5), .pixelRatio = 3.0}).size(), QSize(3, 5));
        EXPECT_EQ(SizeOf(m_target->FrameBuffer()), QSize(32, 16));
    };
    EXPECT_EQ(m_target->Take({.size = QSize(32, 16)}).size(), QSize(32, 16));
}

INSTANTIATE_TEST_SUITE_P(, RenderPictureTest, testing::ValuesIn(kKinds),
                         [](auto const& row) { return std::string(row.param.name); });

// What one kind alone has.

using PictureOfTest = LibraryFixture;

TEST_F(PictureOfTest, AShownNativeWidgetKeepsItsSurfaceAndPaintsNoFrameForIt) {
    NativeTarget widget;
    widget.resize(200, 100);
    widget.show();
    Settle();
    widget.FrameBuffer().SubmitOnDemand();
    bgfx::FrameBufferHandle const handle = widget.FrameBuffer().GetHandle();
    ASSERT_TRUE(bgfx::isValid(handle));
    int const paints = widget.paints;
    recorder::ClearCalls();
    EXPECT_FALSE(widget.Take({.size = QSize(32, 16)}).isNull());
    EXPECT_THAT(recorder::CallTexts(),
                Not(Contains("destroy(frameBuffer#" + std::to_string(handle.idx) + ")")));
    Settle();
    EXPECT_EQ(widget.FrameBuffer().GetHandle().idx, handle.idx);
    EXPECT_EQ(widget.paints, paints);
}

TEST_F(PictureOfTest, AWidgetTakesNoPixmapWhileAPictureIsDrawn) {
    NativeTarget native;
    OffscreenTarget offscreen;
    auto const check = [](auto& widget) {
        widget.draw = [&widget] {
            quint16 const textures = widget.FrameBuffer().GetHandle().idx;
            EXPECT_TRUE(widget.RenderPixmap(8, 8).isNull());
            EXPECT_EQ(widget.FrameBuffer().GetHandle().idx, textures);
        };
        EXPECT_FALSE(widget.Take({.size = QSize(32, 16)}).isNull());
        EXPECT_EQ(widget.draws, 1);
    };
    ExpectWarning("picture.in-picture");
    check(native);
    check(offscreen);
}

TEST_F(PictureOfTest, AnOffscreenWidgetFollowsAResizeThatComesWhileAPictureIsDrawn) {
    OffscreenTarget widget;
    auto const resize = [&widget](int width, int height) {
        QResizeEvent event(QSize(width, height), widget.size());
        widget.resize(width, height);
        widget.resizeEvent(&event);
    };
    resize(20, 10);
    widget.draw = [&] { resize(30, 40); };
    EXPECT_EQ(widget.Take({.size = QSize(32, 16)}).size(), QSize(32, 16));
    EXPECT_EQ(widget.Viewport(), QRect(0, 0, 30, 40));
    EXPECT_EQ(widget.FrameBuffer().GetWidth(), 30);
    EXPECT_EQ(widget.FrameBuffer().GetHeight(), 40);
    EXPECT_THAT(recorder::Alive(), Contains(HasSubstr("(30 x 40 RGBA8)"))) << "what it is read through";
}

TEST_F(PictureOfTest, AnOffscreenWidgetThatFlushesAPictureIsReadInItsOwnSizeAfterwards) {
    OffscreenTarget widget;
    QResizeEvent event(QSize(20, 10), widget.size());
    widget.resize(20, 10);
    widget.resizeEvent(&event);
    Picture const drawn;
    drawn.Deliver();
    widget.draw = [&widget] { widget.Flush(); };
    drawn.ExpectIn(widget.Take({.size = QSize(32, 16)}));
    EXPECT_THAT(recorder::Alive(), Contains(HasSubstr("(20 x 10 RGBA8)")));
    EXPECT_THAT(recorder::Alive(), Not(Contains(HasSubstr("(32 x 16 RGBA8)"))));
}

TEST_F(PictureOfTest, AnOffscreenWidgetThatIsPaintedAfterAPictureCreatesNothingForIt) {
    OffscreenTarget widget;
    QResizeEvent event(QSize(20, 10), widget.size());
    widget.resize(20, 10);
    widget.resizeEvent(&event);
    recorder::ClearCalls();
    widget.Take({.size = QSize(32, 16)});
    EXPECT_THAT(recorder::CallTexts(), Not(Contains(HasSubstr("(20, 10, "))));
    EXPECT_THAT(recorder::Alive(), Contains(HasSubstr("(20 x 10 RGBA8)")).Times(1));
}

TEST_F(PictureOfTest, APictureIsTakenWhileAFrameIsInFlight) {
    ASSERT_TRUE(zx3D::Context::IsInitialized());
    WindowTarget window;
    Configure([](auto& settings) { settings.holdsFrames = true; });
    zx3D::Context::SubmitFrame();
    ASSERT_TRUE(zx3D::Context::IsFrameInFlight());
    Picture const drawn;
    drawn.Deliver();
    drawn.ExpectIn(window.Take({.size = QSize(32, 16)}));
    Configure([](auto& settings) { settings.holdsFrames = false; });
}

TEST_F(PictureOfTest, AWindowTakesWhatItsFunctionDrawsAndNothingElse) {
    BGFXWindow window;
    QString calls;
    QImage const picture =
        window.RenderPicture({.size = QSize(4, 2), .pixelRatio = 6.25},
                             [&](double pixelRatio) { calls += QString::number(pixelRatio); });
    EXPECT_EQ(picture.size(), QSize(4, 2));
    EXPECT_EQ(calls, "6.25");
    EXPECT_EQ(window.handle(), nullptr) << "it needs no window of the window system's";
}

/// Before the library's first run.
class PictureBeforeInitTest : public RecordedTest {};

TEST_F(PictureBeforeInitTest, ThereIsNoneButAWarning) {
    WindowTarget window;
    NativeTarget native;
    for (Target* const target : {static_cast<Target*>(&window), static_cast<Target*>(&native)}) {
        LogCapture const log;
        EXPECT_TRUE(target->Take({.size = QSize(32, 16)}).isNull());
        EXPECT_THAT(log.Texts(), ElementsAre(kUnsupported));
        EXPECT_EQ(target->draws, 0);
    }
}
