// Boxes against the planes of a picture.
#include "PieceBounds.h"

#include <QVector4D>

#include <cmath>

namespace zarvex::zx3DQt {

namespace {

/// How far the box's middle is inside a plane, and how much farther its corners are.
struct Extent {
    float middle;
    float corner;
};

Extent ExtentOf(Bounds const& bounds, float reach, QVector4D const& plane) {
    QVector3D const middle = (bounds.minimum + bounds.maximum) * 0.5f;
    QVector3D const half = (bounds.maximum - bounds.minimum) * 0.5f + QVector3D(reach, reach, reach);
    return {QVector3D::dotProduct(plane.toVector3D(), middle) + plane.w(),
            std::abs(plane.x()) * half.x() + std::abs(plane.y()) * half.y() + std::abs(plane.z()) * half.z()};
}

} // namespace

ViewVolume::ViewVolume(QMatrix4x4 const& toClip, float marginX, float marginY, float reach) : m_reach(reach) {
    QVector4D const x = toClip.row(0);
    QVector4D const y = toClip.row(1);
    QVector4D const z = toClip.row(2);
    QVector4D const w = toClip.row(3);
    m_planes = {w * (1.0f + marginX) + x, w * (1.0f + marginX) - x, w * (1.0f + marginY) + y,
                w * (1.0f + marginY) - y, w - z};
    m_camera = w;
}

bool ViewVolume::MayShow(Bounds const& bounds) const {
    // Without a number to compare it is drawn.
    return !bounds.IsEmpty() && std::none_of(m_planes.begin(), m_planes.end(), [&](QVector4D const& plane) {
        Extent const extent = ExtentOf(bounds, m_reach, plane);
        return extent.middle + extent.corner < 0.0f;
    });
}

bool ViewVolume::IsInFront(Bounds const& bounds) const {
    if (bounds.IsEmpty())
        return true;
    Extent const extent = ExtentOf(bounds, 0.0f, m_camera);
    return extent.middle - extent.corner > 0.0f;
}

Bounds PieceBounds::Total() const {
    Bounds total;
    for (Bounds const& piece : m_pieces)
        total.Add(piece);
    return total;
}

} // namespace zarvex::zx3DQt
