// How often widgets paint: once for each thing that asks for it. ZX3D_FULL_COUNTS=1 in the environment makes
// it 500 resizes and 1,000 pictures.
#include "CornerWidget.h"
#include "FullCounts.h"

#include "render/SharedRun.h"

#include <QVBoxLayout>

#include <memory>

namespace zarvex::testing {

namespace {

/// The widget by itself, or in a window with a layout.
struct Place {
    Place(CornerWidget& widget, bool isInside) {
        QWidget& qWidget = widget.AsQWidget();
        if (isInside) {
            host = std::make_unique<QWidget>();
            (new QVBoxLayout(host.get()))->addWidget(&qWidget);
        }
        topLevel = isInside ? host.get() : &qWidget;
        topLevel->setGeometry(40, 60, 360, 280);
        ShowAndWait(*topLevel);
        ExpectShown(widget);
        AwaitQuiet(widget);
    }

    ~Place() {
        if (host)
            host->layout()->itemAt(0)->widget()->setParent(nullptr);
    }

    std::unique_ptr<QWidget> host;
    QWidget* topLevel = nullptr;
};

} // namespace

using PaintCountTest = SharedRunTest;

TEST_P(PaintCountTest, AResizeIsOnePaint) {
    int const resizes = IsFull() ? 500 : 30;
    ForEachKind([&](WidgetKind kind) {
        for (bool const isInside : {false, true}) {
            SCOPED_TRACE(isInside ? "in a window" : "by itself");
            auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
            Place const place(*widget, isInside);
            int const before = widget->CountPaints();
            std::uint32_t const firstFrame = bgfx::frame();
            for (int i = 0; i < resizes; ++i) {
                int const paints = widget->CountPaints();
                place.topLevel->resize(300 + i * 37 % 200, 250 + i * 53 % 150); // grows and shrinks
                ASSERT_TRUE(WaitUntil([&] { return widget->CountPaints() > paints; }));
                AwaitQuiet(*widget);
                ExpectShown(*widget);
            }
            int const paints = widget->CountPaints() - before;
            // The window system may tell of one change in two pieces.
            EXPECT_LE(paints, resizes + (IsFull() ? 10 : 3));
            std::printf("%d resizes: %d paints, %u frames\n", resizes, paints,
                        bgfx::frame() - firstFrame - 1);
        }
    });
}

TEST_P(PaintCountTest, AnUpdateIsOnePaint) {
    ForEachKind([](WidgetKind kind) {
        for (bool const isInside : {false, true}) {
            SCOPED_TRACE(isInside ? "in a window" : "by itself");
            auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
            Place const place(*widget, isInside);
            int const before = widget->CountPaints();
            for (int i = 0; i < 10; ++i) {
                int const paints = widget->CountPaints();
                widget->AsQWidget().update();
                widget->AsQWidget().update();
                ASSERT_TRUE(WaitUntil([&] { return widget->CountPaints() > paints; }));
                AwaitQuiet(*widget);
            }
            EXPECT_EQ(widget->CountPaints() - before, 10);
        }
    });
}

TEST_P(PaintCountTest, APictureIsOnePaintAndManyAskForOneFrameAfterwards) {
    int const pictures = IsFull() ? 1000 : 30;
    ForEachKind([&](WidgetKind kind) {
        for (bool const isInside : {false, true}) {
            SCOPED_TRACE(isInside ? "in a window" : "by itself");
            auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
            Place const place(*widget, isInside);
            int const before = widget->CountPaints();
            for (int i = 0; i < pictures; ++i)
                widget->Capture(64, 48);
            EXPECT_EQ(widget->CountPaints() - before, pictures);
            AwaitQuiet(*widget);
            EXPECT_LE(widget->CountPaints() - before, pictures + 1);
            std::printf("%d pictures: %d paints in all\n", pictures, widget->CountPaints() - before);
            ExpectShown(*widget);
        }
    });
}

ZX3D_INSTANTIATE_BACKENDS(PaintCountTest);

} // namespace zarvex::testing
