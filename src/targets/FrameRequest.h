// The one place where widgets ask for frames.
#pragma once

#include <QObject>

#include <functional>

class QEvent;

namespace zarvex::zx3DQt {

/// The frames that a widget asks for by itself. What was asked for, however often and why, is one paint,
/// which comes from the event loop behind those that Qt has in its queue. A paint before that is it, too.
///
/// Thread: the GUI thread.
class FrameRequest final : public QObject {
public:
    /// `paint` is called for a request that nothing else has met; it stays open until `OnPaint`.
    explicit FrameRequest(std::function<void()> paint);

    void Ask();

    /// Has `paint` called once more for a request that is still open.
    void AskAgain();

    /// The widget is being painted: that is what was asked for.
    void OnPaint() { m_isOpen = false; }

    /// A request is open, and `paint` will be called for it when all that is in the event queue is done.
    bool IsInQueue() const { return m_isOpen && m_isPosted; }

    bool event(QEvent* event) override;

private:
    std::function<void()> m_paint;
    bool m_isOpen = false; ///< asked for, and not painted since
    bool m_isPosted = false;
};

/// True for an event that is delivered by a call such as `QWidget::repaint`, and false for one from the event
/// queue.
bool WasSent(QEvent const& event);

} // namespace zarvex::zx3DQt
