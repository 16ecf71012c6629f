// What windows do to the widgets in them: moved elsewhere, docked, floated, hidden, minimised, resized. After
// each the picture appears by itself.
#include "CornerWidget.h"

#include "render/SharedRun.h"

#include <QDockWidget>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QMainWindow>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QWindow>

#include <array>
#include <memory>
#include <vector>

namespace zarvex::testing {

namespace {

/// A top-level window with one widget in it.
class HostWindow : public QWidget {
public:
    explicit HostWindow(QPoint place) {
        setLayout(new QVBoxLayout(this));
        setGeometry(QRect(place, QSize(360, 280)));
    }

    void Take(CornerWidget& widget) { layout()->addWidget(&widget.AsQWidget()); }
};

/// A window with something above it that the window manager does not know.
class Cover : public QWidget {
public:
    explicit Cover(QRect const& place) : QWidget(nullptr, Qt::BypassWindowManagerHint) { setGeometry(place); }
};

void ExpectShown(std::vector<std::unique_ptr<CornerWidget>> const& widgets) {
    for (auto const& widget : widgets)
        testing::ExpectShown(*widget);
}

} // namespace

using WidgetHostTest = SharedRunTest;

TEST_P(WidgetHostTest, ShownInThreeTopLevelWindowsInTurn) {
    ForEachKind([](WidgetKind kind) {
        auto first = std::make_unique<HostWindow>(QPoint(40, 60));
        HostWindow second(QPoint(500, 60));
        HostWindow third(QPoint(960, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
        first->Take(*widget);
        ShowAndWait(*first);
        ExpectShown(*widget);
        second.Take(*widget);
        ShowAndWait(second);
        ExpectShown(*widget);
        first.reset();
        ExpectShown(*widget);
        third.Take(*widget);
        ShowAndWait(third);
        ExpectShown(*widget);
        second.Take(*widget); // which is on the screen already
        ExpectShown(*widget);
    });
}

TEST_P(WidgetHostTest, TakenOutAsAWindowOfItsOwnAndPutBack) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkYellow);
        window.Take(*widget);
        ShowAndWait(window);
        ExpectShown(*widget);
        for (int i = 0; i < 3; ++i) {
            widget->AsQWidget().setParent(nullptr);
            widget->AsQWidget().setGeometry(500, 60, 300 + 8 * i, 200);
            ShowAndWait(widget->AsQWidget());
            ExpectShown(*widget);
            window.Take(*widget);
            widget->AsQWidget().show();
            ExpectShown(*widget);
        }
    });
}

TEST_P(WidgetHostTest, DockedAndFloatedFiftyTimes) {
    ForEachKind([](WidgetKind kind) {
        QMainWindow window;
        window.setAnimated(false);
        window.setGeometry(40, 60, 500, 400);
        QDockWidget dock;
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen, 1);
        auto const central = CornerWidget::Create(kind, Qt::darkMagenta, 2);
        window.setCentralWidget(&central->AsQWidget());
        dock.setWidget(&widget->AsQWidget());
        window.addDockWidget(Qt::BottomDockWidgetArea, &dock);
        ShowAndWait(window);
        for (int i = 0; i < 50 && !::testing::Test::HasFailure(); ++i) {
            dock.setFloating(true);
            dock.setGeometry(700, 100, 240 + 2 * i, 180);
            ExpectShown(*widget);
            dock.setFloating(false);
            ExpectShown(*widget);
            ExpectShown(*central);
        }
    });
}

TEST_P(WidgetHostTest, FiveHundredResizesInTenSecondsEndAtTheLastSize) {
    HostWindow left(QPoint(40, 60));
    HostWindow right(QPoint(800, 60));
    auto const native = CornerWidget::Create(WidgetKind::Native, Qt::darkCyan, 1);
    auto const offscreen = CornerWidget::Create(WidgetKind::Offscreen, Qt::darkYellow, 2);
    left.Take(*native);
    right.Take(*offscreen);
    ShowAndWait(left);
    ShowAndWait(right);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 500; ++i) {
        QSize const size(200 + i % 100 * 4, 150 + i % 37 * 8);
        left.resize(size);
        right.resize(size);
        WaitUntil([&] { return clock.elapsed() >= 20 * i; });
    }
    left.resize(347, 261);
    right.resize(347, 261);
    ExpectShown(*native);
    ExpectShown(*offscreen);
}

TEST_P(WidgetHostTest, GrowsAndShrinksByOnePixel) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkBlue);
        window.Take(*widget);
        ShowAndWait(window);
        for (QSize const size : {QSize(301, 201), QSize(302, 201), QSize(302, 202), QSize(301, 201)}) {
            window.resize(size);
            ExpectShown(*widget);
        }
    });
}

TEST_P(WidgetHostTest, MinimisedAndRestoredTwentyTimes) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        window.Take(*widget);
        ShowAndWait(window);
        for (int i = 0; i < 20; ++i) {
            window.showMinimized();
            ASSERT_TRUE(WaitUntil([&] { return !window.windowHandle()->isExposed(); }));
            window.showNormal();
            ASSERT_TRUE(WaitUntil([&] { return window.windowHandle()->isExposed(); }));
            ExpectShown(*widget);
        }
    });
}

TEST_P(WidgetHostTest, AWindowOfItsOwnIsMinimisedRestoredAndResized) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        QWidget& window = widget->AsQWidget();
        window.setGeometry(40, 60, 360, 280);
        ShowAndWait(window);
        ExpectShown(*widget);
        window.showMinimized();
        ASSERT_TRUE(WaitUntil([&] { return !window.windowHandle()->isExposed(); }));
        window.showNormal();
        ExpectShown(*widget);
        window.resize(400, 300);
        ExpectShown(*widget);
    });
}

TEST_P(WidgetHostTest, AskedForASizeWhileMaximisedItGoesOnPainting) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkYellow);
        QWidget& window = widget->AsQWidget();
        window.move(40, 60);
        ShowAndWait(window);
        ExpectShown(*widget);
        window.showMaximized();
        ASSERT_TRUE(WaitUntil([&] { return window.width() > 1000; }));
        ExpectShown(*widget);
        window.resize(300, 200); // which the window manager need not grant
        ExpectShown(*widget);
        int const paints = widget->CountPaints();
        window.update();
        EXPECT_TRUE(WaitUntil([&] { return widget->CountPaints() > paints; }));
        window.showNormal();
        ExpectShown(*widget);
    });
}

TEST_P(WidgetHostTest, HiddenAndShown) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkRed);
        window.Take(*widget);
        for (int i = 0; i < 5; ++i) {
            ShowAndWait(window);
            ExpectShown(*widget);
            widget->AsQWidget().hide();
            HandlePendingEvents();
            widget->AsQWidget().show();
            ExpectShown(*widget);
            window.hide();
            HandlePendingEvents();
        }
    });
}

TEST_P(WidgetHostTest, ClosedAndShown) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkRed);
        window.Take(*widget);
        for (int i = 0; i < 5; ++i) {
            ShowAndWait(window);
            ExpectShown(*widget);
            window.close();
            HandlePendingEvents();
        }
    });
}

TEST_P(WidgetHostTest, ResizedWhileHiddenItAppearsAtTheNewSize) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        window.Take(*widget);
        ShowAndWait(window);
        ExpectShown(*widget);
        window.hide();
        window.resize(411, 233);
        ShowAndWait(window);
        ExpectShown(*widget);
    });
}

TEST_P(WidgetHostTest, TabsSwitchedThirtyTimes) {
    ForEachKind([](WidgetKind kind) {
        QTabWidget tabs;
        tabs.setGeometry(40, 60, 400, 300);
        auto const first = CornerWidget::Create(kind, Qt::darkCyan, 1);
        auto const second = CornerWidget::Create(kind, Qt::darkYellow, 2);
        QWidget plain;
        tabs.addTab(&first->AsQWidget(), "first");
        tabs.addTab(&second->AsQWidget(), "second");
        tabs.addTab(&plain, "plain");
        ShowAndWait(tabs);
        for (int i = 0; i < 30; ++i) {
            tabs.setCurrentIndex(i % 3);
            if (i % 3 < 2)
                ExpectShown(i % 3 == 0 ? *first : *second);
        }
    });
}

TEST_P(WidgetHostTest, SplitterMovedCollapsedAndOpened) {
    ForEachKind([](WidgetKind kind) {
        QSplitter splitter;
        splitter.setGeometry(40, 60, 600, 300);
        auto const left = CornerWidget::Create(kind, Qt::darkCyan, 1);
        auto const right = CornerWidget::Create(kind, Qt::darkYellow, 2);
        splitter.addWidget(&left->AsQWidget());
        splitter.addWidget(&right->AsQWidget());
        ShowAndWait(splitter);
        for (int width = 100; width < 500; width += 37) {
            splitter.setSizes({width, 600 - width});
            ExpectShown(*left);
            ExpectShown(*right);
        }
        splitter.setSizes({0, 600});
        ExpectShown(*right);
        splitter.setSizes({300, 300});
        ExpectShown(*left);
        ExpectShown(*right);
    });
}

TEST_P(WidgetHostTest, FourViewsInOneWindow) {
    using enum WidgetKind;
    for (auto const& kinds :
         {std::array{Native, Native, Native, Native}, std::array{Offscreen, Offscreen, Offscreen, Offscreen},
          std::array{Native, Offscreen, Offscreen, Native}}) {
        QWidget window;
        auto* const grid = new QGridLayout(&window);
        QColor const colors[] = {Qt::darkCyan, Qt::darkYellow, Qt::darkMagenta, Qt::darkGreen};
        std::vector<std::unique_ptr<CornerWidget>> views;
        for (int i = 0; i < 4; ++i) {
            views.push_back(CornerWidget::Create(kinds[i], colors[i], static_cast<bgfx::ViewId>(i + 1)));
            grid->addWidget(&views.back()->AsQWidget(), i / 2, i % 2);
        }
        window.setGeometry(40, 60, 600, 500);
        ShowAndWait(window);
        ExpectShown(views);
        window.resize(705, 411);
        ExpectShown(views);
        views.erase(views.begin() + 1);
        ExpectShown(views);
    }
}

TEST_P(WidgetHostTest, UncoveredItShowsItsPictureAgain) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const widget = CornerWidget::Create(kind, Qt::darkGreen);
        window.Take(*widget);
        ShowAndWait(window);
        ExpectShown(*widget);
        QRect const all = window.frameGeometry();
        for (QRect const& place :
             {all, QRect(all.topLeft(), all.size() / 2), QRect(all.center(), all.size())}) {
            Cover cover(place);
            ShowAndWait(cover);
            HandlePendingEvents();
            cover.hide();
            ExpectShown(*widget);
        }
    });
}

TEST_P(WidgetHostTest, DeletedWhileShownLeavesTheOthers) {
    ForEachKind([](WidgetKind kind) {
        HostWindow window(QPoint(40, 60));
        auto const staying = CornerWidget::Create(kind, Qt::darkGreen, 1);
        window.Take(*staying);
        ShowAndWait(window);
        for (int i = 0; i < 5; ++i) {
            auto const leaving = CornerWidget::Create(kind, Qt::darkRed, 2);
            window.Take(*leaving);
            ExpectShown(*leaving);
        }
        ExpectShown(*staying);
    });
}

ZX3D_INSTANTIATE_BACKENDS(WidgetHostTest);

} // namespace zarvex::testing
