// The two kinds of widgets, painting when asked to, and looking at the screen.
#include "CornerWidget.h"

#include "CornerPicture.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <QElapsedTimer>
#include <QScreen>
#include <QWindow>

#include <gtest/gtest.h>

namespace zarvex::testing {

namespace {

void PutOnScreen(zx3DQt::BGFXNativeWidget& widget) {
    widget.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
}

void PutOnScreen(zx3DQt::BGFXOffscreenWidget& widget) {
    widget.Flush();
}

template<typename Base>
class CornerWidgetOn final : public Base, public CornerWidget {
public:
    CornerWidgetOn(QColor const& color, bgfx::ViewId viewId) : CornerWidget(color, viewId) {
        Base::setMinimumSize(40, 32);
        Base::resize(320, 240);
    }

    QWidget& AsQWidget() override { return *this; }

    QSize GetFrameBufferSize() const override {
        return {Base::GetFrameBuffer().GetWidth(), Base::GetFrameBuffer().GetHeight()};
    }

    QRect GetTargetViewport() const override { return Base::GetViewport(); }

    QPixmap Capture(int width, int height) override { return Base::RenderPixmap(width, height); }

    QImage TakePicture(zx3DQt::PictureOptions const& options) override {
        return Base::RenderPicture(options);
    }

    void paintEvent(QPaintEvent* event) override {
        Base::paintEvent(event);
        ++m_paints;
        bool const isRecorded = RecordCornerPicture(Base::GetRenderer(), Base::GetFrameBuffer(),
                                                    Base::GetViewport(), m_color, m_viewId);
        if (isRecorded && event != nullptr)
            PutOnScreen(*this);
    }
};

/// The physical pixels of the widget that show its picture.
QRegion PictureRegion(CornerWidget& widget) {
    QWidget const& qWidget = widget.AsQWidget();
    QRegion region = qWidget.visibleRegion();
    if (dynamic_cast<zx3DQt::BGFXOffscreenWidget const*>(&qWidget) != nullptr)
        region -= qWidget.childrenRegion();
    qreal const ratio = qWidget.devicePixelRatio();
    QRegion physical;
    for (QRect const& rect : region)
        physical += QRectF(QPointF(rect.topLeft()) * ratio, QSizeF(rect.size()) * ratio).toRect();
    return physical;
}

std::string FindDifferenceOnScreen(CornerWidget& widget) {
    QWidget const& qWidget = widget.AsQWidget();
    QRegion const region = PictureRegion(widget);
    if (region.isEmpty())
        return "the widget is not visible";
    return FindDifference(GrabFromScreen(qWidget), PhysicalSize(qWidget), widget.GetColor(), region);
}

} // namespace

std::unique_ptr<CornerWidget> CornerWidget::Create(WidgetKind kind, QColor const& color,
                                                   bgfx::ViewId viewId) {
    if (kind == WidgetKind::Native)
        return std::make_unique<CornerWidgetOn<zx3DQt::BGFXNativeWidget>>(color, viewId);
    return std::make_unique<CornerWidgetOn<zx3DQt::BGFXOffscreenWidget>>(color, viewId);
}

void ForEachKind(std::function<void(WidgetKind)> const& check) {
    for (WidgetKind const kind : {WidgetKind::Native, WidgetKind::Offscreen}) {
        SCOPED_TRACE(kind == WidgetKind::Native ? "native widget" : "off-screen widget");
        check(kind);
    }
}

void ShowAndWait(QWidget& topLevel) {
    topLevel.show();
    EXPECT_TRUE(WaitUntil([&topLevel] {
        return topLevel.windowHandle() != nullptr && topLevel.windowHandle()->isExposed();
    })) << "the window does not appear";
}

QSize PhysicalSize(QWidget const& widget) {
    qreal const ratio = widget.devicePixelRatio();
    return {qRound(widget.width() * ratio), qRound(widget.height() * ratio)};
}

QImage GrabFromScreen(QWidget const& widget) {
    QWidget const& topLevel = *widget.window();
    QPoint const place = widget.mapTo(&topLevel, QPoint());
    QPixmap const pixmap = widget.screen()->grabWindow(topLevel.internalWinId(), place.x(), place.y(),
                                                       widget.width(), widget.height());
    QImage image = pixmap.toImage().convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(1.0);
    return image;
}

void ExpectShown(CornerWidget& widget) {
    std::string difference;
    auto const isShown = [&] {
        difference = FindDifferenceOnScreen(widget);
        return difference.empty();
    };
    EXPECT_TRUE(WaitUntil([&] {
        if (!isShown())
            return false;
        HandlePendingEvents(); // what is still to come does not spoil it
        return isShown();
    })) << difference;
    EXPECT_EQ(widget.GetFrameBufferSize(), PhysicalSize(widget.AsQWidget()));
}

void AwaitQuiet(CornerWidget const& widget) {
    constexpr int quietMilliseconds = 60;
    int paints = widget.CountPaints();
    QElapsedTimer quiet;
    quiet.start();
    WaitUntil([&] {
        if (widget.CountPaints() != paints)
            quiet.start();
        paints = widget.CountPaints();
        return quiet.elapsed() > quietMilliseconds;
    });
}

} // namespace zarvex::testing
