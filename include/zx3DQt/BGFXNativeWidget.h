// A widget that bgfx draws into directly.
#pragma once

#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/zx3DQtExport.h>

#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <cstdint>
#include <memory>

namespace zarvex::zx3DQt {

class FrameRequest;
class PaintTurn;
class ReportedSize;

/// A QWidget that embeds a `BGFXWindow`: the fastest way onto the screen, since nothing is copied. Derive
/// from it and draw in `paintEvent`:
///
///     void paintEvent(QPaintEvent* event) override {
///         BGFXNativeWidget::paintEvent(event);
///         if (!GetRenderer().StartFrame(GetFrameBuffer()))
///             return;
///         // submit view contexts over GetViewport(), draw
///         if (event) // not while a picture is taken
///             GetRenderer().PresentCurrentAndSubmitNextFrame(false);
///     }
///
/// The embedded window is native and lies above everything that is painted in the same top-level window:
/// ordinary widgets cannot lie over it, be it as siblings or as children. `BGFXOffscreenWidget` can do that.
///
/// Sizes: frame buffer and `GetViewport()` are in physical pixels. The frame buffer always has the widget's
/// size; the viewport is what was painted last, which may be a part of it. When the size changes, the window
/// is uncovered, or the widget gets another native window (docking, reparenting), it asks for a frame by
/// itself.
///
/// Paints: while a frame is in flight (`zx3D::Context::IsFrameInFlight`), what `update()` or the window
/// system asks for is put off until it is finished, so that presenting does not wait for it; any number of
/// requests is one paint. `repaint`, `grab`, `render`, `RenderPixmap` and `RenderPicture` paint at once.
///
/// Input: mouse, key and wheel events over the embedded window arrive at the widget's own handlers, in widget
/// coordinates; a right click asks for a context menu, too. The keyboard focus is the widget's: a click takes
/// it, Tab leaves it. The cursor of the widget is shown. Touch, tablet and drag-and-drop events over the
/// embedded window do not arrive.
///
/// Lifetime: create it after `Init`; its window goes with it. Thread: the GUI thread.
class ZX3DQT_EXPORT BGFXNativeWidget : public QWidget {
    Q_OBJECT

public:
    /// The renderer that draws into the widget; owned by it.
    /// @{
    BGFXRenderer& GetRenderer() { return m_window->GetRenderer(); }
    BGFXRenderer const& GetRenderer() const { return m_window->GetRenderer(); }
    /// @}

    /// The embedded window, owned by the widget: for filters of events that do not arrive at the widget.
    /// @{
    BGFXWindow& GetWindow() { return *m_window; }
    BGFXWindow const& GetWindow() const { return *m_window; }
    /// @}

    /// The frame buffer on the embedded window; while a picture is drawn, that of the picture.
    /// @{
    zx3D::FrameBuffer& GetFrameBuffer() { return m_window->GetFrameBuffer(); }
    zx3D::FrameBuffer const& GetFrameBuffer() const { return m_window->GetFrameBuffer(); }
    /// @}

    /// In `paintEvent` the area to draw, physical pixels: all of the widget, or of the picture that is taken.
    /// After it, the part that Qt asked for.
    /// @{
    QRect& GetViewport() { return m_window->GetViewport(); }
    QRect const& GetViewport() const { return m_window->GetViewport(); }
    /// @}

    /// Replaces the window's frame buffer by a copy. The old one is not destroyed.
    void SetFrameBuffer(zx3D::FrameBuffer const& frameBuffer) { m_window->SetFrameBuffer(frameBuffer); }
    /// Physical pixels; holds until the next resize or paint event.
    void SetViewport(QRect const& viewport) { m_window->SetViewport(viewport); }

    /// Samples for each pixel: 1 (the default), 2, 4, 8 or 16; with more than one, edges are smooth. Pictures
    /// have them, too. Another number asks for a frame, which has it; where the GPU does not have so many,
    /// there are fewer, with a warning (`zx3D::FrameBuffer::GetSampleCount`).
    /// @{
    void SetSampleCount(std::uint32_t count);
    std::uint32_t GetSampleCount() const { return m_window->GetSampleCount(); }
    /// @}

    /// How finely depths are told apart: `D16` (the default), `D24S8` or `D32F`. Another one asks for a
    /// frame, which has it; where the GPU does not, it has another one, with a warning.
    /// @{
    void SetDepthFormat(bgfx::TextureFormat::Enum format);
    bgfx::TextureFormat::Enum GetDepthFormat() const { return m_window->GetDepthFormat(); }
    /// @}

    /// A picture of the scene, `width` × `height` pixels, of any size that the GPU's textures can have,
    /// upright, alpha included. Calls `paintEvent(nullptr)` once, with frame buffer and viewport of that
    /// size; present nothing there. Blocks until bgfx has drawn it.
    ///
    /// Null, and nothing happened, where bgfx cannot blit or read back, and, with a warning, when the size is
    /// out of range. Transparent, with a warning, when the GPU or the memory refuses what it takes.
    /// Afterwards the widget is as before, and asks for one frame, since the surface on the screen was given
    /// up meanwhile.
    QPixmap RenderPixmap(int width, int height);

    /// A picture of the scene, upright, of any size that the GPU's textures can have, at a pixel ratio of its
    /// own, which `GetPixelRatio()` follows meanwhile. Calls `paintEvent(nullptr)` once, with frame buffer
    /// and viewport of that size; present nothing there. Blocks until bgfx has drawn it.
    ///
    /// The widget need not be shown, and shows what it showed; call it between frames. Null, with a warning:
    /// when a side or the ratio is out of range, before `Init` and after `Shutdown`, where bgfx cannot blit
    /// or read back, in `paintEvent(nullptr)` itself, and when the GPU or the memory refuses what it takes.
    QImage RenderPicture(PictureOptions const& options);

    /// Qt's handlers. An override calls the one it overrides.
    /// @{
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool nativeEvent(QByteArray const& eventType, void* message, qintptr* result) override;
    /// @}
    /// None: bgfx draws.
    QPaintEngine* paintEngine() const override;

signals:
    /// The embedded window's frame buffer must follow a new size. The event lives until the signal returns.
    void updateFrameBufferEvent(zarvex::zx3DQt::UpdateFrameBufferEvent* event);
    /// The embedded window's viewport must follow a new paint region. Likewise.
    void updateViewPortEvent(zarvex::zx3DQt::UpdateViewportEvent* event);

protected:
    /// A widget with its window, which is shown with it.
    explicit BGFXNativeWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~BGFXNativeWidget() override;

    /// Physical pixels per device-independent pixel on the widget's screen, at least 1; while `RenderPicture`
    /// has a picture drawn, the picture's.
    double GetPixelRatio() const;

    /// Follows the embedded window: its size, its surface, its focus and its paint events.
    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Connects size and viewport updates to the embedded window and its input to `event`.
    virtual void ConnectRenderTargetWindowSignals();
    /// Takes back the connections to the window; its input still arrives.
    virtual void DisconnectRenderTargetWindowSignals();

private:
    void InitializeRenderingWidget(QWidget* parent, Qt::WindowFlags flags);
    void FinishUpdate();
    void FollowWindow(QEvent const& event);
    void TakeFocus();
    void PostContextMenu(QMouseEvent const& press);
    void BindNewSurface();
    void UpdateTarget(QPaintEvent const& event);
    void PaintNow();
    bool PutOff();
    bool IsAheadOfWindow() const;
    void LogFilter(char const* prefix, QObject const* watched, QEvent const* event) const;

    std::unique_ptr<BGFXWindow> m_window;
    std::unique_ptr<QWidget> m_container;
    bool m_surfaceLost = false; ///< the window's first surface is gone
    std::unique_ptr<FrameRequest> m_frameRequest;
    std::unique_ptr<PaintTurn> m_turn;
    bool m_paintsAtOnce = false;                  ///< `repaint` is under way, or the turn came
    std::unique_ptr<ReportedSize> m_windowSize;   ///< the embedded window's
    std::unique_ptr<ReportedSize> m_topLevelSize; ///< that of the window that all of this lies in
};

} // namespace zarvex::zx3DQt
