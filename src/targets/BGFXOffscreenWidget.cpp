// The frame buffer, the way of its pictures onto the widget, and pictures of other sizes.
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <zx3D/Context.h>
#include <zx3DQt/Library.h>

#include "../frame/Logging.h"
#include "Capture.h"
#include "PixelRatio.h"
#include "SurfaceFormats.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScopeGuard>
#include <QVBoxLayout>

#include <utility>

namespace zarvex::zx3DQt {

namespace {

void const* AddressOf(BGFXOffscreenWidget const* widget) {
    return widget;
}

} // namespace

BGFXOffscreenWidget::BGFXOffscreenWidget(QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags),
      m_frameBuffer(nullptr, kWindowColorFormat, kDepthFormat) {
    LogDebug("Creating BGFXOffscreenWidget [this: ", AddressOf(this), "]");
    setObjectName("BGFXOffscreenWidget");
    InitializeFrameBufferOnce();
    InitializeRenderingWidget(parent, flags);
}

BGFXOffscreenWidget::~BGFXOffscreenWidget() {
    LogDebug("Destroying BGFXOffscreenWidget [this: ", AddressOf(this), "]");
    m_frameBuffer.Destroy();
    DestroyBlitTarget();
}

void BGFXOffscreenWidget::OnContextStopping() {
    DestroyBlitTarget();
}

void BGFXOffscreenWidget::InitializeFrameBufferOnce() {
    if (m_initialized)
        return;
    LogDebug("Initializing offscreen framebuffer [this:", static_cast<QWidget const*>(this), "]");
    m_frameBuffer = zx3D::FrameBuffer(nullptr, TEXTURE_FORMAT, kDepthFormat);
    LogDebug("Frame buffer initialized [handle:", m_frameBuffer.GetHandle().idx, "]");
    m_initialized = true;
}

void BGFXOffscreenWidget::InitializeRenderingWidget(QWidget*, Qt::WindowFlags) {
    if (!Capture::IsSupported())
        qFatal("BGFX offscreen rendering is unsupported.");
    setAttribute(Qt::WA_OpaquePaintEvent, true);
    setUpdatesEnabled(false);
    setLayout(new QVBoxLayout(this));
    setUpdatesEnabled(true);
}

void BGFXOffscreenWidget::UpdateFrameBufferSize() {
    auto const* const widget = static_cast<QWidget const*>(this);
    std::uint16_t const handle = m_frameBuffer.GetHandle().idx;
    if (!zx3D::Context::IsInitialized()) {
        LogDebug("Skipping early framebuffer update (not initialized yet) [this:", widget, "]",
                 "[handle: ", handle, "]");
        return;
    }
    if (width() == 0 || height() == 0)
        LogDebug("Collapsing framebuffer [this:", widget, "]", "[handle: ", handle, "]");
    LogDebug("Updating framebuffer [this:", widget, "]", "[handle: ", handle, "]");
    m_viewport = QRect(QPoint(0, 0), ToPhysical(size(), devicePixelRatio()));
    m_frameBuffer.RequestResize(static_cast<std::uint16_t>(m_viewport.width()),
                                static_cast<std::uint16_t>(m_viewport.height()));
    if (m_frameBuffer.IsSized() && m_frameBuffer.GetWidth() != 0 && m_frameBuffer.GetHeight() != 0)
        UpdateBlitTargetTextureSize();
}

void BGFXOffscreenWidget::UpdateBlitTargetTextureSize() {
    LogDebug("Resizing offscreen blit target texture [this:", static_cast<QWidget const*>(this), "]",
             "[handle: ", m_blitTarget.idx, "]");
    LogDebug("Creating offscreen blit target texture [viewPort: ", m_viewport, "]");
    bgfx::TextureHandle const created = Capture::CreateReadBackTexture(m_viewport.size());
    LogDebug("Updated offscreen blit target texture [handle: ", created.idx, "]");
    if (!bgfx::isValid(created)) {
        LogDebug("Updated offscreen blit target texture is invalid");
        return;
    }
    LogDebug("Destroying outdated offscreen blit target texture [handle: ", m_blitTarget.idx, "]");
    DestroyBlitTarget();
    m_blitTarget = created;
    m_blitTargetSize = m_viewport.size();
}

void BGFXOffscreenWidget::DestroyBlitTarget() {
    if (bgfx::isValid(m_blitTarget))
        bgfx::destroy(m_blitTarget);
    m_blitTarget = BGFX_INVALID_HANDLE;
}

void BGFXOffscreenWidget::RenewFrameBuffer() {
    m_frameBuffer.Destroy();
    m_frameBuffer = zx3D::FrameBuffer(nullptr, TEXTURE_FORMAT, kDepthFormat);
}

void BGFXOffscreenWidget::paintEvent(QPaintEvent* event) {
    LogHandler("QPaintEvent", event);
    if (event != nullptr) {
        RefreshFrameBuffer();
        m_viewport = ToPhysical(AreaToDraw(event->region().boundingRect()), devicePixelRatio());
    }
    QWidget::paintEvent(event);
}

void BGFXOffscreenWidget::RefreshFrameBuffer() {
    // No resize event tells that the widget is on a screen of another pixel ratio, or in a new context.
    QSize const size(m_frameBuffer.GetWidth(), m_frameBuffer.GetHeight());
    bool const isRightSize = size == ToPhysical(QWidget::size(), devicePixelRatio());
    if (m_frameBuffer.IsSized() && !(isRightSize && bgfx::isValid(m_blitTarget)))
        UpdateFrameBufferSize();
}

QRect BGFXOffscreenWidget::AreaToDraw(QRect const& painted) {
    if (!testAttribute(Qt::WA_WState_InPaintEvent))
        return painted;
    // A part is drawn with the resolution of its viewport only, so all of the widget follows. Qt's region of
    // that paint may be a part again: in a scroll area it is what is visible.
    bool const wasPart = std::exchange(m_drawsAllNext, false);
    if (wasPart || painted == rect())
        return rect();
    m_drawsAllNext = true;
    update();
    return painted;
}

void BGFXOffscreenWidget::resizeEvent(QResizeEvent* event) {
    LogHandler("QResizeEvent", event);
    if (event != nullptr)
        UpdateFrameBufferSize();
    QWidget::resizeEvent(event);
}

void BGFXOffscreenWidget::showEvent(QShowEvent* event) {
    LogHandler("QShowEvent", event);
    QWidget::showEvent(event);
}

void BGFXOffscreenWidget::hideEvent(QHideEvent* event) {
    LogHandler("QFocusEvent", event);
    if (QWidget* const topLevel = QApplication::topLevelWidgets().value(0))
        topLevel->repaint();
    QWidget::hideEvent(event);
}

double BGFXOffscreenWidget::GetPixelRatio() const {
    return PixelRatioOf(*this);
}

std::optional<QImage> BGFXOffscreenWidget::GrabFrameBuffer() {
    bgfx::TextureHandle const source = Capture::ColorTextureOf(m_frameBuffer);
    if (!bgfx::isValid(source) || !bgfx::isValid(m_blitTarget))
        return std::nullopt;
    // Keeps every frame of the wait busy.
    auto const clearBackBuffer = [] { ClearBackBufferWidget(QColor(Qt::red)); };
    QImage const all = Capture::Read(source, m_blitTarget, m_blitTargetSize, clearBackBuffer);
    return m_viewport == all.rect() ? all : all.copy(m_viewport);
}

void BGFXOffscreenWidget::Flush() {
    std::optional<QImage> const image = GrabFrameBuffer();
    if (!image || !testAttribute(Qt::WA_WState_InPaintEvent))
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(rect(), QColor(Qt::black));
    painter.drawPixmap(rect(), QPixmap::fromImage(image->convertToFormat(QImage::Format_RGB32)));
}

QPixmap BGFXOffscreenWidget::RenderPixmap(int width, int height) {
    QSize const size(width, height);
    if (!Capture::IsSupported() || !Capture::IsPossible(size))
        return {};
    QRect const savedViewport = m_viewport;
    auto const restore = qScopeGuard([&] { // also when the application's paintEvent throws
        RenewFrameBuffer();
        m_viewport = savedViewport;
        UpdateFrameBufferSize();
        UpdateBlitTargetTextureSize();
    });

    RenewFrameBuffer();
    m_frameBuffer.RequestResize(static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height));
    m_frameBuffer.SubmitOnDemand();
    m_viewport = QRect(QPoint(0, 0), size);
    UpdateBlitTargetTextureSize();
    paintEvent(nullptr);
    return QPixmap::fromImage(GrabFrameBuffer().value_or(QImage()));
}

void BGFXOffscreenWidget::LogHandler(char const* eventClass, QEvent const* event) const {
    if (!LibraryLog().isDebugEnabled())
        return;
    LogDebug("BGFXOffscreenWidget", "::", eventClass, "[this:", AddressOf(this), "]",
             "[objectName:", objectName(), "]", "[event: ", event, "]");
}

} // namespace zarvex::zx3DQt
