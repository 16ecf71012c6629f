// Widgets with a mark in each corner that paint only when Qt asks them to, and what the screen shows of them.
#pragma once

#include "harness/WaitUntil.h"

#include <zx3DQt/PictureOptions.h>

#include <bgfx/bgfx.h>

#include <QColor>
#include <QImage>
#include <QPixmap>
#include <QRegion>
#include <QSize>
#include <QWidget>

#include <functional>
#include <memory>
#include <string>

namespace zarvex::testing {

enum class WidgetKind { Native, Offscreen };

/// A widget of either kind that paints the picture of CornerPicture.h in its size, in `paintEvent` and at no
/// other time: what the screen shows after a change, the library has brought about.
class CornerWidget {
public:
    /// Each widget draws into a view of its own: `viewId`.
    static std::unique_ptr<CornerWidget> Create(WidgetKind kind, QColor const& color,
                                                bgfx::ViewId viewId = 1);

    virtual ~CornerWidget() = default;

    virtual QWidget& AsQWidget() = 0;
    virtual QSize GetFrameBufferSize() const = 0;
    virtual QRect GetTargetViewport() const = 0;
    virtual QPixmap Capture(int width, int height) = 0;
    virtual QImage TakePicture(zx3DQt::PictureOptions const& options) = 0;

    QColor const& GetColor() const { return m_color; }
    int CountPaints() const { return m_paints; }

protected:
    CornerWidget(QColor const& color, bgfx::ViewId viewId) : m_color(color), m_viewId(viewId) {}

    QColor m_color;
    bgfx::ViewId m_viewId;
    int m_paints = 0;
};

/// Calls a check for each kind of widget.
void ForEachKind(std::function<void(WidgetKind)> const& check);

/// Shows a top-level widget and waits until it is on the screen.
void ShowAndWait(QWidget& topLevel);

/// The widget's size in physical pixels.
QSize PhysicalSize(QWidget const& widget);

/// What the X server shows in the widget's place, physical pixels.
QImage GrabFromScreen(QWidget const& widget);

/// Waits until the screen shows the widget's picture, in exactly the widget's size and place, and goes on
/// showing it. Looks at the part that is visible and not covered by child widgets. Fails the test, saying
/// what is wrong, after a few seconds.
void ExpectShown(CornerWidget& widget);

/// Runs the event loop until the widget has not painted for a while.
void AwaitQuiet(CornerWidget const& widget);

} // namespace zarvex::testing
