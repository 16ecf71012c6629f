// A widget that bgfx draws for, without a native window.
#pragma once

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/ContextListener.h>
#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QSize>
#include <QWidget>

#include <optional>

namespace zarvex::zx3DQt {

/// A QWidget that is an ordinary widget to Qt: other widgets may lie over it, it may be transparent to
/// layouts, scroll areas and effects. bgfx draws into a frame buffer without a window, each frame is read
/// back and painted. That costs a copy from the GPU and a wait for it in every frame; `BGFXNativeWidget` has
/// neither.
///
/// Derive from it and draw in `paintEvent`:
///
///     void paintEvent(QPaintEvent* event) override {
///         BGFXOffscreenWidget::paintEvent(event);
///         if (!GetRenderer().StartFrame(GetFrameBuffer()))
///             return;
///         // submit view contexts over GetViewport(), draw
///         if (event) // not while RenderPixmap takes a picture
///             Flush();
///     }
///
/// Do not present the frame: `Flush` does. Views: use ids from 1 to 253. View 0 is taken by the frames that
/// the widget waits with, view 254 by the copy.
///
/// Sizes: frame buffer and `GetViewport()` are in physical pixels. The viewport is what is being painted: all
/// of the widget, or a part of it when Qt asks for that, for example beneath another widget. Such a part is
/// painted with what the viewport shows, and all of the widget again right after it.
///
/// Lifetime: create it after `Init`; ends the process with a fatal message where bgfx cannot blit or read
/// back. It may be destroyed after `Shutdown`. Thread: the GUI thread.
class ZX3DQT_EXPORT BGFXOffscreenWidget : public QWidget, private zx3D::ContextListener {
    Q_OBJECT

public:
    /// The format of the colours that are drawn and read back.
    static constexpr bgfx::TextureFormat::Enum TEXTURE_FORMAT = bgfx::TextureFormat::RGBA8;

    /// The renderer that draws into the widget; owned by it.
    /// @{
    BGFXRenderer& GetRenderer() { return m_renderer; }
    BGFXRenderer const& GetRenderer() const { return m_renderer; }
    /// @}

    /// The frame buffer without a window; in `RenderPixmap` that of the picture.
    /// @{
    zx3D::FrameBuffer& GetFrameBuffer() { return m_frameBuffer; }
    zx3D::FrameBuffer const& GetFrameBuffer() const { return m_frameBuffer; }
    /// @}

    /// The area that is being painted, physical pixels.
    /// @{
    QRect& GetViewport() { return m_viewport; }
    QRect const& GetViewport() const { return m_viewport; }
    /// @}

    /// Replaces the frame buffer by a copy. The old one is not destroyed.
    void SetFrameBuffer(zx3D::FrameBuffer const& frameBuffer) { m_frameBuffer = frameBuffer; }
    /// Physical pixels; holds until the next resize or paint event.
    void SetViewport(QRect const& viewport) { m_viewport = viewport; }

    /// Submits the recorded frame, waits for it and paints its picture on the widget. Call it in
    /// `paintEvent`; at another time it paints nothing.
    void Flush();

    /// A picture of the scene, `width` × `height` pixels, of any size that the GPU's textures can have,
    /// upright, alpha included. Calls `paintEvent(nullptr)` once, with frame buffer and viewport of that
    /// size. Blocks until bgfx has drawn it. Null, and nothing happened, after `Shutdown` and, with a
    /// warning, when the size is out of range. Afterwards frame buffer and viewport are those of the whole
    /// widget.
    QPixmap RenderPixmap(int width, int height);
    /// The same.
    QPixmap RenderPixmap(QSize size) { return RenderPixmap(size.width(), size.height()); }
    /// Only the size of `rect` counts.
    QPixmap RenderPixmap(QRect rect) { return RenderPixmap(rect.size()); }

protected:
    /// A widget without a frame buffer object yet: the first frame creates it.
    explicit BGFXOffscreenWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~BGFXOffscreenWidget() override;

    /// Submits the recorded frame, waits for it and returns the viewport's part of its picture, upright.
    /// Empty while the frame buffer or the texture to read from does not exist.
    std::optional<QImage> GrabFrameBuffer();

    /// Physical pixels per device-independent pixel on the widget's screen, at least 1.
    double GetPixelRatio() const;

    /// Qt's handlers. An override calls the one it overrides.
    /// @{
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    /// @}

private:
    void OnContextStopping() override;

    void InitializeFrameBufferOnce();
    void InitializeRenderingWidget(QWidget* parent, Qt::WindowFlags flags);
    void UpdateFrameBufferSize();
    void UpdateBlitTargetTextureSize();
    void DestroyBlitTarget();
    void RenewFrameBuffer();
    void RefreshFrameBuffer();
    QRect AreaToDraw(QRect const& painted);
    void LogHandler(char const* eventClass, QEvent const* event) const;

    BGFXRenderer m_renderer{nullptr};
    zx3D::FrameBuffer m_frameBuffer;
    QRect m_viewport;
    bgfx::TextureHandle m_blitTarget = BGFX_INVALID_HANDLE;
    bool m_initialized = false;
    QSize m_blitTargetSize;      ///< pixels
    bool m_drawsAllNext = false; ///< the next paint draws all of the widget, since this one drew a part
};

} // namespace zarvex::zx3DQt
