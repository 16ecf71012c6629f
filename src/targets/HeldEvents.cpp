// Holding and sending, in the order in which Qt sends the events.
#include "HeldEvents.h"

#include <QCoreApplication>
#include <QExposeEvent>
#include <QPaintEvent>
#include <QPointer>

#include <utility>

namespace zarvex::zx3DQt {

HeldEvents::HeldEvents(QWindow& window) : m_window(window), m_turn([this] { Deliver(); }) {
    window.installEventFilter(this);
}

bool HeldEvents::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
    case QEvent::Expose:
        if (!m_window.isExposed())
            return m_exposed = m_painted = false;
        return m_exposed = m_turn.PutOff();
    case QEvent::Paint: // held, it counts as accepted: Qt then sends no expose event in its place
        return m_painted = m_turn.PutOff();
    case QEvent::UpdateRequest:
        return m_updateRequested = m_turn.PutOff();
    default:
        return false;
    }
}

void HeldEvents::Deliver() {
    bool const exposed = std::exchange(m_exposed, false);
    bool const painted = std::exchange(m_painted, false);
    bool const updateRequested = std::exchange(m_updateRequested, false);
    QPointer<QWindow> const window(&m_window); // a handler may destroy it
    QRegion const all(QRect(QPoint(0, 0), window->size()));
    QExposeEvent expose(all);
    if (exposed)
        QCoreApplication::sendEvent(window, &expose);
    if (painted && window) {
        QPaintEvent paint(all);
        QCoreApplication::sendEvent(window, &paint);
        // As Qt does it for those who know expose events only.
        if (!paint.isAccepted() && !exposed && window)
            QCoreApplication::sendEvent(window, &expose);
    }
    if (updateRequested && window) {
        QEvent update(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(window, &update);
    }
}

} // namespace zarvex::zx3DQt
