// Mouse, wheel, touch, trackpad and keys that move a camera.
#pragma once

#include <zx3DQt/Camera.h>
#include <zx3DQt/CameraBindings.h>
#include <zx3DQt/zx3DQtExport.h>

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QPointF>
#include <QRectF>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

class QKeyEvent;
class QMouseEvent;
class QNativeGestureEvent;
class QTouchEvent;
class QWheelEvent;

namespace zarvex::zx3DQt {

struct CameraDrag;
struct CameraInput;

/// Lets the input of a window or a widget move a camera, which it keeps:
///
///     CameraController controller(&window);
///     controller.SetSceneBox(box);
///     controller.Fit();
///     QObject::connect(&controller, &CameraController::cameraChanged, &window, &QWindow::requestUpdate);
///     // In every frame:
///     controller.Apply(view);
///
/// Works on `BGFXWindow`, `BGFXNativeWidget`, `BGFXOffscreenWidget` and any other window or widget, as an
/// event filter. It takes wheel events, touches, trackpad gestures, double clicks and keys that are bound to
/// something; the target hears nothing of those. Presses, releases and moves of the mouse go on to the
/// target, so that a click there can select and a move can hover. A widget gets a focus policy for keys,
/// if it has none, and accepts touches.
///
/// Nothing runs while nothing moves: a timer is there during a transition only. Any key, button, wheel,
/// touch or gesture ends a transition where it is.
///
/// Lifetime: a child of its target; it may go before it. Thread: the GUI thread.
class ZX3DQT_EXPORT CameraController final : public QObject {
    Q_OBJECT

public:
    /// With an orbit camera, for the input of `target`.
    explicit CameraController(QObject* target);
    ~CameraController() override;

    /// The camera, which is at once where it is told to be. An equal one changes nothing, not even a
    /// transition.
    /// @{
    Camera const& GetCamera() const { return m_camera; }
    void SetCamera(Camera const& camera);
    /// @}

    /// Goes to a camera, or to one that sees all of the scene's box (from there), in the transition time; at
    /// once where it is of another kind, or the target is not visible. While nobody has moved the camera
    /// since it was fitted, it is fitted again when the viewport changes its size.
    /// @{
    void MoveTo(Camera const& camera);
    void Fit();
    void LookFrom(StandardView view);
    /// @}

    /// Does what a key does that is bound to it: for menus and tool bars.
    void Execute(CameraCommand command);

    /// What is there to be seen: for `Fit`, and for the near and far planes of `Apply`.
    /// @{
    std::optional<WorldBox> const& GetSceneBox() const { return m_sceneBox; }
    void SetSceneBox(std::optional<WorldBox> const& box) { m_sceneBox = box; }
    /// @}

    /// The part of the target that the camera's picture is in, device-independent pixels; unless given, all
    /// of it. What the mouse, a wheel, a touch or a gesture does elsewhere is not taken: targets with several
    /// pictures have a controller for each.
    /// @{
    QRectF GetViewport() const;
    void SetViewport(std::optional<QRectF> const& viewport);
    /// @}

    /// Which input does what. New ones hold from the next press or touch on.
    /// @{
    CameraBindings const& GetBindings() const { return m_bindings; }
    void SetBindings(CameraBindings const& bindings) { m_bindings = bindings; }
    /// @}

    /// How long `MoveTo`, `Fit` and `LookFrom` take, 250 milliseconds unless told otherwise; 0 for none.
    /// @{
    std::chrono::milliseconds GetTransitionTime() const { return m_transitionTime; }
    void SetTransitionTime(std::chrono::milliseconds time) { m_transitionTime = time; }
    /// @}

    /// Whether the camera is on its way.
    bool IsInTransition() const { return m_timer.isActive(); }

    /// Sets a view's matrices for the camera and the scene's box.
    void Apply(BGFXViewContext& view, ViewOrigin origin = ViewOrigin::Keep) const;

    /// Looks at the target's events.
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The camera is another one: draw a frame.
    void cameraChanged();

protected:
    /// A step of a transition.
    void timerEvent(QTimerEvent* event) override;

private:
    struct Drag;
    struct Finger;

    bool IsMine(QPointF const& position) const { return GetViewport().contains(position); }
    CameraInput GetInput() const;
    void Change(Camera const& camera);
    void Follow(CameraMovement movement, CameraDrag const& drag);
    void StartTransition(Camera const& goal);
    void FinishTransition();
    Camera Fitted(Camera camera) const;
    void FitAgain();

    bool Handle(QEvent const& event);
    bool HandleMouse(QMouseEvent const& event);
    bool HandleWheel(QWheelEvent const& event);
    bool HandleKey(QKeyEvent const& event);
    bool HandleTouch(QTouchEvent const& event);
    void FollowFingers(std::vector<Finger> const& fingers);
    bool HandleGesture(QNativeGestureEvent const& event);

    QObject* m_target;
    Camera m_camera;
    std::optional<WorldBox> m_sceneBox;
    std::optional<QRectF> m_viewport;
    CameraBindings m_bindings;
    std::chrono::milliseconds m_transitionTime{250};
    bool m_isFitted = false; ///< since then nobody has moved it

    std::unique_ptr<Drag> m_drag; ///< null without one
    std::vector<Finger> m_fingers;

    Camera m_start; ///< of the transition
    Camera m_goal;
    QElapsedTimer m_clock;
    QBasicTimer m_timer; ///< runs during a transition
};

} // namespace zarvex::zx3DQt
