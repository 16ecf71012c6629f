// The events that a window is painted at, held back while a frame is in flight.
#pragma once

#include "PaintTurn.h"

#include <QObject>
#include <QWindow>

namespace zarvex::zx3DQt {

/// Takes a window's expose, paint and update events out of their delivery while a frame is in flight, and
/// sends them when it is finished: of each kind one, for all that came meanwhile. That the window is no
/// longer exposed is never held back.
///
/// An event filter, so that it comes before the window's own `event`. Thread: the GUI thread.
class HeldEvents final : public QObject {
public:
    /// The window must outlive it.
    explicit HeldEvents(QWindow& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Deliver();

    QWindow& m_window;
    PaintTurn m_turn;
    bool m_exposed = false; ///< an expose event is held
    bool m_painted = false; ///< likewise
    bool m_updateRequested = false;
};

} // namespace zarvex::zx3DQt
