// The frame buffer, the way of its pictures onto the widget, and pictures of other sizes.
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <zx3D/Context.h>
#include <zx3DQt/Library.h>

#include "Capture.h"
#include "FollowSize.h"
#include "FrameRequest.h"
#include "SurfaceFormats.h"
#include "TakePicture.h"
#include "TargetLog.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScopeGuard>
#include <QVBoxLayout>

#include <utility>

namespace zarvex::zx3DQt {

namespace {

constexpr char kClassName[] = "BGFXOffscreenWidget";

} // namespace

BGFXOffscreenWidget::BGFXOffscreenWidget(QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags),
      m_frameBuffer(nullptr, kWindowColorFormat, m_options) {
    LogDebug("Creating BGFXOffscreenWidget [this: ", static_cast<void const*>(this), "]");
    setObjectName("BGFXOffscreenWidget");
    m_frameRequest = std::make_unique<FrameRequest>([this] { update(); });
    InitializeFrameBufferOnce();
    InitializeRenderingWidget(parent, flags);
}

BGFXOffscreenWidget::~BGFXOffscreenWidget() {
    LogDebug("Destroying BGFXOffscreenWidget [this: ", static_cast<void const*>(this), "]");
    m_frameBuffer.Destroy();
    m_readBackTexture.Reset();
}

void BGFXOffscreenWidget::OnContextStopping() {
    m_readBackTexture.Reset();
    m_stoppedIn = zx3D::ContextRun::Current();
}

bool BGFXOffscreenWidget::IsReady() const {
    // What is created after the notice would be left behind in bgfx.
    return zx3D::Context::IsInitialized() && !m_stoppedIn.IsCurrent();
}

void BGFXOffscreenWidget::InitializeFrameBufferOnce() {
    if (m_initialized)
        return;
    LogDebug("Initializing offscreen framebuffer [this:", static_cast<QWidget const*>(this), "]");
    m_frameBuffer = zx3D::FrameBuffer(nullptr, TEXTURE_FORMAT, m_options);
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
    if (!FollowSize(static_cast<QWidget const&>(*this), IsReady(), m_frameBuffer, m_viewport))
        return;
    m_followedSize = m_viewport.size();
    m_followedIn = zx3D::ContextRun::Current();
    if (m_frameBuffer.IsSized() && m_frameBuffer.GetWidth() != 0 && m_frameBuffer.GetHeight() != 0)
        UpdateBlitTargetTextureSize();
}

void BGFXOffscreenWidget::UpdateBlitTargetTextureSize() {
    ReplaceReadBackTexture(m_viewport);
}

void BGFXOffscreenWidget::ReplaceReadBackTexture(QRect const& area) {
    std::uint16_t const outdated = m_readBackTexture.Get().idx;
    LogDebug("Resizing offscreen blit target texture [this:", static_cast<QWidget const*>(this), "]",
             "[handle: ", outdated, "]");
    LogDebug("Creating offscreen blit target texture [viewPort: ", area, "]");
    zx3D::Owned<bgfx::TextureHandle> created(Capture::CreateReadBackTexture(area.size()));
    LogDebug("Updated offscreen blit target texture [handle: ", created.Get().idx, "]");
    if (!created) {
        LogDebug("Updated offscreen blit target texture is invalid");
        return;
    }
    LogDebug("Destroying outdated offscreen blit target texture [handle: ", outdated, "]");
    m_readBackTexture = std::move(created);
    m_readBackSize = area.size();
}

void BGFXOffscreenWidget::RenewFrameBuffer() {
    m_frameBuffer.Destroy();
    m_frameBuffer = zx3D::FrameBuffer(nullptr, TEXTURE_FORMAT, m_options);
}

void BGFXOffscreenWidget::paintEvent(QPaintEvent* event) {
    LogHandler(kClassName, *this, "QPaintEvent", event);
    if (event != nullptr) {
        m_frameRequest->OnPaint();
        RefreshFrameBuffer();
        m_viewport = ToPhysical(AreaToDraw(event->region().boundingRect()), devicePixelRatio());
        PaintBackgroundWhereNothingIsDrawn();
    }
    QWidget::paintEvent(event);
}

void BGFXOffscreenWidget::RefreshFrameBuffer() {
    // No resize event tells that the widget is on a screen of another pixel ratio, or in a new context.
    bool const isFollowed =
        m_followedSize == ToPhysical(size(), devicePixelRatio()) && m_followedIn.IsCurrent();
    if (m_frameBuffer.IsSized() && !(isFollowed && (m_readBackTexture || HasRequestedSize())))
        UpdateFrameBufferSize();
}

bool BGFXOffscreenWidget::HasRequestedSize() const {
    return m_followedSize.isValid() && SizeOf(m_frameBuffer) != SizeFor(m_followedSize);
}

void BGFXOffscreenWidget::PaintBackgroundWhereNothingIsDrawn() {
    QSize const size = ToPhysical(QWidget::size(), devicePixelRatio());
    bool const isReady = IsReady();
    bool const isTooLarge = isReady && !HasRequestedSize() && !size.isEmpty() && !Capture::IsInRange(size);
    if (isTooLarge)
        m_tooLarge.Raise([size] {
            LogWarning("offscreen-widget.too-large", [size] {
                return QString("a widget of %1 x %2 pixels is beyond this GPU's textures: it shows its "
                               "background")
                    .arg(size.width())
                    .arg(size.height());
            });
        });
    else
        m_tooLarge.Clear();
    if ((isReady && !isTooLarge) || !testAttribute(Qt::WA_WState_InPaintEvent))
        return;
    QPainter(this).fillRect(rect(), palette().brush(backgroundRole()));
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
    m_frameRequest->Ask();
    return painted;
}

void BGFXOffscreenWidget::resizeEvent(QResizeEvent* event) {
    LogHandler(kClassName, *this, "QResizeEvent", event);
    if (event != nullptr)
        UpdateFrameBufferSize();
    QWidget::resizeEvent(event);
}

void BGFXOffscreenWidget::showEvent(QShowEvent* event) {
    LogHandler(kClassName, *this, "QShowEvent", event);
    QWidget::showEvent(event);
}

void BGFXOffscreenWidget::hideEvent(QHideEvent* event) {
    LogHandler(kClassName, *this, "QFocusEvent", event);
    if (QWidget* const topLevel = QApplication::topLevelWidgets().value(0))
        topLevel->repaint();
    QWidget::hideEvent(event);
}

void BGFXOffscreenWidget::SetSampleCount(std::uint32_t count) {
    if (count == GetSampleCount())
        return;
    zx3DQt::SetSampleCount(count, m_options, m_frameBuffer);
    m_frameRequest->Ask();
}

void BGFXOffscreenWidget::SetDepthFormat(bgfx::TextureFormat::Enum format) {
    if (format == GetDepthFormat())
        return;
    zx3DQt::SetDepthFormat(format, m_options, m_frameBuffer);
    m_frameRequest->Ask();
}

double BGFXOffscreenWidget::GetPixelRatio() const {
    return m_pictureRatio.value_or(PixelRatioOf(*this));
}

std::optional<QImage> BGFXOffscreenWidget::ReadFrameBuffer() {
    bgfx::TextureHandle const source = Capture::ColorTextureOf(m_frameBuffer);
    if (!bgfx::isValid(source))
        return std::nullopt;
    if (HasRequestedSize() && m_readBackSize != SizeOf(m_frameBuffer))
        ReplaceReadBackTexture(QRect(QPoint(0, 0), SizeOf(m_frameBuffer)));
    if (!m_readBackTexture)
        return std::nullopt;
    // Keeps every frame of the wait busy.
    auto const clearBackBuffer = [] { ClearBackBufferWidget(QColor(Qt::red)); };
    QImage picture = Capture::Read(source, m_readBackTexture.Get(), m_readBackSize, clearBackBuffer);
    return picture.isNull() ? std::nullopt : std::optional(std::move(picture));
}

std::optional<QImage> BGFXOffscreenWidget::GrabFrameBuffer() {
    std::optional<QImage> picture = ReadFrameBuffer();
    if (picture && m_viewport != picture->rect())
        picture = picture->copy(m_viewport);
    return picture;
}

void BGFXOffscreenWidget::Flush() {
    bool const isScaled = HasRequestedSize();
    std::optional<QImage> picture = isScaled ? ReadFrameBuffer() : GrabFrameBuffer();
    if (!picture || !testAttribute(Qt::WA_WState_InPaintEvent))
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, isScaled);
    painter.fillRect(rect(), QColor(Qt::black));
    painter.drawPixmap(rect(), QPixmap::fromImage(std::move(*picture).convertToFormat(QImage::Format_RGB32)));
}

QPixmap BGFXOffscreenWidget::RenderPixmap(int width, int height) {
    QSize const size(width, height);
    if (!Capture::IsSupported() || !IsReady() || !Capture::IsPossible(size) ||
        !CanDrawPicture(GetDrawTarget()))
        return {};
    QRect const savedViewport = m_viewport;
    auto const restore = qScopeGuard([&] { // also when the application's paintEvent throws
        RenewFrameBuffer();
        m_viewport = savedViewport;
        UpdateFrameBufferSize();
        UpdateBlitTargetTextureSize();
    });

    RenewFrameBuffer();
    RequestResize(m_frameBuffer, size);
    m_frameBuffer.SubmitOnDemand();
    m_viewport = QRect(QPoint(0, 0), size);
    UpdateBlitTargetTextureSize();
    paintEvent(nullptr);
    std::optional<QImage> picture = GrabFrameBuffer();
    if (!picture)
        Capture::WarnNotTaken(size);
    return QPixmap::fromImage(std::move(picture).value_or(QImage())); // moved: converted in place
}

QImage BGFXOffscreenWidget::RenderPicture(PictureOptions const& options) {
    auto const followAgain = qScopeGuard([this, followed = m_followedSize, read = m_readBackSize] {
        // What `paintEvent` resized, or flushed, was the picture's.
        if (m_followedSize != followed || m_readBackSize != read)
            UpdateFrameBufferSize();
    });
    return TakePicture(GetDrawTarget(), options, GetPixelRatio(), [this] { paintEvent(nullptr); });
}

DrawTarget BGFXOffscreenWidget::GetDrawTarget() {
    return {m_frameBuffer, m_viewport, m_options, m_pictureRatio};
}

} // namespace zarvex::zx3DQt
