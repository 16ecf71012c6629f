// Physical pixels of widgets where the screen has more of them than the widget counts.
#include "CornerPicture.h"
#include "CornerWidget.h"

#include "render/SharedRun.h"

namespace zarvex::testing {

using WidgetPixelRatioTest = SharedRunTest;

TEST_P(WidgetPixelRatioTest, TheFrameBufferHasTheRoundedPhysicalSizeAndThePictureFillsIt) {
    ForEachKind([](WidgetKind kind) {
        QWidget window;
        window.setGeometry(40, 60, 360, 280);
        auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
        widget->AsQWidget().setParent(&window);
        ShowAndWait(window);
        qreal const ratio = widget->AsQWidget().devicePixelRatio();
        if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
            EXPECT_EQ(ratio, qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
        }
        widget->AsQWidget().show();

        widget->AsQWidget().setGeometry(20, 12, 301, 203);
        QSize const rounded(qRound(301 * ratio), qRound(203 * ratio));
        EXPECT_TRUE(WaitUntil([&] { return widget->GetFrameBufferSize() == rounded; }));
        EXPECT_TRUE(WaitUntil([&] { return widget->GetTargetViewport() == QRect(QPoint(), rounded); }));

        // Sizes and places that are whole in physical pixels at every ratio tested, so that the screen shows
        // exactly the picture.
        for (QSize const size : {QSize(304, 200), QSize(200, 260), QSize(48, 40)}) {
            widget->AsQWidget().setGeometry(QRect(QPoint(20, 12), size));
            ExpectShown(*widget);
            EXPECT_EQ(widget->GetFrameBufferSize(), size * ratio);
        }
    });
}

TEST_P(WidgetPixelRatioTest, AWidgetThatIsAWindowOfItsOwn) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkYellow);
        widget->AsQWidget().setGeometry(40, 60, 304, 200);
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
    });
}

ZX3D_INSTANTIATE_BACKENDS(WidgetPixelRatioTest);

} // namespace zarvex::testing
