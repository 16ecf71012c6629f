// A widget that bgfx draws for, without a native window.
#pragma once

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/PictureOptions.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/Message.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QSize>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

struct DrawTarget;
class FrameRequest;

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
///         if (event) // not while a picture is taken
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
/// The frame buffer gets the widget's size whenever that, the pixel ratio or the library's run changes. A
/// size that is requested for it in between, say twice that for smoother edges, lasts until then: draw into
/// all of the frame buffer, and `Flush` scales it to the widget. A widget with a side beyond the GPU's
/// largest texture shows its palette's background, with a warning.
///
/// Widgets over it: the widget has an empty QVBoxLayout from the start, `layout()`; add them there, or make
/// them children with a geometry of your own. For another kind of layout, delete that one first.
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

    /// The frame buffer without a window; while a picture is drawn, that of the picture.
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

    /// Samples for each pixel: 1 (the default), 2, 4, 8 or 16; with more than one, edges are smooth. Pictures
    /// have them, too. Another number asks for a frame, which has it; where the GPU does not have so many,
    /// there are fewer, with a warning (`zx3D::FrameBuffer::GetSampleCount`).
    /// @{
    void SetSampleCount(std::uint32_t count);
    std::uint32_t GetSampleCount() const { return m_options.sampleCount; }
    /// @}

    /// How finely depths are told apart: `D16` (the default), `D24S8` or `D32F`. Another one asks for a
    /// frame, which has it; where the GPU does not, it has another one, with a warning.
    /// @{
    void SetDepthFormat(bgfx::TextureFormat::Enum format);
    bgfx::TextureFormat::Enum GetDepthFormat() const { return m_options.depthFormat; }
    /// @}

    /// Submits the recorded frame, waits for it and paints its picture on the widget: the viewport's part of
    /// it, or all of it when the frame buffer has a size that was requested for it. Call it in `paintEvent`;
    /// at another time it paints nothing.
    void Flush();

    /// A picture of the scene, `width` × `height` pixels, of any size that the GPU's textures can have,
    /// upright, alpha included. Calls `paintEvent(nullptr)` once, with frame buffer and viewport of that
    /// size. Blocks until bgfx has drawn it. Null, and nothing happened, after `Shutdown`, also once the
    /// widget heard of it, and, with a warning, when the size is out of range or the GPU or the memory
    /// refuses what it takes. Afterwards frame buffer and viewport are those of the whole widget.
    QPixmap RenderPixmap(int width, int height);
    /// The same.
    QPixmap RenderPixmap(QSize size) { return RenderPixmap(size.width(), size.height()); }
    /// Only the size of `rect` counts.
    QPixmap RenderPixmap(QRect rect) { return RenderPixmap(rect.size()); }

    /// A picture of the scene, upright, of any size that the GPU's textures can have, at a pixel ratio of its
    /// own, which `GetPixelRatio()` follows meanwhile. Calls `paintEvent(nullptr)` once, with frame buffer
    /// and viewport of that size. Blocks until bgfx has drawn it.
    ///
    /// The widget need not be shown, and shows what it showed; call it between frames. Null, with a warning:
    /// when a side or the ratio is out of range, after `Shutdown`, in `paintEvent(nullptr)` itself, and when
    /// the GPU or the memory refuses what it takes.
    QImage RenderPicture(PictureOptions const& options);

protected:
    /// A widget without a frame buffer object yet: the first frame creates it.
    explicit BGFXOffscreenWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~BGFXOffscreenWidget() override;

    /// Submits the recorded frame, waits for it and returns the viewport's part of its picture, upright.
    /// Empty while the frame buffer or the texture to read from does not exist, and, with a warning, when
    /// there is no memory for it.
    std::optional<QImage> GrabFrameBuffer();

    /// Physical pixels per device-independent pixel on the widget's screen, at least 1; while `RenderPicture`
    /// has a picture drawn, the picture's.
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
    bool IsReady() const;
    void UpdateFrameBufferSize();
    void UpdateBlitTargetTextureSize();
    void ReplaceReadBackTexture(QRect const& area);
    void RenewFrameBuffer();
    void RefreshFrameBuffer();
    QRect AreaToDraw(QRect const& painted);
    void PaintBackgroundWhereNothingIsDrawn();
    bool HasRequestedSize() const;
    std::optional<QImage> ReadFrameBuffer();
    DrawTarget GetDrawTarget();

    BGFXRenderer m_renderer{nullptr};
    zx3D::FrameBufferOptions m_options; ///< of the frame buffers that are made for the widget
    zx3D::FrameBuffer m_frameBuffer;
    QRect m_viewport;
    std::optional<double> m_pictureRatio; ///< of the picture that `RenderPicture` has drawn
    zx3D::Owned<bgfx::TextureHandle> m_readBackTexture;
    bool m_initialized = false;
    QSize m_readBackSize; ///< of that texture, pixels
    QSize m_followedSize; ///< of the widget, physical pixels, when the frame buffer was given it
    zx3D::ContextRun m_followedIn;
    zx3D::ContextRun m_stoppedIn; ///< the run whose end the widget heard of
    zx3D::OncePerCause m_tooLarge;
    std::unique_ptr<FrameRequest> m_frameRequest;
    bool m_drawsAllNext = false; ///< the next paint draws all of the widget, since this one drew a part
};

} // namespace zarvex::zx3DQt
