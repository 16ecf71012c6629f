// The one place where widgets ask for frames.
#pragma once

#include <QObject>

#include <functional>
#include <optional>

class QEvent;

namespace zarvex::zx3DQt {

/// Why a widget has to be painted, although the application did not ask for it.
enum class FrameReason {
    Resized,        ///< it has another size
    Uncovered,      ///< what was shown is lost
    SurfaceGivenUp, ///< likewise, since a picture was taken
    PartDrawn,      ///< only a part of it was drawn, with what the whole shows
};

/// The frames that a widget asks for by itself. What was asked for, however often and why, is one paint,
/// which comes from the event loop behind those that Qt has in its queue; one of those is it, too.
///
/// Thread: the GUI thread.
class FrameRequest final : public QObject {
public:
    /// `paint` is called for a request that nothing else has met.
    explicit FrameRequest(std::function<void()> paint);

    void Ask(FrameReason reason);

    /// The widget is being painted: that is what was asked for.
    void OnPaint() { m_reason.reset(); }

    bool event(QEvent* event) override;

private:
    std::function<void()> m_paint;
    std::optional<FrameReason> m_reason; ///< of the first request since the last paint; empty: there is none
    bool m_isPosted = false;
};

/// True for an event that is delivered by a call such as `QWidget::repaint`, and false for one from the event
/// queue.
bool WasSent(QEvent const& event);

} // namespace zarvex::zx3DQt
