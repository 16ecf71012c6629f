// Hearing on the GUI thread that a frame is done.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <QObject>

#include <memory>

namespace zarvex::zx3D {
class FrameListener;
}

namespace zarvex::zx3DQt {

/// Tells the GUI thread when the render thread has drawn frames:
///
///     QObject::connect(&FrameNotifier::Get(), &FrameNotifier::frameFinished, &view, [&view] { view.Step();
///     });
///
/// `zx3D::FrameListener` tells the same at once, on the render thread.
///
/// Lifetime: made by the first `Get`, never destroyed; it serves every run of the library. Thread: the GUI
/// thread.
class ZX3DQT_EXPORT FrameNotifier final : public QObject {
    Q_OBJECT

public:
    /// The process's one. Call it once the QApplication exists.
    static FrameNotifier& Get();

signals:
    /// Frames were drawn, `number` the last of them, as `bgfx::frame` counts; those that were finished while
    /// the GUI thread was busy come as one. Sent from the event loop. Never in single-threaded mode, where
    /// `bgfx::frame` returns when the frame is done.
    void frameFinished(quint32 number);

private:
    FrameNotifier();
    ~FrameNotifier() override;

    std::unique_ptr<zx3D::FrameListener> m_listener;
};

} // namespace zarvex::zx3DQt
