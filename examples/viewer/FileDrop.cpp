// Accepting a drag, and taking the first file of a drop.
#include "FileDrop.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace viewer {

namespace {

/// Empty when there is none.
QString LocalFile(QMimeData const* data) {
    QList<QUrl> const urls = data != nullptr ? data->urls() : QList<QUrl>();
    return urls.isEmpty() ? QString() : urls.first().toLocalFile();
}

} // namespace

FileDrop::FileDrop(QWidget& window, std::function<void(QString const&)> onDrop)
    : QObject(&window),
      m_window(window),
      m_onDrop(std::move(onDrop)) {
    qApp->installEventFilter(this);
}

bool FileDrop::IsOfWindow(QObject const* watched) const {
    if (!watched->isWindowType())
        return false;
    QWindow const* const top = m_window.windowHandle();
    return watched == top || (top != nullptr && top->isAncestorOf(static_cast<QWindow const*>(watched)));
}

bool FileDrop::eventFilter(QObject* watched, QEvent* event) {
    QEvent::Type const type = event->type();
    if (type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop)
        return false;
    if (!IsOfWindow(watched))
        return false;
    auto* const drop = static_cast<QDropEvent*>(event);
    QString const path = LocalFile(drop->mimeData());
    if (path.isEmpty()) {
        drop->ignore(); // a window container would take everything, and do nothing with it
        return true;
    }
    drop->acceptProposedAction();
    if (type == QEvent::Drop)
        m_onDrop(path);
    return true;
}

} // namespace viewer
