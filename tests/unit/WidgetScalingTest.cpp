// The widget targets at device pixel ratios other than 1.
#include "PixelRatio.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <Picture.h>
#include <ScaledTest.h>
#include <TopLevels.h>

#include <QFile>
#include <QPaintEvent>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

using namespace zarvex::zx3DQt;

namespace {

class NativeWidget : public BGFXNativeWidget {
public:
    explicit NativeWidget(QWidget* parent) : BGFXNativeWidget(parent) {}
    ~NativeWidget() override = default;

    using BGFXNativeWidget::eventFilter;
    using BGFXNativeWidget::GetPixelRatio;

    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        drawn = GetViewport();
    }

    QRect drawn; ///< the viewport when it was painted last
};

class OffscreenWidget : public BGFXOffscreenWidget {
public:
    explicit OffscreenWidget(QWidget* parent) : BGFXOffscreenWidget(parent) {}
    ~OffscreenWidget() override = default;

    using BGFXOffscreenWidget::GetPixelRatio;
    using BGFXOffscreenWidget::GrabFrameBuffer;

    void paintEvent(QPaintEvent* event) override {
        BGFXOffscreenWidget::paintEvent(event);
        drawn = GetViewport();
        if (draw)
            draw();
    }

    QRect drawn; ///< the viewport when it was painted last
    std::function<void()> draw;
};

/// A ratio, and the size of a widget of 101 × 67 in physical pixels.
struct Scale {
    char const* factor;
    QSize physical;

    friend std::ostream& operator<<(std::ostream& stream, Scale const& scale) {
        return stream << scale.factor;
    }
};

class WidgetScalingTest : public ScaledTest, public testing::WithParamInterface<Scale> {
protected:
    void SetUp() override {
        ScaledTest::SetUp();
        StartAt(GetParam().factor);
        m_top = std::make_unique<QWidget>();
        m_top->resize(300, 200);
    }

    void TearDown() override {
        m_top.reset();
        ScaledTest::TearDown();
    }

    template<typename Target>
    Target* Show() {
        auto* const widget = new Target(m_top.get());
        widget->setGeometry(10, 20, 101, 67);
        m_top->show();
        Settle();
        return widget;
    }

    static double Ratio() { return QString(GetParam().factor).toDouble(); }

    template<typename Target>
    static void ExpectPhysicalSize(Target const& widget) {
        EXPECT_EQ(widget.GetFrameBuffer().GetWidth(), GetParam().physical.width());
        EXPECT_EQ(widget.GetFrameBuffer().GetHeight(), GetParam().physical.height());
        EXPECT_EQ(widget.GetViewport(), QRect(QPoint(0, 0), GetParam().physical));
        EXPECT_EQ(widget.drawn, QRect(QPoint(0, 0), GetParam().physical));
    }

    std::unique_ptr<QWidget> m_top;
};

std::string NameOf(testing::TestParamInfo<Scale> const& info) {
    return QString("At" + QString(info.param.factor)).replace('.', '_').toStdString();
}

} // namespace

TEST_P(WidgetScalingTest, TheNativeWidgetIsDrawnInPhysicalPixels) {
    auto const* const widget = Show<NativeWidget>();
    ExpectPhysicalSize(*widget);
    EXPECT_EQ(widget->GetPixelRatio(), Ratio());
}

TEST_P(WidgetScalingTest, TheNativeWidgetFollowsANewSize) {
    auto* const widget = Show<NativeWidget>();
    widget->resize(40, 20);
    Settle();
    widget->resize(101, 67);
    Settle();
    ExpectPhysicalSize(*widget);
}

TEST_P(WidgetScalingTest, ThePictureOfTheNativeWidgetHasTheSizeAskedFor) {
    Picture const picture;
    picture.Deliver();
    auto* const widget = Show<NativeWidget>();
    QPixmap const pixmap = widget->RenderPixmap(33, 17);
    EXPECT_EQ(pixmap.size(), QSize(33, 17));
    EXPECT_EQ(pixmap.devicePixelRatio(), 1.0);
    picture.ExpectIn(pixmap.toImage());
    Settle();
    ExpectPhysicalSize(*widget);
}

TEST_P(WidgetScalingTest, TheOffscreenWidgetIsDrawnInPhysicalPixels) {
    auto const* const widget = Show<OffscreenWidget>();
    ExpectPhysicalSize(*widget);
    EXPECT_EQ(widget->GetPixelRatio(), Ratio());
    EXPECT_EQ(recorder::CallsNamed("createTexture2D").back().arguments,
              std::to_string(GetParam().physical.width()) + ", " +
                  std::to_string(GetParam().physical.height()) + ", false, 1, RGBA8, 0xc00000000000");
}

TEST_P(WidgetScalingTest, AVisiblePartOfTheOffscreenWidgetIsScaledInPositionAndSize) {
    auto* const widget = Show<OffscreenWidget>();
    QPaintEvent paint(QRect(5, 3, 7, 9));
    widget->paintEvent(&paint);
    EXPECT_EQ(widget->GetViewport(), QRect(QPoint(qRound(5 * Ratio()), qRound(3 * Ratio())),
                                           QSize(qRound(7 * Ratio()), qRound(9 * Ratio()))));
}

TEST_P(WidgetScalingTest, TheOffscreenWidgetShowsEveryPhysicalPixel) {
    Picture const picture;
    picture.Deliver();
    auto* const widget = Show<OffscreenWidget>();
    widget->resize(100, 60); // whole in physical pixels at every ratio
    Settle();
    widget->draw = [&] {
        widget->GetFrameBuffer().SubmitOnDemand();
        widget->Flush();
    };
    QImage const image = widget->grab().toImage();
    ASSERT_EQ(image.size(), QSize(100, 60) * Ratio());
    picture.ExpectIn(image);
}

TEST_P(WidgetScalingTest, ThePictureOfTheOffscreenWidgetHasTheSizeAskedFor) {
    Picture const picture;
    picture.Deliver();
    auto* const widget = Show<OffscreenWidget>();
    QPixmap const pixmap = widget->RenderPixmap(33, 17);
    EXPECT_EQ(pixmap.size(), QSize(33, 17));
    EXPECT_EQ(pixmap.devicePixelRatio(), 1.0);
    picture.ExpectIn(pixmap.toImage());
    widget->repaint();
    ExpectPhysicalSize(*widget);
}

INSTANTIATE_TEST_SUITE_P(Scales, WidgetScalingTest,
                         testing::Values(Scale{"1", {101, 67}}, Scale{"1.25", {126, 84}},
                                         Scale{"1.5", {152, 101}}, Scale{"2", {202, 134}}),
                         NameOf);

TEST_F(ScaledTest, ThePixelRatioIsAtLeastOne) {
    StartAt("0.5");
    QWidget parent;
    EXPECT_EQ(NativeWidget(&parent).GetPixelRatio(), 1.0);
    EXPECT_EQ(OffscreenWidget(&parent).GetPixelRatio(), 1.0);
}

// The platform's own ratios ("dpr") do not reach widgets in Qt 6.8: the density of the screen sets it.
TEST_F(ScaledTest, TheOffscreenWidgetFollowsThePixelRatioOfItsScreen) {
    QTemporaryDir const folder;
    QFile file(folder.filePath("screens.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"screens": [
        {"name": "left", "x": 0, "y": 0, "width": 800, "height": 600,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
        {"name": "right", "x": 800, "y": 0, "width": 1600, "height": 1200,
         "logicalDpi": 192, "logicalBaseDpi": 96, "dpr": 1}]})");
    file.close();
    StartAt("1", "offscreen:configfile=" + file.fileName().toUtf8());
    QWidget top;
    top.resize(300, 200);
    auto* const widget = new OffscreenWidget(&top);
    widget->setGeometry(10, 20, 101, 67);
    top.show();
    for (int const ratio : {1, 2, 1}) {
        top.move(QGuiApplication::screens().at(ratio - 1)->geometry().topLeft() + QPoint(50, 50));
        Settle();
        ASSERT_EQ(top.devicePixelRatio(), ratio);
        QSize const expected = QSize(101, 67) * ratio;
        EXPECT_EQ(QSize(widget->GetFrameBuffer().GetWidth(), widget->GetFrameBuffer().GetHeight()), expected);
        EXPECT_EQ(widget->drawn, QRect(QPoint(0, 0), expected));
        EXPECT_EQ(widget->GetPixelRatio(), ratio);
    }
}

// The conversion to physical pixels.

TEST(PixelRatioTest, EachComponentIsRoundedHalfAwayFromZero) {
    EXPECT_EQ(ToPhysical(QSize(101, 67), 1.5), QSize(152, 101));
    EXPECT_EQ(ToPhysical(QSize(101, 67), 1.25), QSize(126, 84));
    EXPECT_EQ(ToPhysical(QSize(0, 7), 2.0), QSize(0, 14));
    EXPECT_EQ(ToPhysical(QPoint(-3, 5), 1.5), QPoint(-5, 8));
    EXPECT_EQ(ToPhysical(QPoint(-1, -2), 1.25), QPoint(-1, -3));
    EXPECT_EQ(ToPhysical(QRect(10, 20, 30, 40), 2.0), QRect(20, 40, 60, 80));
    EXPECT_EQ(ToPhysical(QRect(1, 1, 1, 1), 1.5), QRect(2, 2, 2, 2))
        << "the size on its own, not from corner to corner";
    EXPECT_EQ(ToPhysical(QRect(), 2.0), QRect(0, 0, 0, 0));
}
