// The embedded window, how the widget follows it, and pictures of it.
#include <zx3DQt/BGFXNativeWidget.h>

#include "../frame/Logging.h"
#include "Capture.h"
#include "PixelRatio.h"
#include "SurfaceFormats.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QPlatformSurfaceEvent>
#include <QScopeGuard>
#include <QVBoxLayout>

namespace zarvex::zx3DQt {

namespace {

void const* AddressOf(BGFXNativeWidget const* widget) {
    return widget;
}

QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
    return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
}

} // namespace

BGFXNativeWidget::BGFXNativeWidget(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {
    LogDebug("Creating BGFXNativeWidget [this: ", AddressOf(this), "]");
    setObjectName("BGFXNativeWidget");
    InitializeRenderingWidget(parent, flags);
    BGFXNativeWidget::ConnectRenderTargetWindowSignals();
}

BGFXNativeWidget::~BGFXNativeWidget() {
    // The container is a child of this widget and owns the window: Qt deletes both.
    m_container.release();
    m_window.release();
}

void BGFXNativeWidget::InitializeRenderingWidget(QWidget* parent, Qt::WindowFlags flags) {
    setAttribute(Qt::WA_NoSystemBackground, true);
    setAttribute(Qt::WA_OpaquePaintEvent, true);
    setFocusPolicy(Qt::StrongFocus);

    m_window = std::make_unique<BGFXWindow>(nullptr);
    m_container.reset(QWidget::createWindowContainer(
        m_window.get(), parent, flags | Qt::FramelessWindowHint | Qt::CustomizeWindowHint));
    {
        QSignalBlocker const windowBlocker(m_window.get());
        QSignalBlocker const containerBlocker(m_container.get());
        m_window->installEventFilter(this);
        m_container->installEventFilter(this);
    }
    // The keyboard focus belongs to the widget. A window that took it would keep Tab from leaving.
    m_window->setFlag(Qt::WindowDoesNotAcceptFocus);
    m_container->setFocusPolicy(Qt::NoFocus);

    m_container->setUpdatesEnabled(false);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_container.get(), 0, {});
    layout->setContentsMargins(0, 0, 0, 0);
    setLayout(layout);
    m_container->setUpdatesEnabled(true);

    // Not before the container is in the layout: Qt makes what is added to such a widget native, and with it
    // all that the widget lies in. A QOpenGLWidget beside it then stops drawing, and a dock around it gets
    // lost at times on its way between desktop and main window.
    setAttribute(Qt::WA_PaintOnScreen, true);
}

void BGFXNativeWidget::ConnectRenderTargetWindowSignals() {
    BGFXWindow* const window = m_window.get();
    connect(this, &BGFXNativeWidget::updateFrameBufferEvent, window, &BGFXWindow::updateFrameBufferEvent);
    connect(this, &BGFXNativeWidget::updateViewPortEvent, window, &BGFXWindow::updateViewPortEvent);
    connect(window, &BGFXWindow::keyPressedEvent, this, &BGFXNativeWidget::event);
    connect(window, &BGFXWindow::mouseMovedEvent, this, &BGFXNativeWidget::event);
    connect(window, &BGFXWindow::mouseClickedEvent, this, &BGFXNativeWidget::event);
    connect(window, &BGFXWindow::mouseReleasedEvent, this, &BGFXNativeWidget::event);
    connect(window, &BGFXWindow::mouseDoubleClickedEvent, this, &BGFXNativeWidget::event);
    connect(window, &BGFXWindow::wheelEvent, this, &BGFXNativeWidget::event);
}

void BGFXNativeWidget::DisconnectRenderTargetWindowSignals() {
    disconnect(this, nullptr, m_window.get(), nullptr);
}

bool BGFXNativeWidget::eventFilter(QObject* watched, QEvent* event) {
    LogFilter("Intercepted event [this:", watched, event);
    if (event->type() != QEvent::Paint) {
        if (watched == m_window.get())
            FollowWindow(*event);
        LogFilter("Forwarding intercepted event [this:", watched, event);
        return false;
    }
    if (!m_window->isExposed()) {
        LogFilter("Skipping early paint event [this:", watched, event);
        return true;
    }
    LogFilter("Processing paint event [this:", watched, event);
    QSize const sizeBefore = SizeOf(GetFrameBuffer());
    UpdateTarget(static_cast<QPaintEvent const&>(*event));
    // The window's own event says that it was uncovered. That the size changed now means that what this paint
    // pass has drawn is of the old one.
    if (watched == m_window.get() || SizeOf(GetFrameBuffer()) != sizeBefore)
        update();
    return QWidget::eventFilter(watched, event);
}

void BGFXNativeWidget::FollowWindow(QEvent const& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        TakeFocus();
        PostContextMenu(static_cast<QMouseEvent const&>(event));
        break;
    case QEvent::PlatformSurface:
        switch (static_cast<QPlatformSurfaceEvent const&>(event).surfaceEventType()) {
        case QPlatformSurfaceEvent::SurfaceCreated:
            if (m_surfaceLost)
                BindNewSurface();
            break;
        case QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed:
            m_surfaceLost = true;
            break;
        }
        break;
    case QEvent::Resize:
        update();
        break;
    default:
        break;
    }
}

void BGFXNativeWidget::TakeFocus() {
    // As Qt does it for a press that a widget receives itself.
    if (!isActiveWindow())
        activateWindow();
    if (focusPolicy() & Qt::ClickFocus)
        setFocus(Qt::MouseFocusReason);
}

void BGFXNativeWidget::PostContextMenu(QMouseEvent const& press) {
    // Later, so that the widget hears of the press first.
    if (press.button() == Qt::RightButton)
        QCoreApplication::postEvent(
            this, new QContextMenuEvent(QContextMenuEvent::Mouse, press.position().toPoint(),
                                        press.globalPosition().toPoint(), press.modifiers()));
}

void BGFXNativeWidget::BindNewSurface() {
    // The window itself binds its first surface only.
    SetFrameBuffer(
        zx3D::FrameBuffer(reinterpret_cast<void*>(m_window->winId()), kWindowColorFormat, kDepthFormat));
    UpdateFrameBufferEvent update(size());
    emit updateFrameBufferEvent(&update);
}

void BGFXNativeWidget::UpdateTarget(QPaintEvent const& event) {
    UpdateFrameBufferEvent frameBufferUpdate(event.rect().size());
    emit updateFrameBufferEvent(&frameBufferUpdate);
    QRegion const region = event.region();
    UpdateViewportEvent viewportUpdate(region);
    emit updateViewPortEvent(&viewportUpdate);
}

bool BGFXNativeWidget::event(QEvent* event) {
    LogHandler("QEvent", event);
    if (event->type() == QEvent::CursorChange)
        m_window->setCursor(cursor());
    bool const isHandled = QWidget::event(event);
    if (event->type() == QEvent::UpdateRequest)
        FinishUpdate();
    return isHandled;
}

void BGFXNativeWidget::FinishUpdate() {
    // Qt paints a widget with WA_PaintOnScreen only if it is native.
    if (internalWinId() == 0 && m_window->isExposed()) {
        QPaintEvent paint(rect());
        QCoreApplication::sendEvent(this, &paint);
    }
    // It also takes the request for this widget for one of the whole window, and would send none for others.
    if (!isWindow())
        QCoreApplication::postEvent(window(), new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
}

void BGFXNativeWidget::paintEvent(QPaintEvent* event) {
    LogHandler("QPaintEvent", event);
    // Whatever part Qt asks for, the frame that is drawn now replaces all of the window.
    if (event != nullptr)
        SetViewport(QRect(QPoint(0, 0), SizeOf(GetFrameBuffer())));
    QWidget::paintEvent(event);
}

void BGFXNativeWidget::resizeEvent(QResizeEvent* event) {
    LogHandler("QResizeEvent", event);
    QWidget::resizeEvent(event);
    UpdateFrameBufferEvent update(event);
    emit updateFrameBufferEvent(&update);
}

void BGFXNativeWidget::showEvent(QShowEvent* event) {
    LogHandler("QShowEvent", event);
    QWidget::showEvent(event);
}

void BGFXNativeWidget::hideEvent(QHideEvent* event) {
    LogHandler("QFocusEvent", event);
    if (QWidget* const topLevel = QApplication::topLevelWidgets().value(0))
        topLevel->repaint();
    QWidget::hideEvent(event);
}

bool BGFXNativeWidget::nativeEvent(QByteArray const& eventType, void* message, qintptr* result) {
    return QWidget::nativeEvent(eventType, message, result);
}

QPaintEngine* BGFXNativeWidget::paintEngine() const {
    // What QWidget's returns; but that warns, and with WA_PaintOnScreen Qt asks at every paint.
    return nullptr;
}

double BGFXNativeWidget::GetPixelRatio() const {
    return PixelRatioOf(*this);
}

QPixmap BGFXNativeWidget::RenderPixmap(int width, int height) {
    QSize const size(width, height);
    if (!Capture::IsSupported() || !Capture::IsPossible(size))
        return {};
    QRect const savedViewport = GetViewport();
    zx3D::FrameBuffer const savedFrameBuffer = GetFrameBuffer();

    zx3D::FrameBuffer target(nullptr, kOffscreenColorFormat, kDepthFormat);
    GetFrameBuffer().Destroy();
    target.RequestResize(static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height));
    SetFrameBuffer(target);
    GetFrameBuffer().SubmitOnDemand();
    SetViewport(QRect(QPoint(0, 0), size));
    bgfx::TextureHandle const readBackTexture = Capture::CreateReadBackTexture(size);
    auto const restore = qScopeGuard([&] { // also when the application's paintEvent throws
        if (bgfx::isValid(readBackTexture))
            bgfx::destroy(readBackTexture);
        target.Destroy();
        SetFrameBuffer(savedFrameBuffer);
        SetViewport(savedViewport);
        update();
    });

    paintEvent(nullptr);
    bgfx::TextureHandle const source = Capture::ColorTextureOf(GetFrameBuffer());
    if (!bgfx::isValid(source) || !bgfx::isValid(readBackTexture))
        return QPixmap(size);
    return QPixmap::fromImage(Capture::Read(source, readBackTexture, size));
}

void BGFXNativeWidget::LogHandler(char const* eventClass, QEvent const* event) const {
    if (!LibraryLog().isDebugEnabled())
        return;
    LogDebug("BGFXNativeWidget", "::", eventClass, "[this:", AddressOf(this), "]",
             "[objectName:", objectName(), "]", "[event: ", event, "]");
}

void BGFXNativeWidget::LogFilter(char const* prefix, QObject const* watched, QEvent const* event) const {
    LogDebug(prefix, AddressOf(this), "]", "[receiver: ", watched, "]", "[event: ", event, "]");
}

} // namespace zarvex::zx3DQt
