// Files dragged onto a window.
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QWidget;

namespace viewer {

/// Listens to the whole application, since the windows that bgfx draws into get what is dropped on them for
/// themselves.
class FileDrop : public QObject {
public:
    /// `onDrop` gets the path of a file that is dropped anywhere on `window`.
    FileDrop(QWidget& window, std::function<void(QString const&)> onDrop);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool IsOfWindow(QObject const* watched) const;

    QWidget& m_window;
    std::function<void(QString const&)> m_onDrop;
};

} // namespace viewer
