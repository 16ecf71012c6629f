// Paints of a part of a widget, as Qt asks for them beneath other widgets and in scroll areas; and that they
// come to an end.
#include "CornerWidget.h"

#include "harness/InputDevice.h"
#include "render/SharedRun.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <utility>

namespace zarvex::testing {

namespace {

constexpr int kIdleMilliseconds = 300;

/// True when the widget, to which nothing happens any more, stops painting. The window system may tell later
/// of what happened before.
bool ComesToRest(CornerWidget const& widget) {
    int paints = widget.CountPaints();
    QElapsedTimer sinceLast;
    sinceLast.start();
    return WaitUntil([&] {
        int const now = widget.CountPaints();
        if (std::exchange(paints, now) != now)
            sinceLast.start();
        return sinceLast.elapsed() > kIdleMilliseconds;
    });
}

QRgb PixelOnScreen(QWidget const& widget, QPoint place) {
    return GrabFromScreen(widget).pixel(place);
}

/// An off-screen widget with ordinary widgets over it.
class OverlaidWidget {
public:
    OverlaidWidget() : m_widget(CornerWidget::Create(WidgetKind::Offscreen, Qt::darkCyan)) {
        QWidget& widget = m_widget->AsQWidget();
        widget.setParent(&m_window);
        widget.setGeometry(0, 0, 360, 280);
        m_label = new QLabel("over it", &widget);
        m_label->setStyleSheet("background: #202020; color: white");
        m_label->setGeometry(200, 20, 100, 40);
        m_button = new QPushButton(&widget);
        m_button->setStyleSheet("QPushButton { background: #808080; border: none }"
                                "QPushButton:hover { background: #ffff00 }");
        m_button->setGeometry(60, 200, 120, 50);
        m_window.setGeometry(40, 60, 360, 280);
        m_mouse.MoveTo(QPoint(1500, 1100)); // out of the way
        ShowAndWait(m_window);
    }

    CornerWidget& Widget() { return *m_widget; }
    QLabel& Label() { return *m_label; }
    QPushButton& Button() { return *m_button; }

    void MoveMouseTo(QPoint place) { m_mouse.MoveTo(m_widget->AsQWidget().mapToGlobal(place)); }

private:
    QWidget m_window;
    std::unique_ptr<CornerWidget> m_widget;
    QLabel* m_label = nullptr;
    QPushButton* m_button = nullptr;
    InputDevice m_mouse;
};

} // namespace

using PartialPaintTest = SharedRunTest;

TEST_P(PartialPaintTest, ThePictureBeneathAHoveredButtonStays) {
    OverlaidWidget overlaid;
    ExpectShown(overlaid.Widget());
    QPoint const middle = overlaid.Button().rect().center();
    for (int i = 0; i < 10; ++i) {
        overlaid.MoveMouseTo(overlaid.Button().geometry().center());
        ASSERT_TRUE(WaitUntil([&] { return PixelOnScreen(overlaid.Button(), middle) == qRgb(255, 255, 0); }));
        ExpectShown(overlaid.Widget());
        overlaid.MoveMouseTo(QPoint(300, 250));
        ASSERT_TRUE(
            WaitUntil([&] { return PixelOnScreen(overlaid.Button(), middle) == qRgb(128, 128, 128); }));
        ExpectShown(overlaid.Widget());
    }
    EXPECT_TRUE(ComesToRest(overlaid.Widget()));
}

TEST_P(PartialPaintTest, ThePictureBeneathAChangingLabelStays) {
    OverlaidWidget overlaid;
    ExpectShown(overlaid.Widget());
    for (int i = 0; i < 30; ++i) {
        overlaid.Label().setText(QString::number(i));
        overlaid.Label().move(200 + i, 20 + i);
        if (i % 10 == 9)
            ExpectShown(overlaid.Widget());
        HandlePendingEvents();
    }
    overlaid.Label().hide();
    ExpectShown(overlaid.Widget());
    EXPECT_TRUE(ComesToRest(overlaid.Widget()));
}

TEST_P(PartialPaintTest, ResizedBeneathItsChildren) {
    OverlaidWidget overlaid;
    for (int i = 0; i < 10; ++i) {
        overlaid.Widget().AsQWidget().resize(320 + 4 * i, 260 - 3 * i);
        ExpectShown(overlaid.Widget());
    }
    EXPECT_TRUE(ComesToRest(overlaid.Widget()));
}

TEST_P(PartialPaintTest, AnUpdateOfAPartLeavesTheWholePicture) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        widget->AsQWidget().move(40, 60);
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
        for (QRect const part : {QRect(10, 20, 30, 40), QRect(0, 0, 320, 1), QRect(310, 230, 10, 10)}) {
            int const before = widget->CountPaints();
            widget->AsQWidget().update(part);
            ASSERT_TRUE(WaitUntil([&] { return widget->CountPaints() > before; }));
            ExpectShown(*widget);
        }
        EXPECT_TRUE(ComesToRest(*widget));
    });
}

TEST_P(PartialPaintTest, InAScrollAreaTheVisiblePartShows) {
    ForEachKind([](WidgetKind kind) {
        QScrollArea area;
        auto const widget = CornerWidget::Create(kind, Qt::darkMagenta);
        widget->AsQWidget().resize(700, 600);
        area.setWidget(&widget->AsQWidget());
        area.setGeometry(40, 60, 300, 240);
        ShowAndWait(area);
        ExpectShown(*widget);
        EXPECT_TRUE(ComesToRest(*widget));
        for (QPoint const place : {QPoint(37, 0), QPoint(390, 350), QPoint(400, 3), QPoint(0, 0)}) {
            area.horizontalScrollBar()->setValue(place.x());
            area.verticalScrollBar()->setValue(place.y());
            ExpectShown(*widget);
            EXPECT_TRUE(ComesToRest(*widget));
        }
        area.takeWidget();
    });
}

TEST_P(PartialPaintTest, PutIntoAScrollAreaThatIsShown) {
    ForEachKind([](WidgetKind kind) {
        QWidget window;
        auto* const layout = new QVBoxLayout(&window);
        auto* const area = new QScrollArea;
        layout->addWidget(new QLabel("above it"));
        layout->addWidget(area);
        window.setGeometry(40, 60, 360, 280);
        ShowAndWait(window);
        auto const widget = CornerWidget::Create(kind, Qt::darkMagenta);
        widget->AsQWidget().resize(700, 600);
        area->setWidget(&widget->AsQWidget());
        widget->AsQWidget().show();
        ExpectShown(*widget);
        area->verticalScrollBar()->setValue(100);
        ExpectShown(*widget);
        area->takeWidget();
    });
}

TEST_P(PartialPaintTest, AWidgetBesideItGoesOnChanging) {
    ForEachKind([](WidgetKind kind) {
        QWidget window;
        auto* const layout = new QVBoxLayout(&window);
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        auto* const label = new QLabel;
        label->setAutoFillBackground(true);
        layout->addWidget(&widget->AsQWidget());
        layout->addWidget(label);
        window.setGeometry(40, 60, 360, 280);
        ShowAndWait(window);
        for (QColor const color : {Qt::red, Qt::blue, Qt::yellow}) {
            int const before = widget->CountPaints();
            widget->AsQWidget().update();
            ASSERT_TRUE(WaitUntil([&] { return widget->CountPaints() > before; }));
            label->setPalette(QPalette(Qt::black, color));
            EXPECT_TRUE(WaitUntil([&] { return PixelOnScreen(*label, QPoint(2, 2)) == color.rgb(); }))
                << color.name().toStdString();
        }
        ExpectShown(*widget);
    });
}

TEST_P(PartialPaintTest, PaintsNothingWhileNothingHappens) {
    ForEachKind([](WidgetKind kind) {
        QWidget window;
        auto* const layout = new QVBoxLayout(&window);
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        layout->addWidget(&widget->AsQWidget());
        layout->addWidget(new QLabel("below it"));
        window.setGeometry(40, 60, 360, 280);
        ShowAndWait(window);
        ExpectShown(*widget);
        EXPECT_TRUE(ComesToRest(*widget));
        window.resize(400, 300);
        ExpectShown(*widget);
        EXPECT_TRUE(ComesToRest(*widget));
        window.hide();
        EXPECT_TRUE(ComesToRest(*widget));
    });
}

ZX3D_INSTANTIATE_BACKENDS(PartialPaintTest);

} // namespace zarvex::testing
