// A window with a mark in each corner, and what the screen shows of it.
#pragma once

#include <zx3DQt/BGFXWindow.h>

#include <QColor>
#include <QImage>

#include <functional>

namespace zarvex::testing {

/// Paints one colour, and in each corner a square of 12 pixels of another, so that a picture of the wrong
/// size or at the wrong place shows.
class CornerWindow : public zx3DQt::BGFXWindow {
public:
    /// Each window draws into views of its own: `viewId`.
    explicit CornerWindow(QColor const& color, std::uint16_t viewId = 0);

    /// Records one frame into the window's view; false when the frame buffer is collapsed.
    bool RecordFrame();

    /// Records a frame and presents it.
    bool PaintFrame();

    QColor const& GetColor() const { return m_color; }

private:
    QColor m_color;
    std::uint16_t m_viewId;
};

/// Runs the event loop until the condition holds; false after a few seconds.
bool WaitUntil(std::function<bool()> const& condition);

/// Shows the window and waits until it is on the screen.
void ShowAndWait(CornerWindow& window);

/// What the X server shows in the window's place, physical pixels.
QImage GrabFromScreen(CornerWindow const& window);

/// Paints until the screen shows the window's colour in the middle and the four marks in the corners of
/// exactly its size; fails the test, saying what is wrong, after a few seconds.
void ExpectPicture(CornerWindow& window);

} // namespace zarvex::testing
