// How mouse and keyboard move the camera.
#pragma once

#include "Scene.h"

#include <QEvent>
#include <QPointF>
#include <QSizeF>

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

namespace viewer {

/// Left button: orbit. Middle or right button, or left with Shift: pan. Wheel: zoom to the pointer. Double
/// click: fit. Arrows: orbit, with Shift: pan. Plus and minus: zoom.
class CameraControl {
public:
    explicit CameraControl(Scene& scene) : m_scene(scene) {}

    /// Lets the camera follow an input event of a view of this size, device-independent pixels. True when the
    /// event was meant for it.
    bool Handle(QEvent& event, QSizeF viewSize);

private:
    bool Press(QMouseEvent const& event);
    bool Drag(QMouseEvent const& event);
    bool Turn(QWheelEvent const& event);
    bool Type(QKeyEvent const& event);

    /// In the camera's units: shares of the view.
    QPointF ToShares(QPointF pixels) const {
        return QPointF(pixels.x(), -pixels.y()) / (0.5 * m_viewSize.height());
    }
    QPointF PlaceInView(QPointF position) const;

    Scene& m_scene;
    QSizeF m_viewSize;
    QPointF m_lastPosition;
};

} // namespace viewer
