// Listening to a window's events.
#include "ReportedSize.h"

#include <QResizeEvent>

#include <utility>

namespace zarvex::zx3DQt {

ReportedSize::ReportedSize(std::function<void()> onReport) : m_onReport(std::move(onReport)) {}

void ReportedSize::Follow(QWindow* window) {
    if (window == m_window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (window == nullptr)
        return;
    m_size = window->size();
    window->installEventFilter(this);
}

bool ReportedSize::IsAwaited() const {
    return m_window && m_window->isExposed() && m_window->size() != m_size;
}

bool ReportedSize::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        m_size = static_cast<QResizeEvent const&>(*event).size();
        m_onReport();
    }
    return false;
}

} // namespace zarvex::zx3DQt
