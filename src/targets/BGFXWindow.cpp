// The window's surface, size and input.
#include <zx3DQt/BGFXWindow.h>

#include "../frame/Logging.h"
#include "PixelRatio.h"
#include "SurfaceFormats.h"

#include <QPlatformSurfaceEvent>

namespace zarvex::zx3DQt {

namespace {

void const* AddressOf(BGFXWindow const* window) {
    return window;
}

} // namespace

BGFXWindow::BGFXWindow(QWindow* parent)
    : QWindow(parent),
      m_renderer(nullptr),
      m_frameBuffer(nullptr, kWindowColorFormat, kDepthFormat) {
    LogDebug("Creating BGFXWindow [this: ", AddressOf(this), "]");
    setObjectName("BGFXWindow");
}

BGFXWindow::~BGFXWindow() {
    LogDebug("Destroying BGFXWindow [this: ", AddressOf(this), "]");
    // QWindow's destructor destroys the native window, too late for event() to hear of it.
    m_frameBuffer.LeaveWindow();
}

bool BGFXWindow::event(QEvent* event) {
    LogHandler("QEvent", event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        emit mouseClickedEvent(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonRelease:
        emit mouseReleasedEvent(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonDblClick:
        emit mouseDoubleClickedEvent(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseMove:
        emit mouseMovedEvent(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::KeyPress:
        emit keyPressedEvent(static_cast<QKeyEvent*>(event));
        break;
    case QEvent::PlatformSurface:
        switch (static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType()) {
        case QPlatformSurfaceEvent::SurfaceCreated:
            InitializeFrameBufferOnce();
            break;
        case QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed:
            m_frameBuffer.Destroy();
            // A frame that is drawn before the window is gone must not attach to it again.
            m_frameBuffer.LeaveWindow();
            break;
        }
        break;
    default: // QWindow calls the virtual wheelEvent, and that is the signal
        break;
    }
    return QWindow::event(event);
}

void BGFXWindow::exposeEvent(QExposeEvent* event) {
    LogHandler("QExposeEvent", event);
    LogGeometry("BGFXWindow ");
    QWindow::exposeEvent(event);
    UpdateFrameBufferSize();
}

void BGFXWindow::resizeEvent(QResizeEvent* event) {
    LogHandler("QResizeEvent", event);
    QWindow::resizeEvent(event);
    LogGeometry("Resizing BGFXWindow ");
    UpdateFrameBufferSize();
    LogGeometry("Resized BGFXWindow ");
}

bool BGFXWindow::nativeEvent(QByteArray const& eventType, void* message, qintptr* result) {
    return QWindow::nativeEvent(eventType, message, result);
}

void BGFXWindow::updateFrameBufferEvent(UpdateFrameBufferEvent* event) {
    LogHandler("UpdateFrameBufferEvent", event);
    UpdateFrameBufferSize();
}

void BGFXWindow::updateViewPortEvent(UpdateViewportEvent* event) {
    LogHandler("UpdateViewportEvent", event);
    m_viewport = ToPhysical(event->maybeRegion().value().boundingRect(), devicePixelRatio());
}

void BGFXWindow::InitializeFrameBufferOnce() {
    if (m_initialized)
        return;
    LogDebug("Initializing framebuffer [this:", static_cast<QWindow const*>(this), "]");
    WId const nativeHandle = winId();
    LogDebug("Creating frame buffer [nwh:", nativeHandle, "]");
    m_frameBuffer =
        zx3D::FrameBuffer(reinterpret_cast<void*>(nativeHandle), kWindowColorFormat, kDepthFormat);
    LogDebug("Frame buffer initialized [handle:", m_frameBuffer.GetHandle().idx, "]");
    m_initialized = true;
}

void BGFXWindow::UpdateFrameBufferSize() {
    auto const* const window = static_cast<QWindow const*>(this);
    std::uint16_t const handle = m_frameBuffer.GetHandle().idx;
    if (!m_initialized) {
        LogDebug("Skipping early framebuffer update (not initialized yet) [this:", window, "]",
                 "[handle: ", handle, "]");
        return;
    }
    if (size().width() == 0 || size().height() == 0)
        LogDebug("Collapsing framebuffer [this:", window, "]", "[handle: ", handle, "]");
    LogDebug("Updating framebuffer [this:", window, "]", "[handle: ", handle, "]");
    m_viewport = QRect(QPoint(0, 0), ToPhysical(size(), devicePixelRatio()));
    m_frameBuffer.RequestResize(static_cast<std::uint16_t>(m_viewport.width()),
                                static_cast<std::uint16_t>(m_viewport.height()));
}

void BGFXWindow::LogHandler(char const* eventClass, QEvent const* event) const {
    if (!LibraryLog().isDebugEnabled())
        return;
    LogDebug("BGFXWindow", "::", eventClass, "[this:", AddressOf(this), "]", "[objectName:", objectName(),
             "]", "[event: ", event, "]");
}

void BGFXWindow::LogGeometry(char const* prefix) const {
    if (!LibraryLog().isDebugEnabled())
        return;
    LogDebug(prefix, "[size:", size(), "]", "[geometry:", geometry(), "]", "[frameGeometry:", frameGeometry(),
             "]", "[pixelRatio: ", devicePixelRatio(), "]");
}

} // namespace zarvex::zx3DQt
