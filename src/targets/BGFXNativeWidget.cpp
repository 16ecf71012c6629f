// The embedded window, how the widget follows it, and pictures of it.
#include <zx3DQt/BGFXNativeWidget.h>

#include "Capture.h"
#include "FollowSize.h"
#include "FrameRequest.h"
#include "HeldEvents.h"
#include "PaintTurn.h"
#include "ReportedSize.h"
#include "SurfaceFormats.h"
#include "TakePicture.h"
#include "TargetLog.h"

#include <QApplication>
#include <QBackingStore>
#include <QContextMenuEvent>
#include <QPlatformSurfaceEvent>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <utility>

namespace zarvex::zx3DQt {

namespace {

constexpr char kClassName[] = "BGFXNativeWidget";

/// Keeps requests to paint the container from Qt, which looks for the container's own paint engine where the
/// widget is a window by itself, and warns that there is none. There is nothing to paint.
class UpdateRequestFilter final : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override { return event->type() == QEvent::UpdateRequest; }
};

} // namespace

BGFXNativeWidget::BGFXNativeWidget(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {
    LogDebug("Creating BGFXNativeWidget [this: ", static_cast<void const*>(this), "]");
    setObjectName("BGFXNativeWidget");
    m_turn = std::make_unique<PaintTurn>([this] { PaintNow(); });
    m_frameRequest = std::make_unique<FrameRequest>([this] {
        if (!IsAheadOfWindow() && !m_turn->PutOff())
            PaintNow();
    });
    m_windowSize = std::make_unique<ReportedSize>([this] { m_frameRequest->Ask(); });
    m_topLevelSize = std::make_unique<ReportedSize>([this] { m_frameRequest->AskAgain(); });
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
    m_window->m_heldEvents.reset();
    m_container.reset(QWidget::createWindowContainer(
        m_window.get(), parent, flags | Qt::FramelessWindowHint | Qt::CustomizeWindowHint));
    m_container->installEventFilter(new UpdateRequestFilter(m_container.get()));
    {
        QSignalBlocker const windowBlocker(m_window.get());
        QSignalBlocker const containerBlocker(m_container.get());
        m_window->installEventFilter(this);
        m_container->installEventFilter(this);
        m_windowSize->Follow(m_window.get());
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
    if (SizeOf(GetFrameBuffer()) != sizeBefore || watched == m_window.get())
        m_frameRequest->Ask();
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
    SetFrameBuffer(zx3D::FrameBuffer(reinterpret_cast<void*>(m_window->winId()), kWindowColorFormat,
                                     m_window->m_options));
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
    LogHandler(kClassName, *this, "QEvent", event);
    if (event->type() == QEvent::CursorChange)
        m_window->setCursor(cursor());
    if (event->type() == QEvent::Paint) {
        if (PutOff())
            return true;
        m_frameRequest->OnPaint();
    }
    bool const isRepaint = event->type() == QEvent::UpdateRequest && WasSent(*event);
    QScopedValueRollback const atOnce(m_paintsAtOnce, m_paintsAtOnce || isRepaint);
    bool const isHandled = QWidget::event(event);
    if (event->type() == QEvent::UpdateRequest)
        FinishUpdate();
    return isHandled;
}

void BGFXNativeWidget::PaintNow() {
    QScopedValueRollback const atOnce(m_paintsAtOnce, true);
    repaint();
}

bool BGFXNativeWidget::PutOff() {
    // `grab` and `render` paint into a device of the caller's.
    QPaintDevice* const device = redirected(nullptr);
    QBackingStore* const store = window()->backingStore();
    bool const isForScreen = device == nullptr || (store != nullptr && device == store->paintDevice());
    if (m_paintsAtOnce || !isForScreen)
        return false;
    if (IsAheadOfWindow())
        m_frameRequest->Ask();
    // Qt paints a window that shrank at once, while what the embedded window tells of the same change is
    // still to come: the paint that is asked for is for both.
    return m_frameRequest->IsInQueue() || m_turn->PutOff();
}

bool BGFXNativeWidget::IsAheadOfWindow() const {
    // A frame before the window has its size would be of the old one; what is drawn while the window around
    // it has not grown yet is lost where it lies outside. When they have, the widget asks for a frame.
    return m_topLevelSize->IsAwaited() || m_windowSize->IsAwaited();
}

void BGFXNativeWidget::FinishUpdate() {
    // Qt paints a widget with WA_PaintOnScreen only if it is native.
    if (internalWinId() == 0 && isVisible() && m_window->isExposed()) {
        QPaintEvent paint(rect());
        QCoreApplication::sendEvent(this, &paint);
    }
    // It also takes the request for this widget for one of the whole window, and would send none for others.
    if (!isWindow())
        QCoreApplication::postEvent(window(), new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
}

void BGFXNativeWidget::paintEvent(QPaintEvent* event) {
    LogHandler(kClassName, *this, "QPaintEvent", event);
    // Whatever part Qt asks for, the frame that is drawn now replaces all of the window.
    if (event != nullptr)
        SetViewport(QRect(QPoint(0, 0), SizeOf(GetFrameBuffer())));
    QWidget::paintEvent(event);
}

void BGFXNativeWidget::resizeEvent(QResizeEvent* event) {
    LogHandler(kClassName, *this, "QResizeEvent", event);
    QWidget::resizeEvent(event);
    UpdateFrameBufferEvent update(event);
    emit updateFrameBufferEvent(&update);
}

void BGFXNativeWidget::showEvent(QShowEvent* event) {
    LogHandler(kClassName, *this, "QShowEvent", event);
    QWidget::showEvent(event);
    m_topLevelSize->Follow(window()->windowHandle());
}

void BGFXNativeWidget::hideEvent(QHideEvent* event) {
    LogHandler(kClassName, *this, "QFocusEvent", event);
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

void BGFXNativeWidget::SetSampleCount(std::uint32_t count) {
    if (count == GetSampleCount())
        return;
    m_window->SetSampleCount(count);
    m_frameRequest->Ask();
}

void BGFXNativeWidget::SetDepthFormat(bgfx::TextureFormat::Enum format) {
    if (format == GetDepthFormat())
        return;
    m_window->SetDepthFormat(format);
    m_frameRequest->Ask();
}

double BGFXNativeWidget::GetPixelRatio() const {
    return m_window->m_pictureRatio.value_or(PixelRatioOf(*this));
}

QPixmap BGFXNativeWidget::RenderPixmap(int width, int height) {
    QSize const size(width, height);
    DrawTarget const target = m_window->GetDrawTarget();
    if (!Capture::IsSupported() || !Capture::IsPossible(size) || !CanDrawPicture(target))
        return {};
    GetFrameBuffer().DestroyKeepingPicture();
    auto const showAgain = qScopeGuard([this] { m_frameRequest->Ask(); });
    QImage picture = RenderToTextures(target, size, target.options, [this] { paintEvent(nullptr); });
    if (!picture.isNull())
        return QPixmap::fromImage(std::move(picture)); // moved: converted in place
    QPixmap empty(size);
    empty.fill(Qt::transparent);
    return empty;
}

QImage BGFXNativeWidget::RenderPicture(PictureOptions const& options) {
    return TakePicture(m_window->GetDrawTarget(), options, GetPixelRatio(), [this] { paintEvent(nullptr); });
}

void BGFXNativeWidget::LogFilter(char const* prefix, QObject const* watched, QEvent const* event) const {
    LogDebug(prefix, static_cast<void const*>(this), "]", "[receiver: ", watched, "]", "[event: ", event,
             "]");
}

} // namespace zarvex::zx3DQt
