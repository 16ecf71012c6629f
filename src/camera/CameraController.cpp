// From events to movements, and transitions.
#include <zx3DQt/CameraController.h>

#include <zx3DQt/BGFXNativeWidget.h>

#include "CameraMovements.h"
#include "ViewGeometry.h"

#include <QEasingCurve>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QTimerEvent>
#include <QTouchEvent>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

constexpr int kFrameInterval = 16; // milliseconds

QRectF AreaOf(QObject const& target) {
    if (target.isWidgetType())
        return QRectF(static_cast<QWidget const&>(target).rect());
    if (target.isWindowType())
        return QRectF(QPointF(), QSizeF(static_cast<QWindow const&>(target).size()));
    return {};
}

bool IsVisible(QObject const& target) {
    if (target.isWidgetType())
        return static_cast<QWidget const&>(target).isVisible();
    return !target.isWindowType() || static_cast<QWindow const&>(target).isVisible();
}

/// What a person does with a hand, at its beginning: it ends a transition.
bool IsIntervention(QEvent::Type type) {
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::NativeGesture:
        return true;
    default:
        return false;
    }
}

bool IsFollowedThrough(CameraCommand command) {
    return command < CameraCommand::Fit;
}

std::optional<StandardView> ViewOf(CameraCommand command) {
    switch (command) {
    case CameraCommand::LookIsometric:
        return StandardView::Isometric;
    case CameraCommand::LookFront:
        return StandardView::Front;
    case CameraCommand::LookBack:
        return StandardView::Back;
    case CameraCommand::LookLeft:
        return StandardView::Left;
    case CameraCommand::LookRight:
        return StandardView::Right;
    case CameraCommand::LookTop:
        return StandardView::Top;
    case CameraCommand::LookBottom:
        return StandardView::Bottom;
    default:
        return std::nullopt;
    }
}

/// What is bound to these modifiers.
CameraMovement FindMovement(std::vector<CameraWheelBinding> const& bindings,
                            Qt::KeyboardModifiers modifiers) {
    auto const found = std::ranges::find(bindings, modifiers, &CameraWheelBinding::modifiers);
    return found != bindings.end() ? found->movement : CameraMovement::None;
}

} // namespace

/// A button that is held.
struct CameraController::Drag {
    Qt::MouseButton button;
    CameraMovement movement;
    QPointF start;
    QPointF last;
};

/// On a touch screen.
struct CameraController::Finger {
    int id;
    QPointF position;
};

CameraController::CameraController(QObject* target) : QObject(target), m_target(target) {
    target->installEventFilter(this);
    if (target->isWidgetType()) {
        auto* const widget = static_cast<QWidget*>(target);
        widget->setAttribute(Qt::WA_AcceptTouchEvents);
        if (widget->focusPolicy() == Qt::NoFocus)
            widget->setFocusPolicy(Qt::StrongFocus);
    }
    // Input over the embedded window reaches the widget past its event filters, and touches do not at all.
    if (auto* const native = qobject_cast<BGFXNativeWidget*>(target))
        native->GetWindow().installEventFilter(this);
}

CameraController::~CameraController() = default;

// ---- The camera, and transitions.

CameraInput CameraController::GetInput() const {
    return {GetViewport(), m_bindings};
}

QRectF CameraController::GetViewport() const {
    return m_viewport ? *m_viewport : AreaOf(*m_target);
}

void CameraController::SetViewport(std::optional<QRectF> const& viewport) {
    m_viewport = viewport;
    FitAgain();
}

void CameraController::Change(Camera const& camera) {
    if (camera == m_camera)
        return;
    m_camera = camera;
    emit cameraChanged();
}

void CameraController::SetCamera(Camera const& camera) {
    if (camera == m_camera)
        return;
    m_timer.stop();
    m_isFitted = false;
    Change(camera);
}

void CameraController::MoveTo(Camera const& camera) {
    m_isFitted = false;
    StartTransition(camera);
}

Camera CameraController::Fitted(Camera camera) const {
    QRectF const viewport = GetViewport();
    if (m_sceneBox && !viewport.isEmpty())
        zx3DQt::Fit(camera, *m_sceneBox, viewport.width() / viewport.height());
    return camera;
}

void CameraController::Fit() {
    m_isFitted = true;
    StartTransition(Fitted(m_camera));
}

void CameraController::LookFrom(StandardView view) {
    m_isFitted = true;
    Camera camera = m_camera;
    zx3DQt::LookFrom(camera, view);
    StartTransition(Fitted(camera));
}

void CameraController::FitAgain() {
    if (!m_isFitted)
        return;
    if (IsInTransition())
        m_goal = Fitted(m_goal);
    else
        Change(Fitted(m_camera));
}

void CameraController::StartTransition(Camera const& goal) {
    m_start = m_camera;
    m_goal = goal;
    m_clock.start();
    if (goal == m_camera || m_transitionTime.count() <= 0 || !IsVisible(*m_target))
        FinishTransition(); // nobody would see it
    else
        m_timer.start(kFrameInterval, Qt::PreciseTimer, this);
}

void CameraController::FinishTransition() {
    m_timer.stop();
    Change(m_goal);
}

void CameraController::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_timer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    double const time =
        static_cast<double>(m_clock.elapsed()) / static_cast<double>(m_transitionTime.count());
    if (time >= 1.0)
        FinishTransition();
    else
        Change(Interpolate(m_start, m_goal, QEasingCurve(QEasingCurve::InOutCubic).valueForProgress(time)));
}

void CameraController::Apply(BGFXViewContext& view, ViewOrigin origin) const {
    zx3DQt::Apply(m_camera, view, m_sceneBox, origin);
}

void CameraController::Execute(CameraCommand command) {
    if (auto const view = ViewOf(command)) {
        LookFrom(*view);
    } else if (command == CameraCommand::Fit) {
        Fit();
    } else {
        Camera camera = m_camera;
        auto* const orbit = std::get_if<OrbitCamera>(&camera);
        if (command != CameraCommand::ToggleProjection)
            StepCamera(camera, command, GetInput());
        else if (orbit != nullptr)
            orbit->SetProjection(orbit->GetProjection() == Projection::Parallel ? Projection::Perspective
                                                                                : Projection::Parallel);
        SetCamera(camera);
    }
}

void CameraController::Follow(CameraMovement movement, CameraDrag const& drag) {
    Camera camera = m_camera;
    MoveCamera(camera, movement, drag, GetInput());
    SetCamera(camera);
}

// ---- Events.

bool CameraController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && watched == m_target)
        FitAgain();
    bool const isRepeated =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent const*>(event)->isAutoRepeat();
    if (IsInTransition() && IsIntervention(event->type()) && !isRepeated) {
        m_timer.stop();
        m_isFitted = false;
    }
    bool const isTaken = Handle(*event);
    if (isTaken)
        event->accept(); // or it goes on to the parent, and a mouse is made of touches
    return isTaken;
}

bool CameraController::Handle(QEvent const& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        return HandleMouse(static_cast<QMouseEvent const&>(event));
    case QEvent::Wheel:
        return HandleWheel(static_cast<QWheelEvent const&>(event));
    case QEvent::KeyPress:
        return HandleKey(static_cast<QKeyEvent const&>(event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return HandleTouch(static_cast<QTouchEvent const&>(event));
    case QEvent::NativeGesture:
        return HandleGesture(static_cast<QNativeGestureEvent const&>(event));
    default:
        return false;
    }
}

bool CameraController::HandleMouse(QMouseEvent const& event) {
    QPointF const position = event.position();
    switch (event.type()) {
    case QEvent::MouseButtonPress: {
        auto const isBound = [&event](CameraMouseBinding const& binding) {
            return binding.button == event.button() && binding.modifiers == event.modifiers();
        };
        auto const found = std::ranges::find_if(m_bindings.mouse, isBound);
        if (found != m_bindings.mouse.end() && IsMine(position))
            m_drag = std::make_unique<Drag>(Drag{event.button(), found->movement, position, position});
        return false;
    }
    case QEvent::MouseMove:
        if (m_drag != nullptr && !(event.buttons() & m_drag->button))
            m_drag.reset(); // its release went elsewhere
        if (m_drag != nullptr)
            Follow(m_drag->movement, {m_drag->start, std::exchange(m_drag->last, position), position});
        return false;
    case QEvent::MouseButtonDblClick:
        if (event.button() != Qt::LeftButton || !m_bindings.doubleClick || !IsMine(position))
            return false;
        Execute(*m_bindings.doubleClick);
        return true;
    default:
        if (m_drag != nullptr && event.button() == m_drag->button)
            m_drag.reset();
        return false;
    }
}

bool CameraController::HandleWheel(QWheelEvent const& event) {
    bool const isScrolling = event.phase() != Qt::NoScrollPhase && event.hasPixelDelta();
    CameraMovement const movement =
        FindMovement(isScrolling ? m_bindings.scroll : m_bindings.wheel, event.modifiers());
    QPointF const position = event.position();
    if (movement == CameraMovement::None || !IsMine(position))
        return false;
    QPointF const notches = QPointF(event.angleDelta()) / QWheelEvent::DefaultDeltasPerStep;
    if (movement == CameraMovement::Zoom) {
        Camera camera = m_camera;
        ZoomCamera(camera, notches.y() != 0.0 ? notches.y() : notches.x(), position, GetInput());
        SetCamera(camera);
    } else {
        QPointF const moved = isScrolling ? QPointF(event.pixelDelta()) : m_bindings.pixelsPerStep * notches;
        Follow(movement, {position, position, position + moved});
    }
    return true;
}

bool CameraController::HandleKey(QKeyEvent const& event) {
    Qt::KeyboardModifiers const modifiers = event.modifiers() & ~Qt::KeypadModifier;
    auto const isBound = [&](CameraKeyBinding const& binding) {
        return binding.key == event.key() && binding.modifiers == modifiers;
    };
    auto const found = std::ranges::find_if(m_bindings.keys, isBound);
    if (found == m_bindings.keys.end())
        return false;
    // A key that is held moves on, but does not begin the same transition again and again.
    if (!event.isAutoRepeat() || IsFollowedThrough(found->command))
        Execute(found->command);
    return true;
}

bool CameraController::HandleTouch(QTouchEvent const& event) {
    if (event.deviceType() != QInputDevice::DeviceType::TouchScreen)
        return false; // trackpads scroll and make gestures as well
    if (event.type() == QEvent::TouchBegin &&
        !std::ranges::all_of(event.points(), [this](QEventPoint const& p) { return IsMine(p.position()); }))
        return false;
    std::vector<Finger> fingers;
    for (QEventPoint const& point : event.points()) {
        if (point.state() != QEventPoint::State::Released && event.type() != QEvent::TouchCancel)
            fingers.push_back({point.id(), point.position()});
    }
    bool const areTheSame =
        std::ranges::equal(fingers, m_fingers, {}, &Finger::id, &Finger::id) && !fingers.empty();
    if (areTheSame)
        FollowFingers(fingers);
    m_fingers = std::move(fingers);
    return true;
}

void CameraController::FollowFingers(std::vector<Finger> const& fingers) {
    QPointF const from = m_fingers[0].position;
    QPointF const to = fingers[0].position;
    if (fingers.size() == 1) {
        Follow(m_bindings.oneFinger, {from, from, to});
        return;
    }
    QPointF const otherFrom = m_fingers[1].position;
    QPointF const otherTo = fingers[1].position;
    QPointF const middle = 0.5 * (to + otherTo);
    Follow(m_bindings.twoFingers, {middle, 0.5 * (from + otherFrom), middle});
    QPointF const before = otherFrom - from;
    QPointF const after = otherTo - to;
    Camera camera = m_camera;
    double const factor = std::hypot(after.x(), after.y()) / std::hypot(before.x(), before.y());
    if (m_bindings.pinchZooms)
        ZoomCamera(camera, std::log(factor) / std::log(m_bindings.zoomPerStep), middle, GetInput());
    double const turned = std::atan2(after.y(), after.x()) - std::atan2(before.y(), before.x());
    if (m_bindings.twistRolls)
        RollCamera(camera, WrapDegrees(turned * 180.0 / std::numbers::pi), middle, GetInput());
    SetCamera(camera);
}

bool CameraController::HandleGesture(QNativeGestureEvent const& event) {
    QPointF const position = event.position();
    if (!IsMine(position))
        return false;
    Camera camera = m_camera;
    switch (event.gestureType()) {
    case Qt::ZoomNativeGesture: // the value is what is added to a scale of 1
        if (!m_bindings.pinchZooms)
            return false;
        ZoomCamera(camera, std::log(1.0 + event.value()) / std::log(m_bindings.zoomPerStep), position,
                   GetInput());
        SetCamera(camera);
        return true;
    case Qt::RotateNativeGesture:
        if (!m_bindings.twistRolls)
            return false;
        RollCamera(camera, event.value(), position, GetInput());
        SetCamera(camera);
        return true;
    case Qt::PanNativeGesture:
        Follow(m_bindings.twoFingers, {position, position, position + event.delta()});
        return true;
    case Qt::SmartZoomNativeGesture:
        if (!m_bindings.doubleClick)
            return false;
        Execute(*m_bindings.doubleClick);
        return true;
    default:
        return false;
    }
}

} // namespace zarvex::zx3DQt
