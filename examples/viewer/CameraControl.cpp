// From events to the camera's movements.
#include "CameraControl.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace viewer {

namespace {

constexpr float kDegreesPerPixel = 0.4f;
constexpr float kDegreesPerKey = 7.5f;
constexpr double kSharePerKey = 0.1;
constexpr float kZoomPerStep = 1.15f;
constexpr float kWheelStep = 120.0f; ///< Qt's unit: eighths of a degree, 15 degrees a notch

} // namespace

bool CameraControl::Handle(QEvent& event, QSizeF viewSize) {
    m_viewSize = viewSize.expandedTo(QSizeF(1.0, 1.0));
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        return Press(static_cast<QMouseEvent const&>(event));
    case QEvent::MouseMove:
        return Drag(static_cast<QMouseEvent const&>(event));
    case QEvent::MouseButtonDblClick:
        m_scene.Fit();
        return true;
    case QEvent::Wheel:
        return Turn(static_cast<QWheelEvent const&>(event));
    case QEvent::KeyPress:
        return Type(static_cast<QKeyEvent const&>(event));
    default:
        return false;
    }
}

QPointF CameraControl::PlaceInView(QPointF position) const {
    return ToShares(position - QPointF(0.5 * m_viewSize.width(), 0.5 * m_viewSize.height()));
}

bool CameraControl::Press(QMouseEvent const& event) {
    m_lastPosition = event.position();
    return true;
}

bool CameraControl::Drag(QMouseEvent const& event) {
    QPointF const moved = event.position() - m_lastPosition;
    m_lastPosition = event.position();
    bool const withShift = event.modifiers() & Qt::ShiftModifier;
    OrbitCamera camera = m_scene.GetCamera();
    if ((event.buttons() & (Qt::MiddleButton | Qt::RightButton)) ||
        ((event.buttons() & Qt::LeftButton) && withShift))
        camera.Pan(ToShares(moved));
    else if (event.buttons() & Qt::LeftButton)
        camera.Orbit(kDegreesPerPixel * static_cast<float>(moved.x()),
                     kDegreesPerPixel * static_cast<float>(moved.y()));
    else
        return false;
    m_scene.MoveCamera(camera);
    return true;
}

bool CameraControl::Turn(QWheelEvent const& event) {
    float const steps = static_cast<float>(event.angleDelta().y()) / kWheelStep;
    OrbitCamera camera = m_scene.GetCamera();
    camera.Zoom(std::pow(kZoomPerStep, steps), PlaceInView(event.position()));
    m_scene.MoveCamera(camera);
    return true;
}

bool CameraControl::Type(QKeyEvent const& event) {
    bool const withShift = event.modifiers() & Qt::ShiftModifier;
    OrbitCamera camera = m_scene.GetCamera();
    auto const move = [&](float right, float up) {
        if (withShift)
            camera.Pan(QPointF(right, up) * kSharePerKey);
        else
            camera.Orbit(right * kDegreesPerKey, -up * kDegreesPerKey);
    };
    switch (event.key()) {
    case Qt::Key_Left:
        move(-1.0f, 0.0f);
        break;
    case Qt::Key_Right:
        move(1.0f, 0.0f);
        break;
    case Qt::Key_Up:
        move(0.0f, 1.0f);
        break;
    case Qt::Key_Down:
        move(0.0f, -1.0f);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        camera.Zoom(kZoomPerStep);
        break;
    case Qt::Key_Minus:
        camera.Zoom(1.0f / kZoomPerStep);
        break;
    default:
        return false;
    }
    m_scene.MoveCamera(camera);
    return true;
}

} // namespace viewer
