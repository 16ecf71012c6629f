// A window that bgfx draws into.
#pragma once

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/PictureOptions.h>
#include <zx3DQt/UpdateEvents.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRect>
#include <QWheelEvent>
#include <QWindow>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

struct DrawTarget;
class HeldEvents;

/// A QWindow that owns a renderer, a frame buffer on its native surface, and a viewport.
///
/// The frame buffer is created with the platform surface (colour BGRA8, depth D16 unless told otherwise),
/// follows the window's size times its device pixel ratio, and is destroyed before the surface goes. The
/// window draws nothing by itself: the application starts, records and presents frames, in an override of
/// `exposeEvent` or, for animation, of `event` for `QEvent::UpdateRequest`, which `requestUpdate` asks for.
/// Input is republished as signals, whose arguments live until the signal returns.
///
/// While a frame is in flight (`zx3D::Context::IsFrameInFlight`), expose, paint and update events do not
/// reach the window: one of each kind comes from the event loop when the frame is finished, so that
/// presenting does not wait for it. What draws at another time, in a timer's slot or in `resizeEvent`, may
/// wait.
///
/// Closing the window destroys its surface, and a surface that comes later is not taken: to show the window
/// again, hide it instead of closing it.
///
/// Lifetime: create it after `Init`. It may be destroyed after `Shutdown`. Thread: the GUI thread.
class ZX3DQT_EXPORT BGFXWindow : public QWindow {
    Q_OBJECT

public:
    /// A hidden window without a frame buffer: that comes with the platform surface.
    explicit BGFXWindow(QWindow* parent = nullptr);
    ~BGFXWindow() override;

    /// The renderer that draws into the window; owned by it.
    /// @{
    BGFXRenderer& GetRenderer() { return m_renderer; }
    BGFXRenderer const& GetRenderer() const { return m_renderer; }
    /// @}

    /// The frame buffer on the window's surface.
    /// @{
    zx3D::FrameBuffer& GetFrameBuffer() { return m_frameBuffer; }
    zx3D::FrameBuffer const& GetFrameBuffer() const { return m_frameBuffer; }
    /// @}

    /// The area to render, physical pixels: the whole window, or what `updateViewPortEvent` last said.
    /// @{
    QRect& GetViewport() { return m_viewport; }
    QRect const& GetViewport() const { return m_viewport; }
    /// @}

    /// Replaces the frame buffer by a copy. The old one is not destroyed. When the window's surface goes,
    /// what is the frame buffer then is destroyed; one of another window is shown there again by that
    /// window's next frame.
    void SetFrameBuffer(zx3D::FrameBuffer const& frameBuffer) { m_frameBuffer = frameBuffer; }
    /// Physical pixels; holds until the window is resized or exposed.
    void SetViewport(QRect viewport) { m_viewport = viewport; }

    /// Samples for each pixel: 1 (the default), 2, 4, 8 or 16. With more than one, edges are smooth. From the
    /// next frame on; where the GPU does not have so many, there are fewer, with a warning
    /// (`zx3D::FrameBuffer::GetSampleCount`).
    /// @{
    void SetSampleCount(std::uint32_t count);
    std::uint32_t GetSampleCount() const { return m_options.sampleCount; }
    /// @}

    /// How finely depths are told apart: `D16` (the default), `D24S8` or `D32F`. From the next frame on;
    /// where the GPU does not have it, it is another one, with a warning. Of one sample the window system may
    /// choose a finer one.
    /// @{
    void SetDepthFormat(bgfx::TextureFormat::Enum format);
    bgfx::TextureFormat::Enum GetDepthFormat() const { return m_options.depthFormat; }
    /// @}

    /// Physical pixels per device-independent pixel, at least 1; while a picture is drawn, the picture's.
    double GetPixelRatio() const;

    /// A picture, upright, of any size that the GPU's textures can have. Calls `draw` once with its pixel
    /// ratio, while frame buffer and viewport are the picture's: start a frame and draw as for the screen, in
    /// views up to 253, and present nothing. Blocks until bgfx has drawn it.
    ///
    /// The window need not be shown, and shows what it showed; call it between frames. Null, with a warning:
    /// when a side or the ratio is out of range, before `Init` and after `Shutdown`, where bgfx cannot blit
    /// or read back, in `draw` itself, and when the GPU or the memory refuses what it takes. What `draw`
    /// throws comes through, and the window is as before.
    QImage RenderPicture(PictureOptions const& options, std::function<void(double pixelRatio)> const& draw);

    /// Qt's handlers. An override calls the one it overrides.
    /// @{
    bool event(QEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool nativeEvent(QByteArray const& eventType, void* message, qintptr* result) override;
    /// @}

signals:
    /// Input over the window, before QWindow handles it. The event lives until the signal returns.
    /// @{
    void keyPressedEvent(QKeyEvent* event);
    void mouseMovedEvent(QMouseEvent* event);
    void mouseClickedEvent(QMouseEvent* event);
    void mouseReleasedEvent(QMouseEvent* event);
    void mouseDoubleClickedEvent(QMouseEvent* event);
    /// @}
    /// Overrides QWindow's handler: delivering a wheel event to the window emits the signal.
    void wheelEvent(QWheelEvent* event) override;

public slots:
    /// Makes frame buffer and viewport follow the window's own size and pixel ratio. The size that the event
    /// carries is not used.
    void updateFrameBufferEvent(zarvex::zx3DQt::UpdateFrameBufferEvent* event);

    /// Makes the viewport the bounding rectangle of the event's region, in physical pixels; the frame buffer
    /// keeps its size. Throws `std::bad_optional_access` when the event carries no region.
    void updateViewPortEvent(zarvex::zx3DQt::UpdateViewportEvent* event);

private:
    void InitializeFrameBufferOnce();
    void UpdateFrameBufferSize();
    void LeaveOwnSurface();
    DrawTarget GetDrawTarget();
    void LogGeometry(char const* prefix) const;

    BGFXRenderer m_renderer;
    zx3D::FrameBufferOptions m_options; ///< of the frame buffers that are made for the window
    zx3D::FrameBuffer m_frameBuffer;
    QRect m_viewport;
    std::optional<double> m_pictureRatio; ///< of the picture that is being drawn
    bool m_initialized = false;
    std::unique_ptr<HeldEvents> m_heldEvents; ///< null inside of a widget, which puts its paints off itself

    friend class BGFXNativeWidget;
};

} // namespace zarvex::zx3DQt
