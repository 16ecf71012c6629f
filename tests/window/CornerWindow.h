// A window with a mark in each corner, and what the screen shows of it.
#pragma once

#include "harness/WaitUntil.h"

#include <zx3DQt/BGFXWindow.h>

#include <QColor>
#include <QImage>

namespace zarvex::testing {

/// Paints the picture of CornerPicture.h in its size, when asked to.
class CornerWindow : public zx3DQt::BGFXWindow {
public:
    /// Each window draws into views of its own: `viewId`.
    explicit CornerWindow(QColor const& color, std::uint16_t viewId = 0);

    /// Records one frame into the window's view; false when the frame buffer is collapsed.
    bool RecordFrame();

    /// Records a frame and presents it.
    bool PaintFrame();

    QColor const& GetColor() const { return m_color; }
    void SetColor(QColor const& color) { m_color = color; }

private:
    QColor m_color;
    std::uint16_t m_viewId;
};

/// Shows the window and waits until it is on the screen.
void ShowAndWait(CornerWindow& window);

/// What the X server shows in the window's place, physical pixels.
QImage GrabFromScreen(CornerWindow const& window);

/// Paints until the screen shows the window's picture, in exactly its size; fails the test, saying what is
/// wrong, after a few seconds.
void ExpectPicture(CornerWindow& window);

} // namespace zarvex::testing
