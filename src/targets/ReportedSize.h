// Whether the window system has followed a change of a window's size.
#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QWindow>

#include <functional>

namespace zarvex::zx3DQt {

/// The size of a window as the window system told it last. Qt gives a window its new size at once; the window
/// has it, and shows what is drawn there, when the window system says so: at once for a child window, after
/// the window manager for one of the desktop.
///
/// An event filter. Thread: the GUI thread.
class ReportedSize final : public QObject {
public:
    /// `onReport` is called when the window system tells a size, before the window hears of it.
    explicit ReportedSize(std::function<void()> onReport);

    /// Of this window from now on, which is taken to have its size; none for null.
    void Follow(QWindow* window);

    /// The window is on the screen, and has another size than the window system told.
    bool IsAwaited() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> m_onReport;
    QPointer<QWindow> m_window;
    QSize m_size; ///< device-independent pixels
};

} // namespace zarvex::zx3DQt
