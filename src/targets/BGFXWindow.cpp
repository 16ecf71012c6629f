// The window's surface, size and input.
#include <zx3DQt/BGFXWindow.h>

#include "FollowSize.h"
#include "HeldEvents.h"
#include "SurfaceFormats.h"
#include "TakePicture.h"
#include "TargetLog.h"

#include <QPlatformSurfaceEvent>

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

constexpr char kClassName[] = "BGFXWindow";

} // namespace

BGFXWindow::BGFXWindow(QWindow* parent)
    : QWindow(parent),
      m_renderer(nullptr),
      m_frameBuffer(nullptr, kWindowColorFormat, m_options) {
    LogDebug("Creating BGFXWindow [this: ", static_cast<void const*>(this), "]");
    setObjectName("BGFXWindow");
    m_heldEvents = std::make_unique<HeldEvents>(*this);
}

BGFXWindow::~BGFXWindow() {
    LogDebug("Destroying BGFXWindow [this: ", static_cast<void const*>(this), "]");
    // QWindow's destructor destroys the native window, too late for event() to hear of it.
    LeaveOwnSurface();
}

void BGFXWindow::SetSampleCount(std::uint32_t count) {
    zx3DQt::SetSampleCount(count, m_options, m_frameBuffer);
}

void BGFXWindow::SetDepthFormat(bgfx::TextureFormat::Enum format) {
    zx3DQt::SetDepthFormat(format, m_options, m_frameBuffer);
}

double BGFXWindow::GetPixelRatio() const {
    return m_pictureRatio.value_or(std::max(devicePixelRatio(), 1.0));
}

QImage BGFXWindow::RenderPicture(PictureOptions const& options,
                                 std::function<void(double pixelRatio)> const& draw) {
    return TakePicture(GetDrawTarget(), options, GetPixelRatio(), [&] { draw(GetPixelRatio()); });
}

DrawTarget BGFXWindow::GetDrawTarget() {
    return {m_frameBuffer, m_viewport, m_options, m_pictureRatio};
}

void BGFXWindow::LeaveOwnSurface() {
    // The frame buffer may be one of another window, which goes on showing it.
    if (handle() != nullptr && m_frameBuffer.GetNativeWindow() == reinterpret_cast<void*>(winId()))
        m_frameBuffer.LeaveWindow();
}

bool BGFXWindow::event(QEvent* event) {
    LogHandler(kClassName, *this, "QEvent", event);
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
            LeaveOwnSurface();
            break;
        }
        break;
    default: // QWindow calls the virtual wheelEvent, and that is the signal
        break;
    }
    return QWindow::event(event);
}

void BGFXWindow::exposeEvent(QExposeEvent* event) {
    LogHandler(kClassName, *this, "QExposeEvent", event);
    LogGeometry("BGFXWindow ");
    QWindow::exposeEvent(event);
    UpdateFrameBufferSize();
}

void BGFXWindow::resizeEvent(QResizeEvent* event) {
    LogHandler(kClassName, *this, "QResizeEvent", event);
    QWindow::resizeEvent(event);
    LogGeometry("Resizing BGFXWindow ");
    UpdateFrameBufferSize();
    LogGeometry("Resized BGFXWindow ");
}

bool BGFXWindow::nativeEvent(QByteArray const& eventType, void* message, qintptr* result) {
    return QWindow::nativeEvent(eventType, message, result);
}

void BGFXWindow::updateFrameBufferEvent(UpdateFrameBufferEvent* event) {
    LogHandler(kClassName, *this, "UpdateFrameBufferEvent", event);
    UpdateFrameBufferSize();
}

void BGFXWindow::updateViewPortEvent(UpdateViewportEvent* event) {
    LogHandler(kClassName, *this, "UpdateViewportEvent", event);
    m_viewport = ToPhysical(event->maybeRegion().value().boundingRect(), devicePixelRatio());
}

void BGFXWindow::InitializeFrameBufferOnce() {
    if (m_initialized)
        return;
    LogDebug("Initializing framebuffer [this:", static_cast<QWindow const*>(this), "]");
    WId const nativeHandle = winId();
    LogDebug("Creating frame buffer [nwh:", nativeHandle, "]");
    m_frameBuffer = zx3D::FrameBuffer(reinterpret_cast<void*>(nativeHandle), kWindowColorFormat, m_options);
    LogDebug("Frame buffer initialized [handle:", m_frameBuffer.GetHandle().idx, "]");
    m_initialized = true;
}

void BGFXWindow::UpdateFrameBufferSize() {
    FollowSize(static_cast<QWindow const&>(*this), m_initialized, m_frameBuffer, m_viewport);
}

void BGFXWindow::LogGeometry(char const* prefix) const {
    if (!LibraryLog().isDebugEnabled())
        return;
    LogDebug(prefix, "[size:", size(), "]", "[geometry:", geometry(), "]", "[frameGeometry:", frameGeometry(),
             "]", "[pixelRatio: ", devicePixelRatio(), "]");
}

} // namespace zarvex::zx3DQt
